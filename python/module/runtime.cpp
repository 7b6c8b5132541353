#include "python/module/runtime.h"

#include "host/error.h"
#include "runner/layouts.h"

namespace pyhost {
namespace {

host::Host* running = nullptr;
runner::ImageOptions images;
std::recursive_mutex mutex;

}  // namespace

void Start(const std::filesystem::path& plugin) {
  host::Settings settings;
  runner::ChooseLayouts("rgba", &settings, &images);
  auto started = std::make_unique<host::Host>(settings);
  started->LoadPlugin(plugin);
  running = started.release();
}

host::Host& TheHost() {
  if (running == nullptr) throw host::Error("there is no host; import picturehost instead");
  return *running;
}

const runner::ImageOptions& Images() { return images; }
const host::PictureLayout& ArrayLayout() { return images.alphaLayout; }

Locked::Locked() : lock(mutex, std::try_to_lock) {
  if (lock.owns_lock()) return;
  const pybind11::gil_scoped_release released;
  lock.lock();
}

}  // namespace pyhost
