// One bit for each pixel of a picture.
#pragma once

#include <cstddef>

#include "pixels/buffer.h"

// Bit x % 32 of word x / 32 of row y stands for pixel (x, y). A border of zeros, one pixel wide,
// lies around the picture and may be read like a pixel: the rows -1 and height are there, column
// width is in the last word of its row, and column -1 is the top bit of the word before the row.
class BitGrid {
 public:
  static constexpr int32_t kWordBits = 32;

  // All bits 0; false where there was no memory. Sizes are those of a picture, 1 to 32767.
  BitGrid(int32_t width, int32_t height)
      : wordsPerRow_(width / kWordBits + 1),
        memory_(Buffer::Zeroed(static_cast<size_t>(wordsPerRow_) *
                               (static_cast<size_t>(height) + 2) * sizeof(uint32_t))) {}

  explicit operator bool() const { return static_cast<bool>(memory_); }
  int32_t WordsPerRow() const { return wordsPerRow_; }
  uint32_t* Row(int32_t y) const {
    return reinterpret_cast<uint32_t*>(memory_.bytes()) +
           static_cast<ptrdiff_t>(wordsPerRow_) * (y + 1);
  }

 private:
  int32_t wordsPerRow_;
  Buffer memory_;
};

// The word and the bit in it that stand for column x, -1 included.
constexpr int32_t WordOf(int32_t x) { return x >> 5; }
constexpr int32_t BitOf(int32_t x) { return x & 31; }

// Bits first to last of a word, 0 <= first <= last <= 31.
constexpr uint32_t BitRange(int32_t first, int32_t last) {
  return ~0U << first & ~0U >> (31 - last);
}

// The part of word `word` that lies in the columns left to right, which reach into that word.
constexpr uint32_t ColumnsInWord(int32_t word, int32_t left, int32_t right) {
  return BitRange(word == WordOf(left) ? BitOf(left) : 0,
                  word == WordOf(right) ? BitOf(right) : 31);
}

// Whether a bit of the row's columns left to right is set; false for no columns.
constexpr bool AnyBit(const uint32_t* row, int32_t left, int32_t right) {
  if (left > right) return false;
  for (int32_t word = WordOf(left); word <= WordOf(right); ++word) {
    if ((row[word] & ColumnsInWord(word, left, right)) != 0) return true;
  }
  return false;
}

// The ones at the lower and at the upper end of a word.
constexpr int32_t TrailingOnes(uint32_t bits) { return ~bits == 0 ? 32 : __builtin_ctz(~bits); }
constexpr int32_t LeadingOnes(uint32_t bits) { return ~bits == 0 ? 32 : __builtin_clz(~bits); }

// Each bit of a word, for row loops: a lookup is what compilers turn into vectors.
inline constexpr uint32_t kBit[BitGrid::kWordBits] = {
    1U << 0,  1U << 1,  1U << 2,  1U << 3,  1U << 4,  1U << 5,  1U << 6,  1U << 7,
    1U << 8,  1U << 9,  1U << 10, 1U << 11, 1U << 12, 1U << 13, 1U << 14, 1U << 15,
    1U << 16, 1U << 17, 1U << 18, 1U << 19, 1U << 20, 1U << 21, 1U << 22, 1U << 23,
    1U << 24, 1U << 25, 1U << 26, 1U << 27, 1U << 28, 1U << 29, 1U << 30, 1U << 31};
