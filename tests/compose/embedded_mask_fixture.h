// What the tests of embedded masks share.
#pragma once

#include <algorithm>

#include "tests/support/fixture.h"

namespace embedded_mask {

using host::PictureLayout;
using support::At;
using support::Bytes;
using support::FillWithNoise;
using support::IsNewPicture;
using support::LayoutPair;
using support::PictureRef;
using support::Random;
using support::Rgb;

using Result = host::Ref<host::Picture>;

inline bool AlphaComesFirst(const PictureLayout& layout) {
  return layout.storage == host::Storage::kBitmapContext && layout.alphaInfo % 2 == 0;
}

// The grey that reading gives for a pixel of these four bytes in memory.
inline int GreyOf(const PictureLayout& layout, const uint8_t* bytes) {
  if (layout.storage != host::Storage::kRowTable) return bytes[AlphaComesFirst(layout) ? 0 : 3];
  const int top = bytes[3];
  return (top % 128 * 2) | (top % 2);
}

// A bitmap of another layout, or another row table.
inline PictureLayout AnotherLayout(const PictureLayout& layout, Random& random) {
  const int32_t padding = random.Between(0, 3) * 4;
  if (layout.storage == host::Storage::kRowTable) return PictureLayout::RowTable(padding);
  return PictureLayout::BitmapContext(static_cast<uint32_t>(random.Between(1, 6)), padding);
}

class EmbeddedMaskTest : public support::PluginTest {
 protected:
  PictureRef Noise(int32_t width, int32_t height, const PictureLayout& layout) {
    PictureRef picture = Host().NewPicture(width, height, layout);
    FillWithNoise(picture, random);
    return picture;
  }
  PictureRef Plain(int32_t width, int32_t height, Rgb colour) {
    PictureRef picture = Host().NewPicture(width, height);
    support::Fill(picture, colour);
    return picture;
  }

  bool HasMask(const PictureRef& picture) { return Call<bool>("HasMaskKRT as boolean", picture); }
  Result Get(const PictureRef& picture, bool swap) {
    return Call<Result>("EmbeddedMaskKRT", picture, swap);
  }
  void Set(const PictureRef& picture, bool swap, const PictureRef& mask) {
    const host::Snapshot before = Host().census.Take();
    Assign(Find("Picture", "EmbeddedMaskKRT", 1), picture, swap, mask);
    EXPECT_EQ(Host().census.DifferenceText(before), "");
  }

  // The target's bytes after an assignment: the mask's red, or what is left of 255, in the first
  // byte of each pixel that both pictures have.
  std::vector<uint8_t> Assigned(const PictureRef& target, bool swap, const PictureRef& mask) {
    std::vector<uint8_t> bytes = Bytes(target);
    const size_t rowBytes = bytes.size() / static_cast<size_t>(target->Height());
    for (int32_t y = 0; y < std::min(target->Height(), mask->Height()); ++y) {
      for (int32_t x = 0; x < std::min(target->Width(), mask->Width()); ++x) {
        const int red = At(mask, x, y).red;
        bytes[static_cast<size_t>(y) * rowBytes + static_cast<size_t>(x) * 4] =
            static_cast<uint8_t>(swap ? 255 - red : red);
      }
    }
    return bytes;
  }

  Random random{0xE3BED};
};

}  // namespace embedded_mask
