#include "runner/write_over.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "runner/disk.h"
#include "runner/file_attributes.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

// Copies of one file that lie beside it because work was cut short.
constexpr int kMostCopies = 99;

// A name that tells a person what it is a copy of.
fs::path CopyName(const fs::path& original, int number) {
  const fs::path folder = FolderOf(original);
  const std::string end = ".picturehost-copy" + (number == 1 ? "" : "-" + std::to_string(number));
  const std::string start = original.filename().native();
  size_t kept = std::min(start.size(), LongestName(folder) - end.size());
  if (kept < start.size())
    while (kept > 0 && (start[kept] & 0xC0) == 0x80) --kept;  // whole characters of UTF-8
  return folder / (start.substr(0, kept) + end);
}

// A copy that is there is never touched: it may be all that is left of a file. Where none can be
// made, errno says why.
Descriptor OpenCopy(const fs::path& original, fs::path* name) {
  for (int number = 1;; ++number) {
    *name = CopyName(original, number);
    const int copy = ::open(name->c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (copy >= 0 || errno != EEXIST || number == kMostCopies) return Descriptor(copy);
  }
}

// The system itself drops the bits where someone without rights over the file writes.
void DropSpecialBits(int file) {
  struct stat now {};
  if (::fstat(file, &now) == 0 && (now.st_mode & 07000) != 0)
    static_cast<void>(::fchmod(file, now.st_mode & 0777));
}

// The time of the last change, too: by it a resumed batch knows what it has done.
void GiveTime(int from, int to) {
  struct stat status {};
  if (::fstat(from, &status) != 0) return;
  const std::array<timespec, 2> times = {timespec{0, UTIME_OMIT}, status.st_mtim};
  static_cast<void>(::futimens(to, times.data()));
}

int CopyAndFlush(int from, int to) {
  const int error = CopyBytes(from, to);
  return error != 0 ? error : Flush(to);
}

int FillCopy(const fs::path& original, int originalFile, int copy) {
  if (const int error = KeepAttributes(original, copy)) return error;
  if (const int error = CopyAndFlush(originalFile, copy)) return error;
  return FlushFolder(FolderOf(original));
}

}  // namespace

int WriteOver(const fs::path& from, const fs::path& to, std::string* copyLeft) {
  const BlockedSignals blocked;
  const Descriptor bytes(::open(from.c_str(), O_RDONLY | O_CLOEXEC));
  if (!bytes.IsOpen()) return errno;
  const Descriptor place(::open(to.c_str(), O_RDWR | O_CLOEXEC));
  if (!place.IsOpen()) return errno;
  fs::path copyName;
  const Descriptor copy = OpenCopy(to, &copyName);
  if (!copy.IsOpen()) return errno;
  int error = FillCopy(to, place.Number(), copy.Number());
  if (error == 0) {
    DropSpecialBits(place.Number());
    error = CopyBytes(bytes.Number(), place.Number());
    if (error == 0) GiveTime(bytes.Number(), place.Number());
    if (error == 0) error = Flush(place.Number());
    if (error != 0 && CopyAndFlush(copy.Number(), place.Number()) != 0) {
      *copyLeft = copyName.native();
      return error;
    }
  }
  ::unlink(copyName.c_str());
  return error;
}

}  // namespace runner
