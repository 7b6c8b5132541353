#include "runner/work/resume.h"

#include <sys/stat.h>

#include <algorithm>

#include "runner/links.h"

namespace runner {

ManifestEntry Resume::EntryOf(const PlannedFile& planned) {
  ManifestEntry entry;
  entry.input = folders.PathOf(planned.name.file);
  entry.inputState = planned.state;
  entry.settings = settings;
  for (const std::filesystem::path& output : planned.outputs) {
    ManifestOutput each;
    struct stat status {};
    if (::lstat(output.c_str(), &status) == 0 && S_ISLNK(status.st_mode)) {
      each.file = folders.PathOf(EndOfLinks(output));
      if (::stat(output.c_str(), &status) != 0) status = {};
    } else {
      each.file = folders.PathOf(output);
    }
    each.state = StateOf(status);
    each.inode = status.st_ino;
    entry.outputs.push_back(std::move(each));
  }
  return entry;
}

Standing Resume::StandingOf(const ManifestEntry& entry) const {
  if (entry.outputs.empty()) return Standing::kNew;
  const ManifestRecord* record = known.Find(entry.outputs[0].file);
  if (record == nullptr || known.SettingsNumber(settings) != record->settings ||
      record->input != HashOfPath(entry.input))
    return Standing::kNew;
  std::vector<ManifestOutput> outputs = entry.outputs;
  // Only what is intended is known by its inode: files that are done may be moved or restored.
  if (!record->isIntended)
    for (ManifestOutput& output : outputs) output.inode = 0;
  const bool outputsAreThere = std::all_of(outputs.begin(), outputs.end(), [](const auto& output) {
    return output.state != FileState();
  });
  const bool isAsAfter = outputsAreThere && HashOfStates(outputs) == record->outputStates;
  const bool isAsBefore = HashOfState(entry.inputState) == record->inputState;
  if (!rules.IsInPlace()) return isAsAfter && isAsBefore ? Standing::kDone : Standing::kNew;
  if (isAsAfter) return record->isIntended ? Standing::kDoneUnnoted : Standing::kDone;
  return record->isIntended && isAsBefore ? Standing::kNew : Standing::kUncertain;
}

}  // namespace runner
