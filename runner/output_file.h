// Files that appear whole or not at all.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>

namespace runner {

// Writes beside the target, under a name of its own, and takes the target's place when told to. An
// end before that, an interrupt or a power cut included, leaves what was there before.
//
// Symbolic links are followed; one that leads to no file makes the file that it names. A file with
// one name is replaced by a new file, which gets its owner, its group, its rights without set-user,
// set-group and sticky bits, its access list and its user's attributes as far as the system lets
// it. A file with several names (hard links) stays the same file: the new bytes are written over
// the old ones, of which a copy lies beside the file until the new ones are complete.
//
// What isn't a regular file, such as a device or a pipe, is written directly, and so is an open
// descriptor that has a name, such as /dev/stdout: at its position, whatever file is behind it.
// These can't appear as a whole. One thread.
class OutputFile {
 public:
  // Who flushes the folder: until then a power cut may bring back what was there before, whole.
  enum class Folder { kFlushed, kLeftToCaller };

  // Opens; throws Failure, which says why the target can't be written.
  explicit OutputFile(const std::filesystem::path& target);
  OutputFile(OutputFile&& other) noexcept;
  OutputFile& operator=(OutputFile&&) = delete;
  ~OutputFile();

  // All throw Failure for a full disk and the like.
  void Write(const void* bytes, size_t count);
  // Nothing more is written, and what was is on the disk. Gives the file's status as it will be in
  // its place: inode, size and time; of a file that is written over, its inode.
  struct stat Finish();
  // A folder that a symbolic link leads to isn't the one that the caller knows: it is flushed.
  void Commit(Folder folder = Folder::kFlushed);

  // Commits several files: flushes the bytes of all, lets them take their places in order, and
  // flushes each folder once. Throws Failure, which names the file that failed and those that are
  // in their places already; that file and those after it are given up.
  static void CommitAll(std::span<OutputFile> files, Folder folder = Folder::kFlushed);
  // Throws Failure.
  static void FlushFolder(const std::filesystem::path& folder);

  // Whether bytes go straight to the target: it isn't a regular file, or a descriptor's name.
  static bool IsDirect(const std::filesystem::path& target);

  // Removes on SIGINT, SIGTERM and SIGHUP what isn't committed, then ends the process as the signal
  // would have. One that is ignored stays ignored, as nohup wants it. SIGXFSZ is ignored, so that a
  // limit on file sizes is an error like a full disk.
  static void CleanUpOnSignals();
  static bool IsIgnored(int signal);
  // What a process that was killed may have left behind in a folder. Copies of files that it wrote
  // over stay.
  static void RemoveLeftovers(const std::filesystem::path& folder, pid_t process);

 private:
  void OpenDescriptor(int number);
  void OpenTemporary(bool isPrivate);
  void TakePlace();
  [[noreturn]] void Fail(int error, const std::string& advice = {});
  void Close();

  std::filesystem::path target;       // as given, for messages
  std::filesystem::path destination;  // behind symbolic links
  std::string temporary;              // empty: the target is written directly
  bool hasSeveralNames = false;
  int file = -1;
  int slot = -1;            // in the table that the signal handler walks
  struct stat finished {};  // once nothing more is written
};

}  // namespace runner
