#include <utility>
#include <vector>

#include "tests/support/fixture.h"

namespace {

using host::PictureLayout;
using support::LayoutPair;
using support::PictureRef;
using support::Random;
using support::Rgb;

constexpr std::pair<int32_t, int32_t> kSizes[] = {{1, 1}, {2, 3},  {3, 1},  {4, 2},  {5, 4},
                                                  {1, 9}, {17, 3}, {66, 2}, {131, 3}};

class ColourCounting : public support::PluginTest {
 protected:
  int32_t CountColour(const PictureRef& picture, uint32_t colour) {
    return Call<int32_t>("CountColorKRT", picture, colour);
  }
};

TEST_F(ColourCounting, CountsThePixelsOfExactlyTheColour) {
  const PictureRef picture = NewPictureOf(7, 3, {1, 2, 3});
  const Rgb row[] = {{10, 20, 30}, {11, 20, 30}, {9, 20, 30}, {10, 21, 30},
                     {10, 19, 30}, {10, 20, 31}, {10, 20, 29}};
  for (int32_t x = 0; x < 7; ++x) support::Put(picture, x, 0, row[x]);
  support::Put(picture, 3, 1, {30, 20, 10});
  support::Put(picture, 6, 2, {10, 20, 30});
  EXPECT_EQ(CountColour(picture, 0x0A141E), 2);
  EXPECT_EQ(CountColour(picture, 0x1E140A), 1);
  EXPECT_EQ(CountColour(picture, 0x010203), 21 - 9);
  EXPECT_EQ(CountColour(picture, 0x030201), 0);
}

TEST_F(ColourCounting, TopByteOfTheColourIsIgnored) {
  const PictureRef picture = NewPictureOf(5, 5, {0, 0, 0});
  support::Put(picture, 2, 2, {255, 0, 0});
  EXPECT_EQ(CountColour(picture, 0x00000000), 24);
  EXPECT_EQ(CountColour(picture, 0xFF000000), 24);
  EXPECT_EQ(CountColour(picture, 0x12FF0000), 1);
}

TEST_F(ColourCounting, FourthByteOfAPixelIsIgnored) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    Start(pair.settings);
    const PictureRef picture = Host().NewPicture(16, 16, pair.source);
    for (int32_t i = 0; i < 256; ++i) {
      support::Put(picture, i % 16, i / 16, {5, 6, 7}, static_cast<uint8_t>(i));
    }
    EXPECT_EQ(CountColour(picture, 0x050607), 256) << pair.name;
  }
}

TEST_F(ColourCounting, PictureThatCannotBeOpenedHasNoPixelOfTheColour) {
  EXPECT_EQ(CountColour(nullptr, 0), 0);
  EXPECT_EQ(CountColour(RefusedPicture(), 0), 0);
}

TEST_F(ColourCounting, PictureWithoutPixelsHasNoPixelOfTheColour) {
  for (const auto& [width, height] : {std::pair{0, 3}, std::pair{4, 0}, std::pair{0, 0}}) {
    EXPECT_EQ(CountColour(PictureThatOpensAs(width, height), 0xFFFFFF), 0)
        << width << " x " << height;
  }
}

TEST_F(ColourCounting, VectorPictureIsDrawnAndCounted) {
  const PictureRef picture = Host().NewVectorPicture(
      6, 4,
      [](int32_t x, int32_t) -> std::optional<uint32_t> { return x < 2 ? 0x204060 : 0x000001; });
  EXPECT_EQ(CountColour(picture, 0x204060), 8);
}

TEST_F(ColourCounting, NumberOfPixelsOfAColourIsThePlainCountInEveryLayout) {
  Random random(401);
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    Start(pair.settings);
    for (const auto& [width, height] : kSizes) {
      const PictureRef picture = Host().NewPicture(width, height, pair.source);
      support::FillWithNoise(picture, random, 2);
      const std::vector<uint8_t> before = support::Bytes(picture);
      const Rgb colour = support::At(picture, random.Between(0, width - 1), height / 2);
      int32_t expected = 0;
      for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) expected += support::At(picture, x, y) == colour;
      }
      const uint32_t argument = random.Bits() << 24 | static_cast<uint32_t>(colour.red) << 16 |
                                static_cast<uint32_t>(colour.green) << 8 |
                                static_cast<uint32_t>(colour.blue);
      EXPECT_EQ(CountColour(picture, argument), expected)
          << pair.name << ", " << width << " x " << height << ", colour " << colour;
      EXPECT_TRUE(support::Bytes(picture) == before) << pair.name << ": the picture was changed";
    }
  }
}

TEST_F(ColourCounting, HostThatCannotLockPicturesHasNoPixelOfTheColour) {
  StartWithoutPlugin().faults.Hide("REALLockPictureDescription");
  support::LoadPluginUnderTest(Host());
  EXPECT_EQ(CountColour(NewPictureOf(8, 2, {3, 4, 5}), 0x030405), 0);
}

}  // namespace
