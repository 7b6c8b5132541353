// What a 3D lookup table makes of colours.
#include <gtest/gtest.h>

#include "tests/classes/lut3d_fixture.h"

namespace lut3d {
namespace {

TEST_F(Lut3D, FollowsTheRuleInEveryLayout) {
  Random random(820);
  const Table table = RandomTable(random, -20, 280);
  for (const LayoutPair& pair : AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const Filter filter = NewFilter();
    SetTable(filter, table);
    for (const auto& [width, height] : {std::array{1, 1}, {1, 7}, {5, 1}, {33, 5}, {130, 2}}) {
      ExpectLooksUp(filter, table, Noise(width, height, pair.source, random));
    }
    ExpectLooksUp(filter, table, Noise(19, 9, pair.source, random), {3, 2, 15, 8});
  }
}

TEST_F(Lut3D, FollowsTheRuleForEveryCombinationOfFractions) {
  Random random(821);
  Start();
  const Filter filter = NewFilter();
  const PictureRef source = EveryFraction(2, random);
  for (const Table& table : {RandomTable(random, 0, 255), RandomTable(random, -1e6, 1e6),
                             RandomTable(random, -1e308, 1e308), Identity()}) {
    SetTable(filter, table);
    ExpectLooksUp(filter, table, source);
  }
}

// A weight of zero doesn't hide an entry that isn't finite, so this shows which corners a colour
// uses, also where fractions are equal.
TEST_F(Lut3D, UsesTheStatedCornersOfTiedFractions) {
  Random random(822);
  Start();
  const Filter filter = NewFilter();
  const PictureRef source = EveryFraction(2, random);
  Table table = RandomTable(random, 0, 255);
  for (double& entry : table) {
    if (!random.OneIn(8)) continue;
    const double infinity = std::numeric_limits<double>::infinity();
    entry =
        std::array{infinity, -infinity, std::nan("")}[static_cast<size_t>(random.Between(0, 2))];
  }
  SetTable(filter, table);
  ExpectLooksUp(filter, table, source);
}

TEST_F(Lut3D, BoundsSayHowManyPixelsAndNotWhere) {
  Random random(823);
  const Table table = RandomTable(random, 0, 255);
  for (const auto application : {host::Application::kDesktop, host::Application::kConsole}) {
    host::Settings settings;
    settings.application = application;
    Start(settings);
    const host::PictureLayout layout =
        application == host::Application::kDesktop ? settings.opaqueLayout : settings.consoleLayout;
    const Filter filter = NewFilter();
    SetTable(filter, table);
    const PictureRef source = Noise(25, 15, layout, random);
    for (const Bounds& bounds : ManyBounds(random)) ExpectLooksUp(filter, table, source, bounds);
  }
}

TEST_F(Lut3D, MinX10AndMaxX50ProcessColumns0To39) {
  Start();
  const Filter filter = NewFilter(Host().NewPicture(100, 1));
  SetBounds(filter, {10, 0, 50, 0});
  ASSERT_TRUE(Run(filter));
  EXPECT_EQ(At(Destination(filter), 0, 0), (Rgb{0, 0, 0}));
  EXPECT_EQ(At(Destination(filter), 39, 0), (Rgb{0, 0, 0}));
  EXPECT_EQ(At(Destination(filter), 40, 0), (Rgb{255, 255, 255}));
}

TEST_F(Lut3D, AFreshObjectMakesEverythingBlack) {
  Random random(824);
  Start();
  ExpectLooksUp(NewFilter(), Table(kEntries), Noise(31, 9, {}, random));
}

TEST_F(Lut3D, TheIdentityLosesAUnitWhereTheSumFallsShort) {
  Start();
  const Filter filter = NewFilter();
  SetTable(filter, Identity());
  for (const Rgb colour : {Rgb{100, 100, 100}, {128, 64, 32}, {200, 100, 50}, {255, 255, 255}}) {
    EXPECT_EQ(LookUp(filter, colour), colour);
  }
  EXPECT_EQ(LookUp(filter, {255, 255, 210}), (Rgb{254, 254, 209}));
}

TEST_F(Lut3D, ColoursOnTheGridGetTheEntryItself) {
  Random random(825);
  Start();
  const Filter filter = NewFilter();
  const Table table = RandomTable(random, 0, 255);
  SetTable(filter, table);
  for (int i = 0; i < 100; ++i) {
    const int r = random.Between(0, 15), g = random.Between(0, 15), b = random.Between(0, 15);
    const Rgb entry{static_cast<int>(table[Index(r, g, b, 0)]),
                    static_cast<int>(table[Index(r, g, b, 1)]),
                    static_cast<int>(table[Index(r, g, b, 2)])};
    EXPECT_EQ(LookUp(filter, {17 * r, 17 * g, 17 * b}), entry) << r << " " << g << " " << b;
  }
}

TEST_F(Lut3D, EqualFractionsGoAlongTheDiagonal) {
  Start();
  const Filter filter = NewFilter();
  for (const auto& [r, g, b] : {std::array{1u, 0u, 0u},
                                {0u, 1u, 0u},
                                {0u, 0u, 1u},
                                {1u, 1u, 0u},
                                {1u, 0u, 1u},
                                {0u, 1u, 1u}}) {
    for (uint32_t x = 0; x < 3; ++x) SetEntry(filter, r, g, b, x, 200);
  }
  for (uint32_t x = 0; x < 3; ++x) SetEntry(filter, 0, 0, 0, x, 18);
  for (uint32_t x = 0; x < 3; ++x) SetEntry(filter, 1, 1, 1, x, 34 + x);
  // 12 / 17 of 18 and 5 / 17 of 34, 35, 36: 22.7, 23, 23.3
  EXPECT_EQ(LookUp(filter, {5, 5, 5}), (Rgb{22, 23, 23}));
}

TEST_F(Lut3D, Value255IsItsOwnUpperPointAnd254IsNot) {
  Start();
  const Filter filter = NewFilter();
  SetEntry(filter, 15, 0, 0, 0, 170);
  SetEntry(filter, 16, 0, 0, 0, std::numeric_limits<double>::infinity());
  EXPECT_EQ(LookUp(filter, {255, 0, 0}), (Rgb{170, 0, 0}));
  // 16 / 17 of 170
  EXPECT_EQ(LookUp(filter, {254, 0, 0}), (Rgb{160, 0, 0}));
}

TEST_F(Lut3D, TheLastTwoGridPointsNeverReachAPicture) {
  Random random(826);
  Start();
  const Filter filter = NewFilter();
  const Table inside = RandomTable(random, 0, 255);
  Table table = inside;
  for (int r = 0; r < kGrid; ++r) {
    for (int g = 0; g < kGrid; ++g) {
      for (int b = 0; b < kGrid; ++b) {
        if (r < 16 && g < 16 && b < 16) continue;
        for (int x = 0; x < 3; ++x) table[Index(r, g, b, x)] = std::nan("");
      }
    }
  }
  SetTable(filter, table);
  Set(filter, "SourcePicture", EveryFraction(2, random));
  ExpectFilters(filter, {}, false, [&](Rgb p) { return LookedUp(inside, p); });
}

TEST_F(Lut3D, EntriesOutsideTheScaleAreClampedInThePicture) {
  Start();
  const Filter filter = NewFilter();
  SetEntry(filter, 0, 0, 0, 0, 300);
  SetEntry(filter, 0, 0, 0, 1, -5);
  SetEntry(filter, 0, 0, 0, 2, 255.999);
  EXPECT_EQ(LookUp(filter, {0, 0, 0}), (Rgb{255, 0, 255}));
  EXPECT_EQ(GetEntry(filter, 0, 0, 0, 0), 300.0);
  EXPECT_EQ(GetEntry(filter, 0, 0, 0, 1), -5.0);
}

}  // namespace
}  // namespace lut3d
