// Masks of coloured rectangles beside their description, and pictures that give none.
#include <gtest/gtest.h>

#include "tests/colour/rectangle_mask_fixture.h"

namespace rectangle_mask {
namespace {

TEST_F(RectangleMask, FollowsItsDescriptionInEveryLayout) {
  for (const LayoutPair& pair : AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    Random random(2);
    for (int i = 0; i < 60; ++i) {
      const int32_t width = random.OneIn(3) ? random.Between(1, 100) : random.Between(1, 12);
      const int32_t height = random.Between(1, 12);
      const int32_t rarity = random.Between(1, 30);
      const PictureRef picture = Paint(width, height, pair.source, random,
                                       [&](int32_t, int32_t) { return random.OneIn(rarity); });
      const auto bound = [&](int32_t first, int32_t last) {
        const int32_t extremes[] = {std::numeric_limits<int32_t>::min(), -1, 0,
                                    std::numeric_limits<int32_t>::max()};
        return random.OneIn(10) ? extremes[random.Between(0, 3)] : random.Between(first, last);
      };
      ExpectDescribed(picture, kWhole);
      ExpectDescribed(picture, {bound(-3, width + 1), bound(-3, height + 1), bound(-1, width + 3),
                                bound(-1, height + 3)});
      if (HasFailure()) return;
    }
  }
}

// Widths about a multiple of 32, for those who keep the cells in words.
TEST_F(RectangleMask, FollowsItsDescriptionAtEveryWidth) {
  Random random(3);
  for (const int32_t width : {31, 32, 33, 63, 64, 65, 95, 96, 97, 128, 160, 161}) {
    for (int i = 0; i < 24; ++i) {
      const int32_t height = random.Between(1, 40);
      const int32_t rarity = random.Between(1, 60);
      ExpectDescribed(
          Paint(width, height, random, [&](int32_t, int32_t) { return random.OneIn(rarity); }),
          kWhole);
      if (HasFailure()) return;
    }
  }
}

// Lines of random length between random places, which make rectangles that overlap, contain and
// grow around each other.
TEST_F(RectangleMask, FollowsItsDescriptionOnLinesAndFrames) {
  Random random(4);
  for (int i = 0; i < 400; ++i) {
    const int32_t width = random.Between(20, 110);
    const int32_t height = random.Between(20, 60);
    Cells lines(width, height);
    for (int32_t n = random.Between(1, 40); n > 0; --n) {
      int32_t x = random.Between(0, width - 1);
      int32_t y = random.Between(0, height - 1);
      // Up to three pieces, each a turn to the right or left of the one before.
      bool across = random.OneIn(2);
      for (int32_t piece = random.Between(1, 3); piece > 0; --piece, across = !across) {
        const int32_t step = random.OneIn(2) ? 1 : -1;
        for (int32_t length = random.Between(1, across ? width : height); length > 0; --length) {
          lines.At(x, y) = 1;
          const int32_t nextX = across ? x + step : x;
          const int32_t nextY = across ? y : y + step;
          if (nextX < 0 || nextX >= width || nextY < 0 || nextY >= height) break;
          x = nextX;
          y = nextY;
        }
      }
    }
    ExpectDescribed(
        Paint(width, height, random, [&](int32_t x, int32_t y) { return lines.At(x, y) == 1; }),
        kWhole);
    if (HasFailure()) return;
  }
}

TEST_F(RectangleMask, FollowsItsDescriptionOnPatterns) {
  Random random(5);
  using Pattern = bool (*)(int32_t, int32_t);
  const Pattern patterns[] = {
      [](int32_t, int32_t) { return true; },
      [](int32_t x, int32_t y) { return (x + y) % 2 == 0; },
      [](int32_t x, int32_t y) { return x % 3 == 0 && y % 2 == 0; },
      [](int32_t x, int32_t) { return x % 2 == 0; },
      [](int32_t, int32_t y) { return y % 2 == 1; },
      [](int32_t x, int32_t y) { return x % 3 != 2 && y % 3 != 2; },
      [](int32_t x, int32_t y) { return x == y || x == y + 1; },
      [](int32_t x, int32_t y) { return x + y == 149 || x + y == 150; },
      [](int32_t x, int32_t y) { return std::max(x, y) % 2 == 0; },  // corners within corners
      [](int32_t x, int32_t y) { return std::min(x, y) % 2 == 0; },
      [](int32_t x, int32_t y) { return std::max(std::abs(x - 75), std::abs(y - 50)) % 4 == 0; },
      [](int32_t x, int32_t y) {
        const int32_t squared = (x - 75) * (x - 75) + (y - 50) * (y - 50);
        return squared > 40 * 40 && squared < 45 * 45;
      },
  };
  for (const Pattern pattern : patterns) ExpectDescribed(Paint(150, 100, random, pattern), kWhole);
}

TEST_F(RectangleMask, OneRowAndOneColumn) {
  Random random(6);
  for (int i = 0; i < 20; ++i) {
    const auto some = [&](int32_t, int32_t) { return !random.OneIn(4); };
    ExpectDescribed(Paint(500, 1, random, some), kWhole);
    ExpectDescribed(Paint(1, 500, random, some), kWhole);
  }
}

TEST_F(RectangleMask, ADrawingIsLookedAtAsItIsDrawn) {
  const PictureRef drawing = Host().NewVectorPicture(9, 5, [](int32_t x, int32_t y) {
    return std::optional<uint32_t>(x > 5 && y == 2 ? 0x10FF10 : 0x808080);
  });
  EXPECT_EQ(Show(Extract(drawing, kWhole)),
            (Rows{".........", ".........", "......###", ".........", "........."}));
}

TEST_F(RectangleMask, AnAlphaPictureGivesAMaskWithoutAlpha) {
  host::Host& host = Host();
  PictureRef picture = host.NewPicture(3, 2, host::PictureLayout::WithAlpha());
  Fill(picture, kGrey, 0);
  Put(picture, 1, 1, kRed, 0);
  const PictureRef mask = Extract(picture, kWhole);
  EXPECT_TRUE(IsNewPicture(mask, 3, 2, false, [](int32_t x, int32_t y) {
    return std::optional<Rgb>(x == 1 && y == 1 ? kBlack : kWhite);
  }));
}

TEST_F(RectangleMask, SizesBeyond32767GiveNil) {
  host::Host& host = Host();
  const PictureRef widest = host.NewPicture(32767, 1, host::PictureLayout::WithAlpha());
  const PictureRef highest = host.NewPicture(1, 32767, host::PictureLayout::WithAlpha());
  const PictureRef tooWide = host.NewPicture(32768, 1, host::PictureLayout::WithAlpha());
  const PictureRef tooHigh = host.NewPicture(1, 32768, host::PictureLayout::WithAlpha());
  Put(widest, 32766, 0, kRed);
  Put(highest, 0, 32766, kRed);
  const PictureRef wideMask = Extract(widest, kWhole);
  const PictureRef highMask = Extract(highest, kWhole);
  ASSERT_TRUE(wideMask);
  ASSERT_TRUE(highMask);
  EXPECT_EQ(At(wideMask, 32766, 0), kBlack);
  EXPECT_EQ(At(highMask, 0, 32766), kBlack);
  EXPECT_FALSE(Extract(tooWide, kWhole));
  EXPECT_FALSE(Extract(tooHigh, kWhole));
}

TEST_F(RectangleMask, NoMemoryIsAskedForAPictureThatIsTooLarge) {
  const Internals* internals = LoadInternals(StartWithoutPlugin());
  const auto memoryCalls = [&](int32_t width, int32_t height) {
    const PictureRef picture = Host().NewPicture(width, height, host::PictureLayout::WithAlpha());
    MemoryCallsOf(internals).FailNth(0);
    Extract(picture, kWhole);
    return MemoryCallsOf(internals).made;
  };
  EXPECT_EQ(memoryCalls(32768, 1), 0);
  EXPECT_EQ(memoryCalls(1, 32768), 0);
  EXPECT_GE(memoryCalls(32767, 1), 1);
}

TEST_F(RectangleMask, WhatCantBeOpenedGivesNil) {
  EXPECT_FALSE(Extract(nullptr, kWhole));
  EXPECT_FALSE(Call<PictureRef>("ExtractColorRectangleMaskKRT", PictureRef()));
  EXPECT_FALSE(Extract(RefusedPicture(), kWhole));
}

TEST_F(RectangleMask, AMaskThatCantBeMadeGivesNil) {
  const PictureRef picture = Draw({"#.", ".#"});
  Host().faults.FailCall("newPicture");
  EXPECT_FALSE(Extract(picture, kWhole));
  EXPECT_TRUE(Extract(picture, kWhole));
  Host().faults.FailCall("REALLockPictureDescription", 2);  // the mask's
  EXPECT_FALSE(Extract(picture, kWhole));
}

TEST_F(RectangleMask, AHostWithoutNewPictureGivesNil) {
  host::Host& host = StartWithoutPlugin();
  host.faults.Hide("newPicture");
  LoadPluginUnderTest(host);
  const PictureRef picture = host.NewPicture(4, 4);
  EXPECT_FALSE(Extract(picture, kWhole));
}

}  // namespace
}  // namespace rectangle_mask
