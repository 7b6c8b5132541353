#include "runner/files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "runner/failure.h"
#include "runner/names.h"

namespace runner {
namespace {

[[noreturn]] void FailToOpen(const std::filesystem::path& path, int error) {
  throw Failure("can't open " + Quoted(path.native()) + ": " + std::strerror(error));
}

// In growing steps, so that neither a wrong size nor a growing file matters; gives the error.
int ReadUpTo(int file, size_t count, std::string* bytes) {
  size_t filled = 0;
  ssize_t got = 1;
  while (got != 0 && filled < count) {
    if (filled == bytes->size())
      bytes->resize(std::min(count, std::max<size_t>(bytes->size() * 2, 1 << 16)));
    got = ::read(file, bytes->data() + filled, bytes->size() - filled);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return errno;
    filled += static_cast<size_t>(got);
  }
  bytes->resize(filled);
  return 0;
}

}  // namespace

void RequireRegularFile(const std::filesystem::path& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) FailToOpen(path, ENOENT);
  if (error) FailToOpen(path, error.value());
  if (status.type() == std::filesystem::file_type::directory) FailToOpen(path, EISDIR);
  if (status.type() != std::filesystem::file_type::regular)
    throw Failure("can't open " + Quoted(path.native()) + ": it isn't a regular file");
  if (::access(path.c_str(), R_OK) != 0) FailToOpen(path, errno);
}

std::string ReadPart(const std::filesystem::path& path, uint64_t start, size_t count) {
  RequireRegularFile(path);
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) FailToOpen(path, errno);
  std::string bytes;
  const bool there = start == 0 || ::lseek(file, static_cast<off_t>(start), SEEK_SET) >= 0;
  const int error = there ? ReadUpTo(file, count, &bytes) : errno;
  ::close(file);
  if (error != 0)
    throw Failure("can't read " + Quoted(path.native()) + ": " + std::strerror(error));
  return bytes;
}

std::string ReadStandardInput() {
  std::string bytes;
  if (const int error = ReadUpTo(STDIN_FILENO, kLargestFile + 1, &bytes); error != 0)
    throw Failure(std::string("can't read standard input: ") + std::strerror(error));
  if (bytes.size() > kLargestFile) throw Failure("standard input is larger than 2 GiB");
  return bytes;
}

std::string ReadWholeFile(const std::filesystem::path& path) {
  std::string bytes = ReadPart(path, 0, kLargestFile + 1);
  if (bytes.size() > kLargestFile) throw Failure(Quoted(path.native()) + " is larger than 2 GiB");
  return bytes;
}

}  // namespace runner
