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

// Column i goes to column i + dx, row i to row i + dy. The padding of a bitmap moves with its row;
// rows of a table are as long as their pixels.
inline std::vector<uint8_t> Moved(const PictureRef& picture, int64_t dx, int64_t dy) {
  Rows from(picture);
  Rows to = from;
  const bool isTable = picture->Layout().storage == host::Storage::kRowTable;
  for (int32_t y = 0; y < from.height; ++y) {
    const int32_t row = Modulo(y + dy, from.height);
    for (int32_t i = 0; i < from.width * 4; ++i) {
      to.At(row, Modulo(i / 4 + dx, from.width) * 4 + i % 4) = from.At(y, i);
    }
    if (isTable) continue;
    for (int32_t i = from.width * 4; i < from.rowBytes; ++i) to.At(row, i) = from.At(y, i);
  }
  return to.bytes;
}
inline std::vector<uint8_t> MovedDown(const PictureRef& picture, int64_t delta) {
  return Moved(picture, 0, delta);
}
inline std::vector<uint8_t> MovedRight(const PictureRef& picture, int64_t delta) {
  return Moved(picture, delta, 0);
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
