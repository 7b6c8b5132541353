// The bytes of a file that is looked into, wherever they are.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "runner/files.h"

namespace runner {

// Bytes in memory, or else those of a regular file. Doesn't own them.
class FileContent {
 public:
  FileContent(const std::string& inMemory, const std::filesystem::path& file)
      : bytes(inMemory), path(file) {}

  bool IsInMemory() const { return !bytes.empty(); }
  const std::string& Bytes() const { return bytes; }
  const std::filesystem::path& Path() const { return path; }

  uint64_t Size() const { return IsInMemory() ? bytes.size() : std::filesystem::file_size(path); }
  // At most `count` of them from the beginning, or from `start`. Both throw Failure for a file that
  // can't be read.
  std::string Beginning(size_t count) const { return Part(0, count); }
  std::string Part(uint64_t start, size_t count) const {
    if (!IsInMemory()) return ReadPart(path, start, count);
    return start >= bytes.size() ? std::string() : bytes.substr(start, count);
  }

 private:
  const std::string& bytes;
  const std::filesystem::path& path;
};

}  // namespace runner
