#include "runner/file_attributes.h"

#include <linux/limits.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <string>

namespace runner {
namespace {

namespace fs = std::filesystem;

constexpr char kAccessList[] = "system.posix_acl_access";

std::optional<std::string> Attribute(const fs::path& file, const char* name) {
  std::string value(XATTR_SIZE_MAX, '\0');
  const ssize_t size = ::getxattr(file.c_str(), name, value.data(), value.size());
  if (size < 0) return {};
  value.resize(static_cast<size_t>(size));
  return value;
}

// Those that may be read. A file system without attributes has none.
int CopyUserAttributes(const fs::path& from, int to) {
  std::string names(XATTR_LIST_MAX, '\0');
  const ssize_t size = ::listxattr(from.c_str(), names.data(), names.size());
  if (size <= 0) return 0;
  const char* const end = names.data() + size;
  for (const char* name = names.data(); name < end; name += std::strlen(name) + 1) {
    if (!std::string_view(name).starts_with("user.")) continue;
    const std::optional<std::string> value = Attribute(from, name);
    if (value && ::fsetxattr(to, name, value->data(), value->size(), 0) != 0) return errno;
  }
  return 0;
}

// A file that has none may lie in a folder that gives one to new files.
bool KeepAccessList(const fs::path& from, int to) {
  if (const std::optional<std::string> list = Attribute(from, kAccessList))
    return ::fsetxattr(to, kAccessList, list->data(), list->size(), 0) == 0;
  if (errno != ENODATA && errno != ENOTSUP) return false;
  return ::fremovexattr(to, kAccessList) == 0 || errno == ENODATA || errno == ENOTSUP;
}

}  // namespace

int KeepAttributes(const fs::path& from, int to) {
  struct stat before {};
  if (::stat(from.c_str(), &before) != 0) return errno == ENOENT ? 0 : errno;
  if (const int error = CopyUserAttributes(from, to)) return error;
  const bool accessListKept = KeepAccessList(from, to);
  const bool groupKept = ::fchown(to, before.st_uid, before.st_gid) == 0 ||
                         ::fchown(to, static_cast<uid_t>(-1), before.st_gid) == 0;
  mode_t rights = before.st_mode & 0777;
  if (!groupKept) {
    const mode_t common = (rights >> 3) & rights & 07;
    rights = (rights & 0700) | (common << 3) | common;
  }
  if (!accessListKept) rights &= 0700;
  // A file system that has no such thing is not an error.
  static_cast<void>(::fchmod(to, rights));
  return 0;
}

}  // namespace runner
