#include "runner/output_file.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <optional>
#include <random>
#include <set>
#include <utility>

#include "runner/disk.h"
#include "runner/failure.h"
#include "runner/file_attributes.h"
#include "runner/links.h"
#include "runner/names.h"
#include "runner/write_over.h"

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

std::string FolderProblem(const fs::path& folder, int error) {
  return "can't flush the folder " + Quoted(folder.native()) + ": " + std::strerror(error);
}

extern "C" void RemoveUnfinished(int signal) {
  for (size_t i = 0; i < kSlots; ++i)
    if (taken[i] != 0) ::unlink(unfinished[i]);
  // The handler was installed for one signal, so this one ends the process.
  static_cast<void>(std::raise(signal));
}

}  // namespace

OutputFile::OutputFile(const fs::path& targetPath) : target(targetPath) {
  struct stat before {};
  const bool exists = ::stat(target.c_str(), &before) == 0;
  if (!exists && errno != ENOENT) Fail(errno);
  if (target.empty()) Fail(ENOENT);
  if (const std::optional<int> descriptor = DescriptorBehind(target)) {
    OpenDescriptor(*descriptor);
    return;
  }
  if (exists && S_ISDIR(before.st_mode)) Fail(EISDIR);
  if (exists && !S_ISREG(before.st_mode)) {
    file = ::open(target.c_str(), O_WRONLY | O_CLOEXEC);
    if (file < 0) Fail(errno);
    return;
  }
  destination = EndOfLinks(target);
  if (destination.empty()) Fail(ELOOP);
  // Replacing needs no right to the file itself; who took that right away meant it. A file that is
  // written over is copied before.
  const int needed = before.st_nlink > 1 ? R_OK | W_OK : W_OK;
  if (exists && ::access(destination.c_str(), needed) != 0) Fail(errno);
  OpenTemporary(exists);
}

void OutputFile::OpenDescriptor(int number) {
  const int flags = ::fcntl(number, F_GETFL);
  if (flags < 0 || (flags & O_ACCMODE) == O_RDONLY) Fail(EBADF);
  file = ::fcntl(number, F_DUPFD_CLOEXEC, 0);
  if (file < 0) Fail(errno);
}

// Private: until it has the rights of the file whose place it takes, only the owner has any.
void OutputFile::OpenTemporary(bool isPrivate) {
  for (slot = 0; slot < kSlots && taken[static_cast<size_t>(slot)] != 0; ++slot) {
  }
  if (slot == kSlots) {
    slot = -1;
    Fail(EMFILE);
  }
  const fs::path folder = FolderOf(destination);
  temporary = (folder / TemporaryName(::getpid(), slot)).native();
  if (temporary.size() >= PATH_MAX) Fail(ENAMETOOLONG);
  // The name must be possible, or all the work would be for nothing.
  if (destination.filename().native().size() > LongestName(folder)) Fail(ENAMETOOLONG);
  std::memcpy(unfinished[static_cast<size_t>(slot)], temporary.c_str(), temporary.size() + 1);
  ::unlink(temporary.c_str());  // of a process that had the same number and was killed
  taken[static_cast<size_t>(slot)] = 1;
  file =
      ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, isPrivate ? 0600 : 0666);
  if (file < 0) Fail(errno);
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : target(std::move(other.target)),
      destination(std::move(other.destination)),
      temporary(std::exchange(other.temporary, {})),
      hasSeveralNames(other.hasSeveralNames),
      file(std::exchange(other.file, -1)),
      slot(std::exchange(other.slot, -1)),
      finished(other.finished) {}

OutputFile::~OutputFile() { Close(); }

void OutputFile::Close() {
  if (file >= 0) ::close(std::exchange(file, -1));
  if (!temporary.empty()) ::unlink(temporary.c_str());
  temporary.clear();
  if (slot >= 0) taken[static_cast<size_t>(std::exchange(slot, -1))] = 0;
}

void OutputFile::Fail(int error, const std::string& advice) {
  Close();
  throw Failure("can't write " + Quoted(target.native()) + ": " + std::strerror(error) + advice);
}

void OutputFile::Write(const void* bytes, size_t count) {
  const char* next = static_cast<const char*>(bytes);
  while (count > 0) {
    const ssize_t written = ::write(file, next, count);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0 && errno == EAGAIN) {
      // Who gave the descriptor made it so that it doesn't wait.
      pollfd room{file, POLLOUT, 0};
      ::poll(&room, 1, -1);
      continue;
    }
    if (written < 0) Fail(errno);
    next += written;
    count -= static_cast<size_t>(written);
  }
}

// All that can fail before anything is changed.
struct stat OutputFile::Finish() {
  if (file < 0) return finished;
  if (!temporary.empty()) {
    struct stat before {};
    hasSeveralNames =
        ::stat(destination.c_str(), &before) == 0 && S_ISREG(before.st_mode) && before.st_nlink > 1;
    if (!hasSeveralNames)
      if (const int error = KeepAttributes(destination, file)) Fail(error);
    if (::fstat(file, &finished) != 0) Fail(errno);
    if (hasSeveralNames) finished.st_ino = before.st_ino;
  }
  if (const int error = Flush(file)) Fail(error);
  if (::close(std::exchange(file, -1)) != 0) Fail(errno);  // network disks report here
  return finished;
}

void OutputFile::TakePlace() {
  if (temporary.empty()) return;
  if (hasSeveralNames) {
    std::string copy;
    if (const int error = WriteOver(temporary, destination, &copy))
      Fail(error, copy.empty() ? "" : "; what was in it is in " + Quoted(copy));
    return Close();
  }
  if (::rename(temporary.c_str(), destination.c_str()) != 0) Fail(errno);
  temporary.clear();
  Close();
}

void OutputFile::Commit(Folder folder) { CommitAll({this, 1}, folder); }

void OutputFile::CommitAll(std::span<OutputFile> files, Folder folder) {
  size_t placed = 0;
  std::string problem;
  try {
    for (OutputFile& file : files) file.Finish();
    for (; placed < files.size(); ++placed) files[placed].TakePlace();
  } catch (const Failure& failure) {
    problem = failure.what();
  }
  std::set<fs::path> folders;
  for (const OutputFile& file : files.first(placed)) {
    if (!problem.empty())
      problem +=
          (&file == files.data() ? "; already written: " : ", ") + Quoted(file.target.native());
    if (file.destination.empty()) continue;
    const fs::path itsFolder = FolderOf(file.destination);
    if (folder == Folder::kFlushed || itsFolder != FolderOf(file.target)) folders.insert(itsFolder);
  }
  for (OutputFile& file : files.subspan(placed)) file.Close();
  for (const fs::path& each : folders) {
    const int error = runner::FlushFolder(each);
    if (error != 0 && problem.empty()) problem = FolderProblem(each, error);
  }
  if (!problem.empty()) throw Failure(problem);
}

void OutputFile::FlushFolder(const fs::path& folder) {
  if (const int error = runner::FlushFolder(folder)) throw Failure(FolderProblem(folder, error));
}

bool OutputFile::IsDirect(const fs::path& target) {
  std::error_code ignored;
  const fs::file_status status = fs::status(target, ignored);
  return (fs::exists(status) && status.type() != fs::file_type::regular &&
          status.type() != fs::file_type::directory) ||
         DescriptorBehind(target);
}

void OutputFile::CleanUpOnSignals() {
  struct sigaction action {};
  action.sa_handler = RemoveUnfinished;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigfillset(&action.sa_mask);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    if (!IsIgnored(signal)) ::sigaction(signal, &action, nullptr);
  action.sa_handler = SIG_IGN;
  ::sigaction(SIGXFSZ, &action, nullptr);
}

bool OutputFile::IsIgnored(int signal) {
  struct sigaction action {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void OutputFile::RemoveLeftovers(const fs::path& folder, pid_t process) {
  std::error_code ignored;
  for (int slot = 0; slot < kSlots; ++slot)
    fs::remove(folder / TemporaryName(process, slot), ignored);
}

}  // namespace runner
