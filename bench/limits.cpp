#include "bench/limits.h"

#include <cstring>

#if defined(__x86_64__)
#define WIDEST_VECTORS __attribute__((target_clones("default", "avx2", "arch=x86-64-v4")))
#else
#define WIDEST_VECTORS
#endif

namespace bench {

namespace {

volatile uint64_t gSink;

// The words of a row, joined, in vectors that don't wait for each other.
WIDEST_VECTORS uint64_t ReadRow(const uint8_t* row, size_t size) {
  constexpr size_t kLanes = 32;
  uint64_t joined[kLanes] = {};
  size_t at = 0;
  for (; at + sizeof joined <= size; at += sizeof joined) {
    uint64_t words[kLanes];
    std::memcpy(words, row + at, sizeof words);
    for (size_t lane = 0; lane < kLanes; ++lane) joined[lane] |= words[lane];
  }
  uint64_t all = 0;
  for (; at < size; ++at) all |= row[at];
  for (uint64_t lane : joined) all |= lane;
  return all;
}

WIDEST_VECTORS void JoinRows(const uint8_t* __restrict a, const uint8_t* __restrict b,
                             uint8_t* __restrict to, size_t size) {
  for (size_t at = 0; at < size; ++at) to[at] = a[at] ^ b[at];
}

// Rows that lie one after the other are one long row.
Area Joined(Area area) {
  if (area.stride == area.rowSize) {
    area.rowSize *= area.rows;
    area.stride = area.rowSize;
    area.rows = 1;
  }
  return area;
}

}  // namespace

const char* NameOf(Limit limit) {
  switch (limit) {
    case Limit::copy:
      return "memcpy";
    case Limit::read:
      return "pure read";
    case Limit::fill:
      return "memset";
    case Limit::twoReadsAndWrite:
      return "two reads, one write";
    case Limit::moveInPlace:
      return "in-place move";
    case Limit::none:
      break;
  }
  return "";
}

std::function<void()> MakeLimit(Limit limit, const Area& whole) {
  const Area area = Joined(whole);
  const auto perRow = [area](auto pass) {
    return [area, pass] {
      for (size_t y = 0; y < area.rows; ++y) pass(area, y * area.stride);
    };
  };
  switch (limit) {
    case Limit::copy:
      if (area.sources.empty() || area.target == nullptr) return {};
      return perRow([](const Area& a, size_t at) {
        std::memcpy(a.target + at, a.sources[0] + at, a.rowSize);
      });
    case Limit::read:
      if (area.sources.empty()) return {};
      return perRow(
          [](const Area& a, size_t at) { gSink = ReadRow(a.sources[0] + at, a.rowSize); });
    case Limit::fill:
      if (area.target == nullptr) return {};
      return perRow([](const Area& a, size_t at) { std::memset(a.target + at, 255, a.rowSize); });
    case Limit::twoReadsAndWrite:
      if (area.sources.size() < 2 || area.target == nullptr) return {};
      return perRow([](const Area& a, size_t at) {
        JoinRows(a.sources[0] + at, a.sources[1] + at, a.target + at, a.rowSize);
      });
    case Limit::moveInPlace:
      if (area.target == nullptr) return {};
      return perRow([](const Area& a, size_t at) {
        constexpr size_t kBy = 4096;
        const size_t by = a.rowSize > 2 * kBy ? kBy : a.rowSize / 2;
        std::memmove(a.target + at + by, a.target + at, a.rowSize - by);
      });
    case Limit::none:
      break;
  }
  return {};
}

}  // namespace bench
