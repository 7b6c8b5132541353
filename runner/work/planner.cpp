#include "runner/work/planner.h"

#include <algorithm>
#include <map>
#include <unordered_set>

#include "runner/failure.h"
#include "runner/links.h"
#include "runner/names.h"
#include "runner/work/record.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

constexpr size_t kMissingShown = 3;

// Places are told apart with case where the folder does.
std::string NameIn(const RealFolder& folder, const fs::path& output) {
  return folder.FullPath() + "/" + output.filename().native();
}

}  // namespace

Planner::Planner(const OutputRules& outputRules, const Manifest& itsManifest,
                 const ManifestIndex& index)
    : rules(outputRules), manifest(itsManifest), known(index) {
  Protect(manifest.File());
}

void Planner::Protect(const fs::path& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) == 0) protectedFiles.push_back(IdOf(status));
}

void Planner::Add(const Input& input) {
  std::string record;
  PutText(&record, input.name.file);
  PutText(&record, input.name.below);
  const FileState state = input.status ? StateOf(*input.status) : FileState();
  PutNumber(&record, state.size);
  PutNumber(&record, static_cast<uint64_t>(state.time));
  PutNumber(&record, input.status ? 0 : 1);
  names.Add(record);
  if (!input.status) {
    ++missing;
    if (firstMissing.size() < kMissingShown) firstMissing.push_back(input.name.file);
  } else {
    inputs.push_back(IdOf(*input.status));
  }
  if (rules.IsEmpty()) return;
  const std::string realInput = folders.PathOf(input.name.file);
  for (const fs::path& output : rules.For(input.name)) AddOutput(output, input, realInput);
}

void Planner::AddOutput(const fs::path& output, const Input& input, const std::string& realInput) {
  const auto refuse = [&](const std::string& why) {
    throw Failure("can't write " + Quoted(output.native()) + ", the result of " +
                  Quoted(input.name.file) + ": " + why);
  };
  if (!output.has_filename()) refuse("it is the name of a folder");
  fs::path place = output;
  struct stat status {};
  bool exists = ::lstat(output.c_str(), &status) == 0;
  if (exists && S_ISLNK(status.st_mode)) {
    if (DescriptorBehind(output)) refuse("a batch writes no open descriptors");
    place = EndOfLinks(output);
    if (place.empty()) refuse("its links lead nowhere");
    exists = ::stat(output.c_str(), &status) == 0;
  }
  if (exists && S_ISDIR(status.st_mode)) refuse("it is a folder");
  if (exists && !S_ISREG(status.st_mode)) refuse("a batch writes no pipes and devices");
  const RealFolder& folder = folders.Of(place.parent_path());
  const std::string name = place.filename().native();
  places.push_back(PlaceOf({folder.path, folder.id, Folded(folder.missing)}, Folded(name)));
  const std::string path = (fs::path(folder.FullPath()) / name).native();
  if (exists) {
    existing.push_back({IdOf(status), names.Count() - 1});
    const ManifestRecord* record = known.Find(path);
    if (record != nullptr && record->input != HashOfPath(realInput)) FailForManifest(path, output);
  }
  std::string claim;
  const uint64_t inputHash = HashOfPath(realInput);
  for (const Hash128& hash : {HashOf(path), HashOf(Folded(path))}) {
    PutNumber(&claim, hash.high);
    PutNumber(&claim, hash.low);
  }
  PutNumber(&claim, inputHash);
  claims.Add(claim);
}

void Planner::FailForManifest(const fs::path& path, const std::string& output) const {
  std::string other;
  manifest.Read(0, [&](const ManifestEntry& entry) {
    for (const ManifestOutput& each : entry.outputs)
      if (each.file == path && entry.result != ManifestEntry::Result::kFailed) other = entry.input;
  });
  throw Failure(Quoted(output) + " was made of " + Quoted(other) +
                " by an earlier run, and another file would take its place; the manifest " +
                Quoted(manifest.File().native()) + " says so");
}

std::string Planner::Missing() const {
  if (missing == 0) return "";
  std::string list;
  for (size_t i = 0; i < firstMissing.size(); ++i) {
    const bool last = i + 1 == firstMissing.size() && missing == firstMissing.size();
    list += (i == 0 ? "" : last ? " and " : ", ") + Quoted(firstMissing[i]);
  }
  if (missing > firstMissing.size())
    list += " and " + std::to_string(missing - firstMissing.size()) + " more";
  if (Count() == 1) return "there is no file " + list;
  return std::to_string(missing) + " of the " + std::to_string(Count()) +
         (missing == 1 ? " files isn't there: " : " files aren't there: ") + list;
}

PlannedFile Planner::Unpack(const std::string& record) const {
  std::string_view rest = record;
  PlannedFile planned;
  planned.name.file = TakeText(&rest);
  planned.name.below = TakeText(&rest);
  planned.state.size = TakeNumber(&rest);
  planned.state.time = static_cast<int64_t>(TakeNumber(&rest));
  planned.isMissing = TakeNumber(&rest) != 0;
  if (!rules.IsEmpty()) planned.outputs = rules.For(planned.name);
  return planned;
}

bool Planner::Next(PlannedFile* planned) {
  std::string record;
  if (!names.Next(&record)) return false;
  *planned = Unpack(record);
  return true;
}

void Planner::VisitClaims(const std::function<void(const Claim&)>& take) {
  claims.Rewind();
  std::string record;
  while (claims.Next(&record)) {
    std::string_view rest = record;
    Claim claim;
    for (Hash128* hash : {&claim.path, &claim.folded}) {
      hash->high = TakeNumber(&rest);
      hash->low = TakeNumber(&rest);
    }
    claim.input = TakeNumber(&rest);
    take(claim);
  }
}

void Planner::Check() {
  std::sort(inputs.begin(), inputs.end());
  if (!rules.IsEmpty()) {
    CheckPlaces();
    CheckOverwrites();
  }
  places = {};
  existing = {};
  names.Rewind();
}

// Places were noted without case. Where two are one, their names are looked at again, and whether
// the folder ignores case decides.
void Planner::CheckPlaces() {
  std::sort(places.begin(), places.end());
  std::unordered_set<Hash128, BucketOf> shared;
  for (size_t i = 1; i < places.size(); ++i)
    if (places[i] == places[i - 1]) shared.insert(places[i]);
  if (shared.empty()) return;
  struct Owner {
    std::string input, output, name;
  };
  std::multimap<Hash128, Owner> owners;
  names.Rewind();
  std::string record;
  while (names.Next(&record)) {
    const PlannedFile planned = Unpack(record);
    for (const fs::path& output : planned.outputs) {
      const fs::path place =
          fs::is_symlink(fs::symlink_status(output)) ? EndOfLinks(output) : output;
      const RealFolder& folder = folders.Of(place.parent_path());
      const Hash128 hash = PlaceOf({folder.path, folder.id, Folded(folder.missing)},
                                   Folded(place.filename().native()));
      if (!shared.contains(hash)) continue;
      const std::string name = NameIn(folder, place);
      const auto [first, last] = owners.equal_range(hash);
      for (auto other = first; other != last; ++other)
        if (other->second.name == name || IgnoresCase(folder.path))
          throw Failure(Quoted(other->second.input) + " and " + Quoted(planned.name.file) +
                        " would both become " + Quoted(output.native()));
      owners.emplace(hash, Owner{planned.name.file, output.native(), name});
    }
  }
}

// By device and inode, whatever the names.
void Planner::CheckOverwrites() {
  std::sort(existing.begin(), existing.end());
  std::sort(protectedFiles.begin(), protectedFiles.end());
  const auto nameOf = [&](uint64_t number) {
    names.Rewind();
    std::string record;
    for (uint64_t i = 0; i <= number; ++i) names.Next(&record);
    return Unpack(record);
  };
  for (size_t i = 0; i < existing.size(); ++i) {
    const Existing& output = existing[i];
    if (i > 0 && existing[i - 1].id == output.id)
      throw Failure("the results of " + Quoted(nameOf(existing[i - 1].input).name.file) + " and " +
                    Quoted(nameOf(output.input).name.file) +
                    " would be one file, which has several names");
    if (std::binary_search(protectedFiles.begin(), protectedFiles.end(), output.id))
      throw Failure("the result of " + Quoted(nameOf(output.input).name.file) +
                    " would overwrite a file that the batch itself reads or writes");
    if (rules.IsInPlace() || !std::binary_search(inputs.begin(), inputs.end(), output.id)) continue;
    names.Rewind();
    std::string record, overwritten;
    while (names.Next(&record)) {
      const PlannedFile planned = Unpack(record);
      struct stat status {};
      if (::stat(planned.name.file.c_str(), &status) == 0 && IdOf(status) == output.id)
        overwritten = planned.name.file;
    }
    const std::string source = nameOf(output.input).name.file;
    throw Failure(Quoted(overwritten) + " would be overwritten by " +
                  (source == overwritten ? "its own result" : "the result of " + Quoted(source)) +
                  "; --in-place says that pictures become their results");
  }
}

}  // namespace runner
