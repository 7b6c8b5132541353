// What the tests of the scrolling methods share: rows and columns moved by hand.
#pragma once

#include <array>
#include <climits>
#include <functional>

#include "host/quickdraw.h"
#include "tests/support/fixture.h"

namespace scrolling {

using host::PictureLayout;
using support::Bytes;
using support::FillWithNoise;
using support::LayoutPair;
using support::PictureRef;
using support::Random;

// The remainder that is never negative.
inline int32_t Modulo(int64_t value, int32_t length) {
  return static_cast<int32_t>((value % length + length) % length);
}

// A picture's bytes, row by row: the pixels, then the padding.
struct Rows {
  explicit Rows(const PictureRef& picture)
      : bytes(Bytes(picture)),
        width(picture->Width()),
        height(picture->Height()),
        rowBytes(height > 0 ? static_cast<int32_t>(bytes.size()) / height : 0) {}

  uint8_t& At(int32_t row, int32_t byte) {
    return bytes[static_cast<size_t>(row) * static_cast<size_t>(rowBytes) +
                 static_cast<size_t>(byte)];
  }

  std::vector<uint8_t> bytes;
  int32_t width, height, rowBytes;
};

// Row i goes to row i + delta. The padding of a bitmap moves with its row; rows of a table are as
// long as their pixels.
inline std::vector<uint8_t> MovedDown(const PictureRef& picture, int64_t delta) {
  Rows from(picture);
  Rows to = from;
  const bool isTable = picture->Layout().storage == host::Storage::kRowTable;
  const int32_t moving = isTable ? from.width * 4 : from.rowBytes;
  for (int32_t y = 0; y < from.height; ++y) {
    for (int32_t i = 0; i < moving; ++i) to.At(Modulo(y + delta, from.height), i) = from.At(y, i);
  }
  return to.bytes;
}

// Column i goes to column i + delta.
inline std::vector<uint8_t> MovedRight(const PictureRef& picture, int64_t delta) {
  Rows from(picture);
  Rows to = from;
  for (int32_t y = 0; y < from.height; ++y) {
    for (int32_t x = 0; x < from.width; ++x) {
      for (int32_t i = 0; i < 4; ++i) {
        to.At(y, Modulo(x + delta, from.width) * 4 + i) = from.At(y, x * 4 + i);
      }
    }
  }
  return to.bytes;
}

// Makes what the host shows of a picture what it now holds, so that a missed clear can be seen.
inline void Show(const PictureRef& picture) {
  picture->SetPixel(0, 0, picture->Pixel(0, 0));
  picture->Rendering();
}

class ScrollingTest : public support::PluginTest {
 protected:
  PictureRef Noise(int32_t width, int32_t height, const PictureLayout& layout) {
    PictureRef picture = Host().NewPicture(width, height, layout);
    FillWithNoise(picture, random);
    Show(picture);
    return picture;
  }
  PictureRef Noise(int32_t width, int32_t height) {
    return Noise(width, height, PictureLayout::BitmapContext(2, 8));
  }

  bool Down(const PictureRef& picture, int32_t delta, bool wrap = true, bool mask = false) {
    return Call<bool>("ScrollVerticalKRT", picture, delta, wrap, mask);
  }
  bool Right(const PictureRef& picture, int32_t delta, bool wrap = true, bool mask = false) {
    return Call<bool>("ScrollHorizontalKRT", picture, delta, wrap, mask);
  }
  bool Both(const PictureRef& picture, int32_t dx, int32_t dy, bool wrap = true,
            bool mask = false) {
    return Call<bool>("ScrollKRT", picture, dx, dy, wrap, mask);
  }

  Random random{0x5C011};
};

}  // namespace scrolling
