#include "python/module/runtime.h"

#include "host/error.h"
#include "runner/layouts.h"

namespace pyhost {
namespace {

host::Host* running = nullptr;
host::PictureLayout arrayLayout;
std::recursive_mutex mutex;

}  // namespace

void Start(const std::filesystem::path& plugin) {
  host::Settings settings;
  runner::ImageOptions images;
  runner::ChooseLayouts(kLayout, &settings, &images);
  arrayLayout = images.alphaLayout;
  auto started = std::make_unique<host::Host>(settings);
  started->LoadPlugin(plugin);
  running = started.release();
}

host::Host& TheHost() {
  if (running == nullptr) throw host::Error("there is no host; import picturehost instead");
  return *running;
}

const host::PictureLayout& ArrayLayout() { return arrayLayout; }

Locked::Locked() : lock(mutex, std::try_to_lock) {
  if (lock.owns_lock()) return;
  const pybind11::gil_scoped_release released;
  lock.lock();
}

void BeforeFork() {
  if (mutex.try_lock()) return;
  const pybind11::gil_scoped_release released;
  mutex.lock();
}

void AfterFork(bool inChild) {
  // The system numbers the child's thread anew, so that it isn't the one that has locked.
  if (inChild)
    new (&mutex) std::recursive_mutex;
  else
    mutex.unlock();
}

}  // namespace pyhost
