// The plug-in's calls of malloc and calloc, counted, with one that fails.
#pragma once

#include <cstdint>

namespace support {

// Of PictureInternals, whose calls the linker leads through wrappers of its own; of a bundle, to
// which the test process gives wrappers.
struct MemoryCalls {
  int64_t made = 0;
  int64_t failing = 0;  // the number of the call that returns null, from 1; 0: none

  // Counts a call; false when it is to fail.
  bool Enter() { return ++made != failing; }
  // From now on the n-th call fails.
  void FailNth(int64_t n) {
    made = 0;
    failing = n;
  }
};

}  // namespace support
