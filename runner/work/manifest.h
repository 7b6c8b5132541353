// What a batch made of what: JSON lines next to its outputs.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "runner/work/hash128.h"
#include "runner/work/real_place.h"

namespace runner {

inline constexpr const char* kManifestName = "picturehost-manifest.jsonl";

struct ManifestOutput {
  std::string file;  // absolute; in the file it is seen from the manifest's folder where it lies
                     // below that
  FileState state;
  uint64_t inode = 0;  // of an output that is intended; otherwise 0
};

// A line of a manifest.
struct ManifestEntry {
  // kIntended: the output is complete and takes the place of its own input next.
  enum class Result { kWritten, kIntended, kFailed };
  std::string input;  // absolute
  FileState inputState;
  std::string settings;  // a hash of all else that decides the result
  std::vector<ManifestOutput> outputs;
  double seconds = 0;
  Result result = Result::kWritten;
  std::string error;  // kFailed
};

// The file, shared by runs that may work at the same time. One thread.
class Manifest {
 public:
  // Nothing is touched yet.
  explicit Manifest(const std::filesystem::path& file);
  Manifest(const Manifest&) = delete;
  Manifest& operator=(const Manifest&) = delete;
  ~Manifest();

  const std::filesystem::path& File() const { return name; }
  // The bytes that the entry adds to the file: one line.
  std::string LineOf(const ManifestEntry& entry) const;

  // Calls `take` with the entries from a byte on, and gives the byte behind the last whole line.
  // Lines that aren't a manifest's are passed over. Where there is no file, there are no entries.
  // Throws Failure.
  uint64_t Read(uint64_t start, const std::function<void(const ManifestEntry&)>& take) const;

  // Makes the file where there is none; it lies in a folder that exists. Throws Failure.
  void Open();
  // While it lives no other run appends or claims. The file is open.
  class Lock {
   public:
    explicit Lock(const Manifest& manifest);
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

   private:
    int file;
  };
  // Appends whole lines in one write, behind the last whole line: the end of one that a crash cut
  // off is taken away. Throws Failure, and then the file is as it was.
  void Append(std::string_view lines);
  // What was appended outlives a power cut. Throws Failure.
  void Flush();

 private:
  std::string Seen(const std::string& path) const;
  std::optional<ManifestEntry> Parse(const std::string& line) const;
  [[noreturn]] void Fail(const char* what, int error) const;

  std::filesystem::path name;
  std::filesystem::path folder;  // absolute, without symbolic links
  int file = -1;
};

}  // namespace runner
