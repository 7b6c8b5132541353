// The files that a batch works on, one after the other.
#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "runner/work/output_pattern.h"
#include "runner/work/real_place.h"

namespace runner {

// Where the names come from.
struct InputSources {
  std::vector<std::filesystem::path> files;  // as words
  std::string list;                          // a file with names; "-": standard input; empty: none
  bool nulls = false;                        // they end with NULs instead of line ends
  bool recursive = false;                    // folders stand for the pictures in them
  std::filesystem::path inputFolder;  // every file lies below it; empty: where it was found counts
};

struct Input {
  InputName name;
  std::optional<struct stat> status;  // nothing: there is no such file
};

// Calls `take` for each file, words first. A folder gives its picture files, by their extensions,
// sorted by their names, and those of the folders in it; hidden names and links to folders are left
// out, and so are folders that `leaveOut` says. One folder's names are held at a time. Throws
// Failure for a list or a folder that can't be read, for a folder where they aren't wanted, and for
// a file that isn't below the input folder.
void ListInputs(const InputSources& sources,
                const std::function<bool(const struct stat& folder)>& leaveOut,
                const std::function<void(const Input&)>& take);

}  // namespace runner
