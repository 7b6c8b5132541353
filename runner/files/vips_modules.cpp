#include "runner/files/vips_modules.h"

#include <dlfcn.h>
#include <gmodule.h>
#include <vips/vips.h>

#include <cstdlib>
#include <mutex>
#include <set>

namespace runner {
namespace {

// The library looks for its parts below this folder, if it is set.
constexpr const char* kHome = "VIPSHOME";

// Beside the library itself.
std::filesystem::path ModuleFolder() {
  Dl_info library{};
  if (::dladdr(reinterpret_cast<const void*>(&vips_version), &library) == 0) return {};
  return std::filesystem::path(library.dli_fname).parent_path() /
         ("vips-modules-" + std::to_string(vips_version(0)) + "." +
          std::to_string(vips_version(1)));
}

}  // namespace

WithoutVipsModules::WithoutVipsModules() {
  const char* value = std::getenv(kHome);
  wasSet = value != nullptr;
  if (wasSet) before = value;
  ::setenv(kHome, "/nonexistent", 1);
}

WithoutVipsModules::~WithoutVipsModules() {
  if (wasSet)
    ::setenv(kHome, before.c_str(), 1);
  else
    ::unsetenv(kHome);
}

void LoadModuleOf(const ImageFormat& format) {
  if (format.module.empty()) return;
  static std::mutex mutex;
  static std::set<std::string_view> loaded;
  const std::lock_guard lock(mutex);
  if (!loaded.insert(format.module).second) return;
  const std::filesystem::path file =
      ModuleFolder() / ("vips-" + std::string(format.module) + ".so");
  // What it registers stays for the rest of the process.
  if (GModule* module = g_module_open(file.c_str(), G_MODULE_BIND_LAZY))
    g_module_make_resident(module);
}

}  // namespace runner
