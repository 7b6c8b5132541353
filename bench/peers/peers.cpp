#include "bench/peers/peers.h"

namespace bench {

namespace {

struct Library {
  const char* name;
  bool present;
  std::vector<Peer> (*peers)();
};

[[maybe_unused]] std::vector<Peer> None() { return {}; }

constexpr Library kLibraries[] = {
#ifdef BENCH_OPENCV
    {"OpenCV " BENCH_OPENCV, true, OpenCvPeers},
#else
    {"OpenCV", false, None},
#endif
#ifdef BENCH_VIPS
    {"libvips " BENCH_VIPS, true, VipsPeers},
#else
    {"libvips", false, None},
#endif
#ifdef BENCH_LIBYUV
    {"libyuv " BENCH_LIBYUV, true, LibyuvPeers},
#else
    {"libyuv", false, None},
#endif
};

std::string Names(bool present) {
  std::string names;
  for (const Library& library : kLibraries) {
    if (library.present == present)
      names += (names.empty() ? "" : ", ") + std::string(library.name);
  }
  return names;
}

}  // namespace

const std::vector<Peer>& AllPeers() {
  static const std::vector<Peer> peers = [] {
    std::vector<Peer> all;
    for (const Library& library : kLibraries) {
      for (Peer& peer : library.peers()) all.push_back(std::move(peer));
    }
    return all;
  }();
  return peers;
}

std::string PeersPresent() { return Names(true); }
std::string PeersAbsent() { return Names(false); }

}  // namespace bench
