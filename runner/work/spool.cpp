#include "runner/work/spool.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "runner/failure.h"

namespace runner {
namespace {

[[noreturn]] void FailToSpool(int error) {
  throw Failure(std::string("can't keep the names of the files in a temporary file: ") +
                std::strerror(error));
}

}  // namespace

Spool::Spool() {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
  if (error) FailToSpool(error.value());
  std::string name = (folder / "picturehost-names-XXXXXX").native();
  const int opened = ::mkostemp(name.data(), O_CLOEXEC);
  if (opened < 0) FailToSpool(errno);
  ::unlink(name.c_str());
  file.reset(::fdopen(opened, "w+"));
  if (file == nullptr) {
    const int problem = errno;
    ::close(opened);
    FailToSpool(problem);
  }
}

void Spool::Add(std::string_view record) {
  const auto size = static_cast<uint32_t>(record.size());
  if (std::fwrite(&size, sizeof size, 1, file.get()) != 1 ||
      std::fwrite(record.data(), 1, record.size(), file.get()) != record.size())
    FailToSpool(errno);
  ++count;
}

void Spool::Rewind() {
  if (std::fflush(file.get()) != 0) FailToSpool(errno);
  if (std::fseek(file.get(), 0, SEEK_SET) != 0) FailToSpool(errno);
}

bool Spool::Next(std::string* record) {
  uint32_t size = 0;
  if (std::fread(&size, sizeof size, 1, file.get()) != 1) {
    if (std::ferror(file.get()) != 0) FailToSpool(errno);
    return false;
  }
  record->resize(size);
  if (std::fread(record->data(), 1, size, file.get()) != size) FailToSpool(EIO);
  return true;
}

}  // namespace runner
