// Antialiased lines on a picture in memory, drawn step by step as their description has it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "tests/support/pictures.h"

namespace support {

inline int16_t Signed16(int64_t value) { return static_cast<int16_t>(value); }
inline uint16_t Unsigned16(int64_t value) { return static_cast<uint16_t>(value); }

inline Rgb Channels(uint32_t colour) {
  return {static_cast<int>(colour >> 16 & 255), static_cast<int>(colour >> 8 & 255),
          static_cast<int>(colour & 255)};
}

struct Canvas {
  int32_t width = 0, height = 0;
  std::vector<Rgb> pixels;
  Rgb outline;  // colour of the lines

  Canvas(int32_t w, int32_t h, Rgb back, Rgb outlineColour)
      : width(w),
        height(h),
        pixels(static_cast<size_t>(w) * static_cast<size_t>(h), back),
        outline(outlineColour) {}

  Rgb& At(int32_t x, int32_t y) {
    return pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
  }
  void DrawPixel(int64_t x, int64_t y, int weight);
  void DrawWuLine(int32_t x0, int32_t y0, int32_t x1, int32_t y1);
};

inline void Canvas::DrawPixel(int64_t x, int64_t y, int weight) {
  if (x < 0 || y < 0 || x >= width || y >= height) return;
  Rgb& pixel = At(static_cast<int32_t>(x), static_cast<int32_t>(y));
  const int k = 255 - weight;
  pixel = {(pixel.red * weight + outline.red * k) / 255,
           (pixel.blue * weight + outline.green * k) / 255,
           (pixel.green * weight + outline.blue * k) / 255};
}

inline void Canvas::DrawWuLine(int32_t left, int32_t top, int32_t right, int32_t bottom) {
  int64_t x0 = left, y0 = top, x1 = right, y1 = bottom;
  if (y0 > y1) {
    std::swap(x0, x1);
    std::swap(y0, y1);
    x0 = Signed16(x0);
    y0 = Signed16(y0);
    x1 = Signed16(x1);
    y1 = Signed16(y1);
  }
  DrawPixel(x0, y0, 0);
  const int direction = x1 >= x0 ? 1 : -1;
  const uint16_t deltaX = Unsigned16(std::abs(x1 - x0));
  const uint16_t deltaY = Unsigned16(y1 - y0);
  if (deltaY == 0) {
    for (int i = 0; i < deltaX; ++i) DrawPixel(x0 += direction, y0, 0);
    return;
  }
  if (deltaX == 0) {
    for (int i = 0; i < deltaY; ++i) DrawPixel(x0, ++y0, 0);
    return;
  }
  if (deltaX == deltaY) {
    for (int i = 0; i < deltaY; ++i) DrawPixel(x0 += direction, ++y0, 0);
    return;
  }
  uint16_t accumulator = 0;
  const bool steep = deltaY > deltaX;
  const uint32_t adjust =
      steep ? (uint32_t{deltaX} << 16) / deltaY : (uint32_t{deltaY} << 16) / deltaX;
  for (int i = 1; i < std::max(deltaX, deltaY); ++i) {
    const uint16_t old = accumulator;
    accumulator = Unsigned16(accumulator + adjust);
    if (steep) {
      if (accumulator <= old) x0 += direction;
      y0 += 1;
    } else {
      if (accumulator <= old) y0 += 1;
      x0 += direction;
    }
    const int weight = accumulator >> 8;
    DrawPixel(x0, y0, weight);
    DrawPixel(steep ? x0 + direction : x0, steep ? y0 : y0 + 1, weight ^ 255);
  }
  DrawPixel(x1, y1, 0);
}

}  // namespace support
