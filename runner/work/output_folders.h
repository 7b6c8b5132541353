// The folders that outputs lie in, made where need be and flushed once.
#pragma once

#include <filesystem>
#include <set>

namespace runner {

class OutputFolders {
 public:
  // Makes a folder and those above it, so that a power cut doesn't take them away again. Throws
  // Failure.
  void Make(const std::filesystem::path& folder);
  // A file came into the folder; Flush has to see to it.
  void Note(const std::filesystem::path& folder);
  // Lets the names of all files that were noted outlive a power cut. Throws Failure.
  void Flush();

 private:
  std::set<std::filesystem::path> made, noted;
};

}  // namespace runner
