// The one host of the process, and the lock that keeps threads out of each other's way in it.
#pragma once

#include <pybind11/pybind11.h>

#include <filesystem>
#include <mutex>

#include "host/host.h"

namespace pyhost {

// Starts the host and loads the plug-in. The host is never ended: arrays that share the memory of
// its pictures may live as long as the interpreter does. Throws host::Error, also when there is a
// host already.
void Start(const std::filesystem::path& plugin);

// Throws host::Error before Start.
host::Host& TheHost();

// How pictures lie in memory: as NumPy and Pillow have them, R, G, B, A and not premultiplied. The
// command line's name for it.
constexpr const char* kLayout = "rgba";
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

// Around a fork: it waits until no other thread is in the host, whose work and lock would stay in
// the child for ever. Both run in the thread that forks.
void BeforeFork();
void AfterFork(bool inChild);

}  // namespace pyhost
