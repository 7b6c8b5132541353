// QuickDraw's line as spans of rows.
#pragma once

#include <cstdint>

namespace host::runtime {

// Columns left <= x < right; empty when right <= left.
struct PenSpan {
  int64_t left = 0, right = 0;
};

// A line whose every point carries a rectangle of the pen's size below and to the right of it. With
// a = the longer and b = the shorter of its two distances, point i of 0 .. a lies i along the one
// axis and round(i * b / a), halves rounded up, along the other, counted from the first end.
//
// Consecutive points differ by at most one in each direction, so what they cover of a row is one
// span, and a row costs the same however long the line or large the pen is.
class PenLine {
 public:
  PenLine(int32_t x1, int32_t y1, int32_t x2, int32_t y2, int32_t width, int32_t height);

  // What the line covers of row y.
  PenSpan At(int32_t y) const;

 private:
  int64_t ShorterAt(int64_t i) const;
  int64_t FirstWithShorter(int64_t k) const;

  int64_t x1, y1;
  int64_t penWidth, penHeight;
  bool leftwards, upwards;
  int64_t dx, dy;
};

}  // namespace host::runtime
