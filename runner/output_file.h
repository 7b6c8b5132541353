// Files that appear whole or not at all.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <string>

namespace runner {

// Writes beside the target, under a name of its own, and takes the target's place when told to. An
// end before that, an interrupt included, leaves what was there before. A target that isn't a
// regular file, such as a device or a pipe, is written directly; a symbolic link is followed. One
// thread.
class OutputFile {
 public:
  // Opens; throws Failure, which says why the target can't be written.
  explicit OutputFile(const std::filesystem::path& target);
  OutputFile(OutputFile&& other) noexcept;
  OutputFile& operator=(OutputFile&&) = delete;
  ~OutputFile();

  // Both throw Failure for a full disk and the like.
  void Write(const void* bytes, size_t count);
  void Commit();

  // Removes on SIGINT, SIGTERM and SIGHUP what isn't committed, then ends the process as the signal
  // would have. SIGXFSZ is ignored, so that a limit on file sizes is an error like a full disk.
  static void CleanUpOnSignals();
  // What a process that was killed may have left behind in a folder.
  static void RemoveLeftovers(const std::filesystem::path& folder, pid_t process);

 private:
  [[noreturn]] void Fail(int error);
  void Close();

  std::filesystem::path target;       // as given, for messages
  std::filesystem::path destination;  // behind symbolic links
  std::string temporary;              // empty: the target is written directly
  int file = -1;
  int slot = -1;  // in the table that the signal handler walks
};

}  // namespace runner
