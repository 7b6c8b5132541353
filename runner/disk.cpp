#include "runner/disk.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>

namespace runner {
namespace {

bool MeansThatNothingCanBeFlushed(int error) {
  return error == EINVAL || error == ENOTSUP || error == EROFS;
}

}  // namespace

Descriptor::~Descriptor() {
  if (file >= 0) ::close(file);
}

int Flush(int file) {
  while (::fsync(file) != 0) {
    if (errno == EINTR) continue;
    return MeansThatNothingCanBeFlushed(errno) ? 0 : errno;
  }
  return 0;
}

int FlushFolder(const std::filesystem::path& folder) {
  const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // Who may make files in a folder need not have the right to open the folder itself.
  if (!opened.IsOpen()) return errno == EACCES ? 0 : errno;
  return Flush(opened.Number());
}

std::filesystem::path FolderOf(const std::filesystem::path& file) {
  return file.has_parent_path() ? file.parent_path() : ".";
}

size_t LongestName(const std::filesystem::path& folder) {
  const long longest = ::pathconf(folder.c_str(), _PC_NAME_MAX);
  return longest > 0 ? static_cast<size_t>(longest) : NAME_MAX;
}

int CopyBytes(int from, int to) {
  std::array<char, 1 << 16> chunk{};
  off_t end = 0;
  while (true) {
    const ssize_t got = ::pread(from, chunk.data(), chunk.size(), end);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return errno;
    if (got == 0) break;
    for (ssize_t done = 0; done < got;) {
      const ssize_t written =
          ::pwrite(to, chunk.data() + done, static_cast<size_t>(got - done), end + done);
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) return errno;
      done += written;
    }
    end += got;
  }
  return ::ftruncate(to, end) == 0 ? 0 : errno;
}

BlockedSignals::BlockedSignals() {
  sigset_t all;
  sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &before);
}

BlockedSignals::~BlockedSignals() { ::pthread_sigmask(SIG_SETMASK, &before, nullptr); }

}  // namespace runner
