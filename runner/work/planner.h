// What a batch is going to read and write, checked before anything is written.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "runner/work/input_list.h"
#include "runner/work/manifest_index.h"
#include "runner/work/output_rules.h"
#include "runner/work/real_place.h"
#include "runner/work/spool.h"

namespace runner {

// A file of the plan. Its paths are as messages have them.
struct PlannedFile {
  InputName name;
  FileState state;  // as it was when it was found
  bool isMissing = false;
  std::vector<std::filesystem::path> outputs;
};

// Takes inputs in a first pass, gives them with their outputs in a second one. Of each input 16
// bytes are held, of each output 16 more, and 24 again where it exists already; names are in a
// temporary file.
class Planner {
 public:
  // All outlive the planner.
  Planner(const OutputRules& outputRules, const Manifest& itsManifest, const ManifestIndex& index);

  // Files that no output may overwrite besides the inputs, such as those that expressions read.
  void Protect(const std::filesystem::path& file);
  // Throws Failure for an output that can't be: a folder, a pipe, a device, or a file that the
  // manifest knows as made of another input.
  void Add(const Input& input);
  // Throws Failure for two inputs with one output, and for inputs that would be overwritten.
  void Check();

  uint64_t Count() const { return names.Count(); }
  // "2 of the 7 files aren't there: 'a.jpg' and 'b.jpg'"; empty: all are.
  std::string Missing() const;

  // The files in their order, once Check has returned; false: no more.
  bool Next(PlannedFile* planned);

  // Hashes of an output for other runs: its path, that without case, and its input's.
  struct Claim {
    Hash128 path, folded;
    uint64_t input = 0;
  };
  // Calls `take` for the claims of all outputs.
  void VisitClaims(const std::function<void(const Claim&)>& take);

 private:
  struct Existing {
    FileId id;
    uint64_t input = 0;  // which one
    friend auto operator<=>(const Existing&, const Existing&) = default;
  };
  void AddOutput(const std::filesystem::path& output, const Input& input,
                 const std::string& realInput);
  void CheckPlaces();
  void CheckOverwrites();
  void FailForManifest(const std::filesystem::path& output, const std::string& input) const;
  PlannedFile Unpack(const std::string& record) const;

  const OutputRules& rules;
  const Manifest& manifest;
  const ManifestIndex& known;
  RealFolders folders;
  Spool names, claims;
  std::vector<FileId> inputs;
  std::vector<FileId> protectedFiles;
  std::vector<Hash128> places;
  std::vector<Existing> existing;
  uint64_t missing = 0;
  std::vector<std::string> firstMissing;
};

}  // namespace runner
