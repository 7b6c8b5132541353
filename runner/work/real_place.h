// Where names really lead, so that two names of one file are known to be one.
#pragma once

#include <sys/stat.h>

#include <compare>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_map>

#include "runner/work/hash128.h"

namespace runner {

// The same for all names of a file.
struct FileId {
  uint64_t device = 0, inode = 0;
  friend auto operator<=>(const FileId&, const FileId&) = default;
};

inline FileId IdOf(const struct stat& status) { return {status.st_dev, status.st_ino}; }

// A size and a time of the last change, in nanoseconds since 1970.
struct FileState {
  uint64_t size = 0;
  int64_t time = 0;
  friend bool operator==(const FileState&, const FileState&) = default;
};

inline FileState StateOf(const struct stat& status) {
  return {static_cast<uint64_t>(status.st_size),
          status.st_mtim.tv_sec * INT64_C(1'000'000'000) + status.st_mtim.tv_nsec};
}

// A folder that need not exist yet.
struct RealFolder {
  std::string path;     // of the deepest folder on the way that exists, without symbolic links
  FileId id;            // of that
  std::string missing;  // the folders below it that don't exist; empty: none

  std::string FullPath() const;
};

// Asks the system about each folder once. Some thousand folders are remembered, the others asked
// about again.
class RealFolders {
 public:
  const RealFolder& Of(const std::filesystem::path& folder);
  // Where a file is, without symbolic links among its folders; absolute.
  std::string PathOf(const std::filesystem::path& file);

 private:
  std::unordered_map<std::string, RealFolder> known;
};

// A file's place by its folder's device and inode, and by the names below.
Hash128 PlaceOf(const RealFolder& folder, std::string_view name);

// Names that a file system takes for one where it ignores case: canonically decomposed, without
// case. Of names that aren't UTF-8, ASCII letters alone are made small.
std::string Folded(std::string_view name);

// Whether names that differ in case alone are one name in a folder that exists. Makes a file there
// and removes it; false where none can be made.
bool IgnoresCase(const std::filesystem::path& folder);

}  // namespace runner
