#include "render/wu_line.h"

int32_t gOutLineColorR;
int32_t gOutLineColorG;
int32_t gOutLineColorB;

namespace {

// The existing pixel's blue goes into the new green and its green into the new blue (intended).
constexpr Pixel BlendWithOutline(Pixel pixel, Pixel outline, int32_t weight) {
  const int32_t rest = 255 - weight;
  return {(pixel.red * weight + outline.red * rest) / 255,
          (pixel.blue * weight + outline.green * rest) / 255,
          (pixel.green * weight + outline.blue * rest) / 255};
}

constexpr int32_t ToSigned16(int32_t value) { return static_cast<int16_t>(value); }

// from - to, wrapped to 16 bits.
constexpr int32_t Distance16(int32_t from, int32_t to) {
  return static_cast<uint16_t>(static_cast<uint32_t>(to) - static_cast<uint32_t>(from));
}

// Those of the steps 1 to `count` down from row `start` that reach a row of the picture: first and
// end. The others draw nothing, and there may be very many.
struct Steps {
  int32_t first;
  int32_t end;
};
constexpr Steps StepsInside(int32_t start, int32_t count, int32_t height) {
  const int64_t first = start < 0 ? -int64_t{start} : 1;
  const int64_t end = int64_t{height} - start;
  if (first > count || end <= first) return {0, 0};
  return {static_cast<int32_t>(first), end > count ? count + 1 : static_cast<int32_t>(end)};
}

}  // namespace

void DrawPixel(const PictureWriter& writer, int32_t x, int32_t y, int32_t weight) {
  if (x < 0 || y < 0 || x >= writer.width || y >= writer.height) return;
  Word* address = writer.PixelAt(x, y);
  const Pixel outline{gOutLineColorR, gOutLineColorG, gOutLineColorB};
  const Pixel blended = BlendWithOutline(ReadPixel(address, writer.format), outline, weight);
  WritePixel(address, writer.format, blended);
}

void DrawWuLine(const PictureWriter& writer, int32_t x0, int32_t y0, int32_t x1, int32_t y1) {
  if (y0 > y1) {
    const int32_t upperX = ToSigned16(x1);
    const int32_t upperY = ToSigned16(y1);
    x1 = ToSigned16(x0);
    y1 = ToSigned16(y0);
    x0 = upperX;
    y0 = upperY;
  }
  DrawPixel(writer, x0, y0, 0);

  const int32_t xDirection = x1 >= x0 ? 1 : -1;
  const int32_t deltaX = x1 >= x0 ? Distance16(x0, x1) : Distance16(x1, x0);
  const int32_t deltaY = Distance16(y0, y1);

  // Horizontal, vertical and diagonal lines need no blending.
  if (deltaY == 0) {
    for (int32_t step = 1; step <= deltaX; ++step) {
      DrawPixel(writer, WrappingAdd(x0, step * xDirection), y0, 0);
    }
    return;
  }
  if (deltaX == 0 || deltaX == deltaY) {
    const int32_t stepX = deltaX == 0 ? 0 : xDirection;
    const Steps steps = StepsInside(y0, deltaY, writer.height);
    for (int32_t step = steps.first; step < steps.end; ++step) {
      DrawPixel(writer, WrappingAdd(x0, step * stepX), y0 + step, 0);
    }
    return;
  }

  // Every other line covers two neighbouring pixels at each step along its longer axis. How far it
  // has come along the shorter one is a 16.16 fixed-point number, whose fraction is the weight.
  if (deltaX > deltaY) {
    const uint32_t slope = (static_cast<uint32_t>(deltaY) << 16) / static_cast<uint32_t>(deltaX);
    for (int32_t step = 1; step < deltaX; ++step) {
      const uint32_t way = static_cast<uint32_t>(step) * slope;
      const int32_t weight = static_cast<int32_t>(way >> 8 & 255);
      const int32_t x = WrappingAdd(x0, step * xDirection);
      const int32_t y = WrappingAdd(y0, static_cast<int32_t>(way >> 16));
      DrawPixel(writer, x, y, weight);
      DrawPixel(writer, x, WrappingAdd(y, 1), weight ^ 255);
    }
  } else {
    const uint32_t slope = (static_cast<uint32_t>(deltaX) << 16) / static_cast<uint32_t>(deltaY);
    const Steps steps = StepsInside(y0, deltaY - 1, writer.height);
    for (int32_t step = steps.first; step < steps.end; ++step) {
      const uint32_t way = static_cast<uint32_t>(step) * slope;
      const int32_t weight = static_cast<int32_t>(way >> 8 & 255);
      const int32_t x = WrappingAdd(x0, static_cast<int32_t>(way >> 16) * xDirection);
      DrawPixel(writer, x, y0 + step, weight);
      DrawPixel(writer, WrappingAdd(x, xDirection), y0 + step, weight ^ 255);
    }
  }
  DrawPixel(writer, x1, y1, 0);
}
