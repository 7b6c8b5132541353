// Words of 32 bits, each of which says something about one of 32 pixels.
#pragma once

#include <cstdint>

inline constexpr int32_t kWordBits = 32;

// The word and the bit in it that stand for column x; -1 is the last bit of word -1.
constexpr int32_t WordOf(int32_t x) { return x >> 5; }
constexpr int32_t BitOf(int32_t x) { return x & 31; }

// Bits first to last, 0 <= first <= last <= 31.
constexpr uint32_t BitRange(int32_t first, int32_t last) {
  return ~0U << first & ~0U >> (31 - last);
}

// The number of the lowest and of the highest bit that is set, of which there must be one, and of
// the bits at the lower and at the upper end that are.
constexpr int32_t LowestBit(uint32_t bits) { return __builtin_ctz(bits); }
constexpr int32_t HighestBit(uint32_t bits) { return 31 - __builtin_clz(bits); }
constexpr int32_t OnesBelow(uint32_t bits) { return ~bits == 0 ? 32 : __builtin_ctz(~bits); }
constexpr int32_t OnesAbove(uint32_t bits) { return ~bits == 0 ? 32 : __builtin_clz(~bits); }

// The bits around `bit` that are set without a gap. It must be set itself.
constexpr uint32_t RunAround(uint32_t bits, int32_t bit) {
  const uint32_t gapsBelow = ~bits & ((1U << bit) - 1);
  const uint32_t gapsAbove = ~bits & ~0U << bit;
  const int32_t first = gapsBelow == 0 ? 0 : HighestBit(gapsBelow) + 1;
  const int32_t last = gapsAbove == 0 ? kWordBits - 1 : LowestBit(gapsAbove) - 1;
  return BitRange(first, last);
}

// Each bit by itself: looked up, loops over the bits of a word become vectors on every processor.
inline constexpr uint32_t kBit[kWordBits] = {
    1U << 0,  1U << 1,  1U << 2,  1U << 3,  1U << 4,  1U << 5,  1U << 6,  1U << 7,
    1U << 8,  1U << 9,  1U << 10, 1U << 11, 1U << 12, 1U << 13, 1U << 14, 1U << 15,
    1U << 16, 1U << 17, 1U << 18, 1U << 19, 1U << 20, 1U << 21, 1U << 22, 1U << 23,
    1U << 24, 1U << 25, 1U << 26, 1U << 27, 1U << 28, 1U << 29, 1U << 30, 1U << 31};

// Calls `visit(i)` for 0 <= i < count and i < 32. A whole word is a loop of its own, of a length
// that the compiler knows.
template <class Visit>
void ForBits(int32_t count, const Visit& visit) {
  if (count >= kWordBits) {
    for (int32_t i = 0; i < kWordBits; ++i) visit(i);
  } else {
    for (int32_t i = 0; i < count; ++i) visit(i);
  }
}

// Bit i is set where `test(i)`, for 0 <= i < count and i < 32.
template <class Test>
uint32_t BitsWhere(int32_t count, const Test& test) {
  uint32_t bits = 0;
  ForBits(count, [&](int32_t i) { bits |= test(i) ? kBit[i] : 0; });
  return bits;
}
