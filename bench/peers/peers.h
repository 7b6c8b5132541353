// The same work by well-known libraries, on the same buffers and in one thread. They need not
// compute the same to the last bit; the report says where they do.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "bench/limits.h"

namespace bench {

struct Peer {
  std::string operation;  // the case's `peers`
  std::string library;
  // The work on the area, whose pixels are R, G, B, A. What it needs is made here, not in the call.
  std::function<std::function<void()>(const Area&)> prepare;
};

// Of every library that was there when this was built.
const std::vector<Peer>& AllPeers();
// Their names, and those of the libraries that were not.
std::string PeersPresent();
std::string PeersAbsent();

std::vector<Peer> OpenCvPeers();
std::vector<Peer> LibyuvPeers();
std::vector<Peer> VipsPeers();

}  // namespace bench
