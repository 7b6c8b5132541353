// One bit for each pixel of a picture.
#pragma once

#include <cstddef>

#include "pixels/bits.h"
#include "pixels/buffer.h"

// A border of zeros, one pixel wide, lies around the picture and may be read like a pixel: the rows
// -1 and height are there, column width is in the last word of its row, and column -1 is the last
// bit of the word before the row.
class BitGrid {
 public:
  // All bits 0; false where there was no memory. Sizes are those of a picture, 1 to 32767.
  BitGrid(int32_t width, int32_t height)
      : wordsPerRow_(width / kWordBits + 1),
        memory_(Buffer::Zeroed(static_cast<size_t>(wordsPerRow_) *
                               (static_cast<size_t>(height) + 2) * sizeof(uint32_t))) {}

  explicit operator bool() const { return static_cast<bool>(memory_); }
  int32_t WordsPerRow() const { return wordsPerRow_; }
  // The first word of row y, -1 <= y <= height.
  uint32_t* Row(int32_t y) const {
    return reinterpret_cast<uint32_t*>(memory_.bytes()) +
           static_cast<ptrdiff_t>(wordsPerRow_) * (y + 1);
  }

 private:
  int32_t wordsPerRow_;
  Buffer memory_;
};

// Calls `visit(word, columns)` for the words of a row that the columns left to right reach into,
// with the bits that lie in them, until one returns true. True when one did; false for no columns.
template <class Visit>
constexpr bool VisitColumns(int32_t left, int32_t right, const Visit& visit) {
  if (left > right) return false;
  const int32_t first = WordOf(left);
  const int32_t last = WordOf(right);
  if (first == last) return visit(first, BitRange(BitOf(left), BitOf(right)));
  if (visit(first, BitRange(BitOf(left), 31))) return true;
  for (int32_t word = first + 1; word < last; ++word) {
    if (visit(word, ~0U)) return true;
  }
  return visit(last, BitRange(0, BitOf(right)));
}

// Whether a bit of the row's columns left to right is set; false for no columns.
constexpr bool AnyBit(const uint32_t* row, int32_t left, int32_t right) {
  return VisitColumns(left, right,
                      [&](int32_t word, uint32_t columns) { return (row[word] & columns) != 0; });
}

constexpr void SetBits(uint32_t* row, int32_t left, int32_t right) {
  VisitColumns(left, right, [&](int32_t word, uint32_t columns) {
    row[word] |= columns;
    return false;
  });
}

constexpr void ClearBits(uint32_t* row, int32_t left, int32_t right) {
  VisitColumns(left, right, [&](int32_t word, uint32_t columns) {
    row[word] &= ~columns;
    return false;
  });
}
