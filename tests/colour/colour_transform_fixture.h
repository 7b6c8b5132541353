// What the tests of TransformColorsKRT share.
#pragma once

#include <array>
#include <utility>
#include <vector>

#include "tests/support/fixture.h"

namespace colour_transform {

using host::PictureLayout;
using support::LayoutPair;
using support::PictureRef;
using support::Random;
using support::Rgb;
using BlockRef = host::Ref<host::MemoryBlock>;
using Table = std::array<uint8_t, 256>;

inline constexpr std::pair<int32_t, int32_t> kSizes[] = {{1, 1}, {2, 3},  {5, 1},
                                                         {1, 9}, {19, 3}, {67, 2}};

inline Table Identity() {
  Table table{};
  for (size_t value = 0; value < 256; ++value) table[value] = static_cast<uint8_t>(value);
  return table;
}

inline Table Constant(uint8_t level) {
  Table table{};
  table.fill(level);
  return table;
}

inline Table Inverted() {
  Table table{};
  for (size_t value = 0; value < 256; ++value) table[value] = static_cast<uint8_t>(255 - value);
  return table;
}

inline Table RandomTable(Random& random) {
  Table table{};
  for (uint8_t& entry : table) entry = random.Byte();
  return table;
}

inline Rgb Mapped(Rgb p, const Table& red, const Table& green, const Table& blue) {
  return {red[static_cast<size_t>(p.red)], green[static_cast<size_t>(p.green)],
          blue[static_cast<size_t>(p.blue)]};
}

class ColourTransform : public support::PluginTest {
 protected:
  // In declared order: the second table is blue's.
  PictureRef Transform(const PictureRef& picture, const BlockRef& red, const BlockRef& blue,
                       const BlockRef& green, const PictureRef& dest = nullptr) {
    return Call<PictureRef>("TransformColorsKRT", picture, red, blue, green, dest);
  }

  BlockRef Block(const Table& table) { return Host().NewMemoryBlock(table); }
  BlockRef IdentityBlock() { return Block(Identity()); }

  PictureRef NoisePicture(int32_t width, int32_t height, const PictureLayout& layout,
                          Random& random) {
    PictureRef picture = Host().NewPicture(width, height, layout);
    support::FillWithNoise(picture, random);
    return picture;
  }
};

}  // namespace colour_transform
