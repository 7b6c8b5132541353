// The system's calls by which files reach the disk, seen and broken by a test.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace runner {

struct DiskCall {
  std::string name;  // fsync, pwrite, rename, unlink or fsetxattr
  ino_t inode = 0;   // of the file; of the one that is renamed

  bool operator==(const DiskCall&) const = default;
};
std::ostream& operator<<(std::ostream& out, const DiskCall& call);

// While this lives, `before` is asked before each of these calls in this process. It gives 0 to let
// the call be made, or the errno with which it fails.
class WatchedDisk {
 public:
  explicit WatchedDisk(std::function<int(const DiskCall&)> before);
  ~WatchedDisk();
  WatchedDisk(const WatchedDisk&) = delete;
  WatchedDisk& operator=(const WatchedDisk&) = delete;
};

}  // namespace runner
