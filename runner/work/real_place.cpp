#include "runner/work/real_place.h"

#include <fcntl.h>
#include <glib.h>
#include <unistd.h>

#include <memory>
#include <system_error>

#include "runner/names.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

constexpr size_t kRemembered = 4096;

RealFolder FindFolder(fs::path folder) {
  if (folder.empty()) folder = ".";
  std::error_code error;
  folder = fs::absolute(folder, error);
  fs::path missing;
  struct stat status {};
  while (::stat(folder.c_str(), &status) != 0 && folder.has_relative_path()) {
    if (!folder.has_filename()) {  // it ends with a slash
      folder = folder.parent_path();
      continue;
    }
    missing = missing.empty() ? folder.filename() : folder.filename() / missing;
    folder = folder.parent_path();
  }
  const fs::path real = fs::canonical(folder, error);
  return {(error ? folder : real).native(), IdOf(status), missing.lexically_normal().native()};
}

}  // namespace

std::string RealFolder::FullPath() const {
  return missing.empty() ? path : (fs::path(path) / missing).native();
}

const RealFolder& RealFolders::Of(const fs::path& folder) {
  const auto found = known.find(folder.native());
  if (found != known.end()) return found->second;
  if (known.size() >= kRemembered) known.clear();
  return known.emplace(folder.native(), FindFolder(folder)).first->second;
}

std::string RealFolders::PathOf(const fs::path& file) {
  return (fs::path(Of(file.parent_path()).FullPath()) / file.filename()).native();
}

Hash128 PlaceOf(const RealFolder& folder, std::string_view name) {
  std::string text = std::to_string(folder.id.device) + ":" + std::to_string(folder.id.inode) + "/";
  if (!folder.missing.empty()) text += folder.missing + "/";
  return HashOf(text.append(name));
}

std::string Folded(std::string_view name) {
  using Text = std::unique_ptr<gchar, void (*)(gpointer)>;
  if (g_str_is_ascii(std::string(name).c_str()) == 0) {
    const Text plain(
        g_utf8_normalize(name.data(), static_cast<gssize>(name.size()), G_NORMALIZE_NFD), g_free);
    if (plain != nullptr) return Text(g_utf8_casefold(plain.get(), -1), g_free).get();
  }
  return LowerCase(name);
}

bool IgnoresCase(const fs::path& folder) {
  std::string name = (folder / ".picturehost-case-XXXXXX").native();
  const int file = ::mkostemp(name.data(), O_CLOEXEC);
  if (file < 0) return false;
  ::close(file);
  struct stat status {
  }, other{};
  std::string capitals = name;
  const size_t from = capitals.rfind('/') + 1;
  for (size_t i = from; i < capitals.size(); ++i)
    capitals[i] = static_cast<char>(g_ascii_toupper(capitals[i]));
  const bool same = ::stat(name.c_str(), &status) == 0 && ::stat(capitals.c_str(), &other) == 0 &&
                    IdOf(status) == IdOf(other);
  ::unlink(name.c_str());
  return same;
}

}  // namespace runner
