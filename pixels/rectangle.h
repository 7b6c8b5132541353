// Rectangles of pixels: as a caller asks for them, and as they lie inside a picture.
#pragma once

#include <cstdint>

// What a caller asks for. A negative width or height means the picture's.
struct RectangleRequest {
  int32_t left;
  int32_t top;
  int32_t width;
  int32_t height;
};

inline constexpr RectangleRequest kWholePicture{0, 0, -1, -1};

// Columns left to right - 1 of rows top to bottom - 1.
struct Rectangle {
  int32_t left;
  int32_t top;
  int32_t right;
  int32_t bottom;

  constexpr bool IsEmpty() const { return left >= right || top >= bottom; }
};

// The part of [start, start + length) that lies inside [0, size), as first and end. The end is
// computed from the unclamped start, in 64 bits.
constexpr void ClipAxis(int32_t start, int32_t length, int32_t size, int32_t* first, int32_t* end) {
  const int64_t unclampedEnd = int64_t{start} + (length < 0 ? size : length);
  *first = start < 0 ? 0 : start;
  *end = unclampedEnd > size ? size : unclampedEnd < 0 ? 0 : static_cast<int32_t>(unclampedEnd);
}

// The part of `request` inside a picture of `width` by `height` pixels.
constexpr Rectangle ClipRectangle(const RectangleRequest& request, int32_t width, int32_t height) {
  Rectangle clipped{};
  ClipAxis(request.left, request.width, width, &clipped.left, &clipped.right);
  ClipAxis(request.top, request.height, height, &clipped.top, &clipped.bottom);
  return clipped;
}
