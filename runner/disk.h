// What files need beyond reading and writing. The functions give 0 or an errno.
#pragma once

#include <csignal>
#include <cstddef>
#include <filesystem>
#include <utility>

namespace runner {

// Closes what it holds; negative: nothing.
class Descriptor {
 public:
  explicit Descriptor(int openFile) : file(openFile) {}
  Descriptor(Descriptor&& other) noexcept : file(std::exchange(other.file, -1)) {}
  Descriptor& operator=(Descriptor&&) = delete;
  ~Descriptor();

  int Number() const { return file; }
  bool IsOpen() const { return file >= 0; }

 private:
  int file;
};

// What was written outlives a power cut once this returns. A file system, a device or a pipe that
// can't be flushed is no error.
int Flush(int file);
// The same for the names in a folder.
int FlushFolder(const std::filesystem::path& folder);
// The folder in which a file lies.
std::filesystem::path FolderOf(const std::filesystem::path& file);
// How many bytes a name in a folder may have.
size_t LongestName(const std::filesystem::path& folder);

// Makes the bytes of one file the bytes of the other.
int CopyBytes(int from, int to);

// While this lives, signals wait.
class BlockedSignals {
 public:
  BlockedSignals();
  ~BlockedSignals();
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;

 private:
  sigset_t before{};
};

}  // namespace runner
