#include "runner/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <random>
#include <utility>

#include "runner/failure.h"
#include "runner/names.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

// Files of one process that are open at the same time.
constexpr int kSlots = 64;

// What a signal handler can walk: names of unfinished files, empty where a slot is free.
std::array<char[PATH_MAX], kSlots> unfinished;
std::array<volatile sig_atomic_t, kSlots> taken;

// Processes of several machines may write into one folder and have one number. Taken as the program
// starts, so that worker processes have it, too.
const uint32_t kMark = std::random_device{}();  // NOLINT(cert-err58-cpp): no start without it

std::string TemporaryName(pid_t process, int slot) {
  return ".picturehost-" + std::to_string(kMark) + "-" + std::to_string(process) + "-" +
         std::to_string(slot) + ".part";
}

extern "C" void RemoveUnfinished(int signal) {
  for (size_t i = 0; i < kSlots; ++i)
    if (taken[i] != 0) ::unlink(unfinished[i]);
  // The handler was installed for one signal, so this one ends the process.
  static_cast<void>(std::raise(signal));
}

}  // namespace

OutputFile::OutputFile(const fs::path& targetPath) : target(targetPath), destination(targetPath) {
  std::error_code error;
  if (target.empty()) Fail(ENOENT);
  const fs::file_status status = fs::status(target, error);
  if (status.type() == fs::file_type::directory) Fail(EISDIR);
  if (fs::exists(status) && status.type() != fs::file_type::regular) {
    file = ::open(target.c_str(), O_WRONLY | O_CLOEXEC);
    if (file < 0) Fail(errno);
    return;
  }
  if (fs::exists(status)) {
    // Replacing needs no right to the file itself; who took that right away meant it.
    if (::access(target.c_str(), W_OK) != 0) Fail(errno);
    destination = fs::canonical(target, error);
    if (error) Fail(error.value());
  }
  for (slot = 0; slot < kSlots && taken[static_cast<size_t>(slot)] != 0; ++slot) {
  }
  if (slot == kSlots) Fail(EMFILE);
  const fs::path folder = destination.has_parent_path() ? destination.parent_path() : ".";
  temporary = (folder / TemporaryName(::getpid(), slot)).native();
  if (temporary.size() >= PATH_MAX) Fail(ENAMETOOLONG);
  // The name must be possible, or all the work would be for nothing.
  const long longest = ::pathconf(folder.c_str(), _PC_NAME_MAX);
  if (longest > 0 && destination.filename().native().size() > static_cast<size_t>(longest))
    Fail(ENAMETOOLONG);
  std::memcpy(unfinished[static_cast<size_t>(slot)], temporary.c_str(), temporary.size() + 1);
  ::unlink(temporary.c_str());  // of a process that had the same number and was killed
  taken[static_cast<size_t>(slot)] = 1;
  file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (file < 0) Fail(errno);
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : target(std::move(other.target)),
      destination(std::move(other.destination)),
      temporary(std::exchange(other.temporary, {})),
      file(std::exchange(other.file, -1)),
      slot(std::exchange(other.slot, -1)) {}

OutputFile::~OutputFile() { Close(); }

void OutputFile::Close() {
  if (file >= 0) ::close(std::exchange(file, -1));
  if (!temporary.empty()) ::unlink(temporary.c_str());
  temporary.clear();
  if (slot >= 0) taken[static_cast<size_t>(std::exchange(slot, -1))] = 0;
}

void OutputFile::Fail(int error) {
  Close();
  throw Failure("can't write " + Quoted(target.native()) + ": " + std::strerror(error));
}

void OutputFile::Write(const void* bytes, size_t count) {
  const char* next = static_cast<const char*>(bytes);
  while (count > 0) {
    const ssize_t written = ::write(file, next, count);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) Fail(errno);
    next += written;
    count -= static_cast<size_t>(written);
  }
}

void OutputFile::Commit() {
  if (!temporary.empty()) {
    // Rights and owner stay what they were; a file system that has no such thing is not an error.
    struct stat before {};
    if (::stat(destination.c_str(), &before) == 0)
      static_cast<void>(::fchmod(file, before.st_mode & 07777));
  }
  if (::close(std::exchange(file, -1)) != 0) Fail(errno);  // network disks report here
  if (temporary.empty()) return;
  if (::rename(temporary.c_str(), destination.c_str()) != 0) Fail(errno);
  temporary.clear();
  taken[static_cast<size_t>(std::exchange(slot, -1))] = 0;
}

void OutputFile::CleanUpOnSignals() {
  struct sigaction action {};
  action.sa_handler = RemoveUnfinished;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigfillset(&action.sa_mask);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::sigaction(signal, &action, nullptr);
  action.sa_handler = SIG_IGN;
  ::sigaction(SIGXFSZ, &action, nullptr);
}

void OutputFile::RemoveLeftovers(const fs::path& folder, pid_t process) {
  std::error_code ignored;
  for (int slot = 0; slot < kSlots; ++slot)
    fs::remove(folder / TemporaryName(process, slot), ignored);
}

}  // namespace runner
