// What a manifest says of each output, in few bytes.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "runner/work/manifest.h"

namespace runner {

// Hashes of what an output was made of; 48 bytes.
struct ManifestRecord {
  Hash128 output;             // its path
  uint64_t input = 0;         // the input's path
  uint64_t inputState = 0;    // its size and time
  uint64_t outputStates = 0;  // sizes and times of all outputs, inodes where they are intended
  uint32_t settings = 0;      // a number for each hash of settings
  bool isIntended = false;
};

// Of several entries for one output the latest counts. Failures don't.
class ManifestIndex {
 public:
  // Entries before that byte of the manifest don't count.
  explicit ManifestIndex(uint64_t start = 0) : end(start) {}

  // Reads the manifest from the byte on at which it stopped the last time. Throws Failure.
  void Read(const Manifest& manifest);
  // Nothing: no entry has that output.
  const ManifestRecord* Find(const std::string& output) const;
  const ManifestRecord* Find(const Hash128& output) const;
  bool IsEmpty() const { return records.empty(); }
  // The number of records in which `settings` stand; nothing: none has them.
  std::optional<uint32_t> SettingsNumber(const std::string& settings) const;
  // How far it has been read.
  uint64_t End() const { return end; }

 private:
  std::vector<ManifestRecord> records;  // sorted by output
  std::vector<std::string> allSettings;
  uint64_t end;
};

// The hashes in records.
uint64_t HashOfPath(const std::string& path);
uint64_t HashOfState(const FileState& state);
uint64_t HashOfStates(const std::vector<ManifestOutput>& outputs);

}  // namespace runner
