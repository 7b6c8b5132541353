// The one host of the process, and the lock that keeps threads out of each other's way in it.
#pragma once

#include <pybind11/pybind11.h>

#include <filesystem>
#include <mutex>

#include "host/host.h"
#include "runner/files/image_reader.h"

namespace pyhost {

// Starts the host and loads the plug-in. The host is never ended: arrays that share the memory of
// its pictures may live as long as the interpreter does. Throws host::Error, also when there is a
// host already.
void Start(const std::filesystem::path& plugin);

// Throws host::Error before Start.
host::Host& TheHost();

// How files become pictures: as NumPy and Pillow have them, R, G, B, A and not premultiplied.
const runner::ImageOptions& Images();
// The layout of pictures over arrays, and of new ones.
const host::PictureLayout& ArrayLayout();

// While one lives, no other thread is in the host. Waits without holding the interpreter lock,
// which it needs held; one thread may have several at a time.
class Locked {
 public:
  Locked();

 private:
  std::unique_lock<std::recursive_mutex> lock;
};

}  // namespace pyhost
