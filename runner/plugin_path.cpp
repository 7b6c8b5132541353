#include "runner/plugin_path.h"

#include "runner/failure.h"
#include "runner/names.h"

namespace runner {

namespace fs = std::filesystem;

fs::path FindPlugin() {
  std::error_code error;
  const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
  fs::path beside = folder / "Picture.so";
  if (fs::exists(beside, error)) return beside;
  fs::path installed = (folder / PICTURE_PLUGIN_FROM_PROGRAM / "Picture.so").lexically_normal();
  if (fs::exists(installed, error)) return installed;
  throw Failure("there is no plug-in at " + Quoted(beside.native()) + " or " +
                Quoted(installed.native()) + "; name one with --plugin");
}

}  // namespace runner
