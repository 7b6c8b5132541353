#include <array>
#include <cmath>

#include "tests/tonal/pixel_rule.h"

namespace {

using namespace support;

Rgb Tinted(Rgb p, uint32_t greyBase, uint32_t sepiaBase) {
  std::array<double, 3> grey;
  std::array<double, 3> sepia;
  for (unsigned c = 0; c < 3; ++c) {  // red, green, blue
    grey[c] = ((greyBase >> (16 - 8 * c)) % 256) / 255.0;
    sepia[c] = ((sepiaBase >> (16 - 8 * c)) % 256) / 255.0;
  }
  const double greenAndRed = p.green * grey[1] + p.red * grey[0];
  const double y = p.blue * grey[2] + greenAndRed;
  const auto shade = [&](double weight) {
    return static_cast<int>(std::fmin(std::trunc(weight * y), 255.0));
  };
  return {shade(sepia[0]), shade(sepia[1]), shade(sepia[2])};
}

class Tint : public PixelRuleTest {
 protected:
  Operation With(uint32_t greyBase, uint32_t sepiaBase) {
    return [=, this](const PictureRef& picture) {
      return CallGlobal<PictureRef>("TintPictureKRT", picture, greyBase, sepiaBase);
    };
  }
  void ExpectRule(uint32_t greyBase, uint32_t sepiaBase, const PictureRef& picture) {
    SCOPED_TRACE(::testing::Message()
                 << std::hex << greyBase << " " << sepiaBase << std::dec << ", seed " << Seed());
    ExpectFollows(
        With(greyBase, sepiaBase), [=](Rgb p) { return Tinted(p, greyBase, sepiaBase); }, picture);
  }
};

TEST_F(Tint, FollowsTheRuleInEveryLayout) {
  Random random(340);
  for (const LayoutPair& pair : AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (const Size size : Sizes()) {
      ExpectRule(random.Bits(), random.Bits(), Noise(size, pair.source, random));
      ExpectRule(0x4D961D, 0xFFE4B0, Noise(size, pair.source, random));
    }
  }
}

TEST_F(Tint, FollowsTheRuleForAnyColours) {
  Random random(341);
  Start();
  const PictureRef picture = Noise({131, 2}, {}, random);
  for (int i = 0; i < 200; ++i) {
    const uint32_t mask = random.OneIn(4) ? 0xFF00FF : 0xFFFFFFFF;
    ExpectRule(random.Bits() & mask, random.Bits() | ~mask, picture);
  }
}

// Sums that come out whole or not by the order in which they are added.
TEST_F(Tint, AddsRedToGreenBeforeBlue) {
  Start();
  const PictureRef greys = Host().NewPicture(256, 1);
  for (int32_t x = 0; x < 256; ++x) Put(greys, x, 0, {x, x, x});
  for (uint32_t weight = 0; weight < 256; weight += 3) {
    ExpectRule(weight << 16 | (weight * 7 & 255) << 8 | (255 - weight), 0xFFFFFF, greys);
  }
}

TEST_F(Tint, BlackGreyBaseGivesBlack) {
  Start();
  ExpectFollows(
      With(0x000000, 0xFFE4B0),
      [](Rgb) {
        return Rgb{0, 0, 0};
      },
      EveryValue({}));
}

TEST_F(Tint, EqualWeightsThatAddUpToOneKeepWhiteAndBlack) {
  Start();
  ExpectPixel(With(0x555555, 0xFFFFFF), {255, 255, 255}, {255, 255, 255});
  ExpectPixel(With(0x555555, 0xFFFFFF), {0, 0, 0}, {0, 0, 0});
}

TEST_F(Tint, ARedSepiaBaseLeavesOnlyRed) {
  Start();
  ExpectPixel(With(0x00FF00, 0xFF0000), {7, 99, 201}, {99, 0, 0});
  ExpectPixel(With(0xFFFF00, 0xFF0000), {200, 99, 201}, {255, 0, 0});
}

TEST_F(Tint, WhiteWeightsAddTheChannelsUp) {
  Start();
  ExpectPixel(With(0xFFFFFF, 0xFFFFFF), {128, 128, 128}, {255, 255, 255});
  ExpectPixel(With(0xFFFFFF, 0xFFFFFF), {1, 20, 100}, {121, 121, 121});
  ExpectPixel(With(0xFFFFFF, 0x330000), {255, 255, 255}, {153, 0, 0});
}

TEST_F(Tint, ShadesAreTruncated) {
  Start();
  // A blue of 255 times 254 / 255 is whole; of 254 it is 253.004, and times 254 / 255 252.01.
  ExpectPixel(With(0x0000FE, 0xFFFEFE), {9, 9, 255}, {254, 253, 253});
  ExpectPixel(With(0x0000FE, 0xFFFEFE), {9, 9, 254}, {253, 252, 252});
  // 100 * 127 / 255 = 49.8
  ExpectPixel(With(0x7F0000, 0xFFFFFF), {100, 3, 3}, {49, 49, 49});
}

TEST_F(Tint, TheTopByteOfAColourIsIgnored) {
  Start();
  ExpectPixel(With(0xFF00FF00, 0xAB00FF00), {7, 99, 201}, {0, 99, 0});
}

TEST_F(Tint, GivesNilOnFailure) { ExpectNilOnFailure(With(0x4D961D, 0xFFE4B0)); }

}  // namespace
