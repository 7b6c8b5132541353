#include <algorithm>
#include <cstdlib>
#include <vector>

#include "tests/colour/uniformity_fixture.h"

namespace uniformity {
namespace {

// The rectangle and the tests, restated with numbers that can't overflow.
template <class Test>
bool AllPass(const PictureRef& picture, const Area& area, const Test& passes) {
  const int64_t pictureWidth = picture->Width();
  const int64_t pictureHeight = picture->Height();
  const int64_t x0 = std::max<int64_t>(area.left, 0);
  const int64_t y0 = std::max<int64_t>(area.top, 0);
  const int64_t x1 =
      std::min<int64_t>(area.left + (area.width < 0 ? pictureWidth : area.width), pictureWidth);
  const int64_t y1 =
      std::min<int64_t>(area.top + (area.height < 0 ? pictureHeight : area.height), pictureHeight);
  for (int64_t y = y0; y < y1; ++y) {
    for (int64_t x = x0; x < x1; ++x) {
      const Rgb p = support::At(picture, static_cast<int32_t>(x), static_cast<int32_t>(y));
      if (!passes(p)) return false;
    }
  }
  return true;
}

bool PassesBlack(Rgb p) { return p.red == 0 && p.green == 0 && p.blue == 0; }
bool PassesWhite(Rgb p) { return p.red == 255 && p.green == 255 && p.blue == 255; }
bool PassesGray(Rgb p, int64_t tolerance) {
  const int64_t t = std::abs(tolerance);
  const auto within = [t](int64_t difference) { return -t <= difference && difference <= t; };
  return within(p.red - p.green) && within(p.red - p.blue) && within(p.green - p.blue);
}

TEST_F(Uniformity, FourthByteIsIgnored) {
  Random random(451);
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    Start(pair.settings);
    for (const int level : {0, 255}) {
      const PictureRef picture = Host().NewPicture(37, 3, pair.source);
      for (int32_t i = 0; i < 37 * 3; ++i) {
        support::Put(picture, i % 37, i / 37, {level, level, level}, random.Byte());
      }
      EXPECT_EQ(IsBlack(picture), level == 0) << pair.name;
      EXPECT_EQ(IsWhite(picture), level == 255) << pair.name;
      EXPECT_TRUE(IsGray(picture, 0)) << pair.name;
      EXPECT_TRUE(IsGray(picture, 2)) << pair.name;
    }
  }
}

// One pixel out of the line, by one bit of one channel, at every place of a row.
TEST_F(Uniformity, OnePixelInAnyColumnAndAnyBitIsNoticed) {
  constexpr int32_t kWidth = 75;
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    Start(pair.settings);
    const PictureRef black = Host().NewPicture(kWidth, 1, pair.source);
    const PictureRef white = Host().NewPicture(kWidth, 1, pair.source);
    support::Fill(black, {0, 0, 0}, 0x5A);
    support::Fill(white, {255, 255, 255}, 0xA5);
    for (int32_t x = 0; x < kWidth; ++x) {
      const int bit = 1 << x % 8;
      const int channel = x % 3;
      const Rgb odd{channel == 0 ? bit : 0, channel == 1 ? bit : 0, channel == 2 ? bit : 0};
      support::Put(black, x, 0, odd, 0x5A);
      support::Put(white, x, 0, {255 - odd.red, 255 - odd.green, 255 - odd.blue}, 0xA5);
      EXPECT_FALSE(IsBlack(black)) << pair.name << ", column " << x;
      EXPECT_FALSE(IsWhite(white)) << pair.name << ", column " << x;
      EXPECT_FALSE(IsGray(black, 0)) << pair.name << ", column " << x;
      EXPECT_EQ(IsGray(black, 31), bit <= 31) << pair.name << ", column " << x;
      EXPECT_TRUE(IsBlack(black, {0, 0, x, 1})) << pair.name << ", column " << x;
      EXPECT_TRUE(IsBlack(black, {x + 1, 0, -1, 1})) << pair.name << ", column " << x;
      support::Put(black, x, 0, {0, 0, 0}, 0x5A);
      support::Put(white, x, 0, {255, 255, 255}, 0xA5);
    }
    EXPECT_TRUE(IsBlack(black));
    EXPECT_TRUE(IsWhite(white));
  }
}

TEST_F(Uniformity, EveryLayoutAndRectangleGivesThePlainAnswer) {
  Random random(452);
  int passed = 0;
  int failed = 0;
  const auto expectEqual = [&](bool got, bool expected, const char* what) {
    (expected ? passed : failed) += 1;
    EXPECT_EQ(got, expected) << what << ", seed " << support::Seed();
  };
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    Start(pair.settings);
    for (int round = 0; round < 60; ++round) {
      const int32_t width = random.Between(1, 40);
      const int32_t height = random.Between(1, 6);
      const PictureRef picture = Host().NewPicture(width, height, pair.source);
      // Near black, near white or near some grey, with a few pixels a little off.
      const int level = random.OneIn(3) ? 0 : random.OneIn(2) ? 255 : random.Between(3, 252);
      for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
          Rgb colour{level, level, level};
          if (random.OneIn(30)) {
            const auto off = [&] {
              return std::min(255, std::max(0, level + random.Between(-3, 3)));
            };
            colour = {off(), off(), off()};
          }
          support::Put(picture, x, y, colour, random.Byte());
        }
      }
      const std::vector<uint8_t> before = support::Bytes(picture);
      const auto start = [&](int32_t size) { return random.Between(-3, size + 1); };
      const auto length = [&](int32_t size) { return random.Between(-2, size + 4); };
      const Area area{start(width), start(height), length(width), length(height)};
      const int32_t tolerance = random.Between(-4, 4);
      const auto gray = [=](Rgb p) { return PassesGray(p, tolerance); };
      const Area whole{0, 0, -1, -1};

      SCOPED_TRACE(testing::Message()
                   << pair.name << ", " << width << " x " << height << ", tolerance " << tolerance
                   << ", rectangle " << area.left << ", " << area.top << ", " << area.width << ", "
                   << area.height);
      expectEqual(IsBlack(picture, area), AllPass(picture, area, PassesBlack), "black");
      expectEqual(IsWhite(picture, area), AllPass(picture, area, PassesWhite), "white");
      expectEqual(IsGray(picture, tolerance, area), AllPass(picture, area, gray), "grey");
      expectEqual(IsBlack(picture), AllPass(picture, whole, PassesBlack), "all black");
      expectEqual(IsWhite(picture), AllPass(picture, whole, PassesWhite), "all white");
      expectEqual(IsGray(picture, tolerance), AllPass(picture, whole, gray), "all grey");
      EXPECT_TRUE(support::Bytes(picture) == before) << pair.name << ": the picture was changed";
    }
  }
  // Both answers were asked for, often.
  EXPECT_GT(passed, 200);
  EXPECT_GT(failed, 200);
}

}  // namespace
}  // namespace uniformity
