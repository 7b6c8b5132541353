#include "tests/runner/disk_calls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ostream>

namespace runner {
namespace {

std::function<int(const DiskCall&)> watcher;

bool LetThrough(const char* name, const struct stat& status) {
  if (!watcher) return true;
  errno = watcher({name, status.st_ino});
  return errno == 0;
}

bool LetThrough(const char* name, int file) {
  struct stat status {};
  ::fstat(file, &status);
  return LetThrough(name, status);
}

bool LetThrough(const char* name, const char* path) {
  struct stat status {};
  ::lstat(path, &status);
  return LetThrough(name, status);
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const DiskCall& call) {
  return out << call.name << " " << call.inode;
}

WatchedDisk::WatchedDisk(std::function<int(const DiskCall&)> before) {
  watcher = std::move(before);
}

WatchedDisk::~WatchedDisk() { watcher = nullptr; }

}  // namespace runner

// These stand before the C library's in this program.
extern "C" {

int fsync(int file) {
  return runner::LetThrough("fsync", file) ? int(::syscall(SYS_fsync, file)) : -1;
}

ssize_t pwrite(int file, const void* bytes, size_t count, off_t offset) {
  return runner::LetThrough("pwrite", file) ? ::syscall(SYS_pwrite64, file, bytes, count, offset)
                                            : -1;
}

int rename(const char* from, const char* to) noexcept {
  return runner::LetThrough("rename", from)
             ? int(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0))
             : -1;
}

int fsetxattr(int file, const char* name, const void* value, size_t size, int flags) noexcept {
  return runner::LetThrough("fsetxattr", file)
             ? int(::syscall(SYS_fsetxattr, file, name, value, size, flags))
             : -1;
}

int unlink(const char* path) noexcept {
  return runner::LetThrough("unlink", path) ? int(::syscall(SYS_unlinkat, AT_FDCWD, path, 0)) : -1;
}

}  // extern "C"
