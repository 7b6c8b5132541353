#include "runner/work/manifest_index.h"

#include <algorithm>

namespace runner {
namespace {

std::string TextOfState(const FileState& state) {
  return std::to_string(state.size) + " " + std::to_string(state.time);
}

}  // namespace

uint64_t HashOfPath(const std::string& path) { return HashOf(path).high; }

uint64_t HashOfState(const FileState& state) { return HashOf(TextOfState(state)).high; }

uint64_t HashOfStates(const std::vector<ManifestOutput>& outputs) {
  std::string text;
  for (const ManifestOutput& output : outputs)
    text += TextOfState(output.state) + " " + std::to_string(output.inode) + "\n";
  return HashOf(text).high;
}

void ManifestIndex::Read(const Manifest& manifest) {
  end = manifest.Read(end, [&](const ManifestEntry& entry) {
    if (entry.result == ManifestEntry::Result::kFailed) return;
    auto known = std::find(allSettings.begin(), allSettings.end(), entry.settings);
    if (known == allSettings.end()) known = allSettings.insert(known, entry.settings);
    ManifestRecord record;
    record.input = HashOfPath(entry.input);
    record.inputState = HashOfState(entry.inputState);
    record.outputStates = HashOfStates(entry.outputs);
    record.settings = static_cast<uint32_t>(known - allSettings.begin());
    record.isIntended = entry.result == ManifestEntry::Result::kIntended;
    for (const ManifestOutput& output : entry.outputs) {
      record.output = HashOf(output.file);
      records.push_back(record);
    }
  });
  std::stable_sort(
      records.begin(), records.end(),
      [](const ManifestRecord& a, const ManifestRecord& b) { return a.output < b.output; });
  // The latest of each output.
  const auto same = [](const ManifestRecord& a, const ManifestRecord& b) {
    return a.output == b.output;
  };
  records.erase(records.begin(), std::unique(records.rbegin(), records.rend(), same).base());
}

const ManifestRecord* ManifestIndex::Find(const Hash128& output) const {
  const auto found = std::lower_bound(
      records.begin(), records.end(), output,
      [](const ManifestRecord& record, const Hash128& hash) { return record.output < hash; });
  return found != records.end() && found->output == output ? &*found : nullptr;
}

const ManifestRecord* ManifestIndex::Find(const std::string& output) const {
  return Find(HashOf(output));
}

std::optional<uint32_t> ManifestIndex::SettingsNumber(const std::string& settings) const {
  const auto known = std::find(allSettings.begin(), allSettings.end(), settings);
  if (known == allSettings.end()) return {};
  return static_cast<uint32_t>(known - allSettings.begin());
}

}  // namespace runner
