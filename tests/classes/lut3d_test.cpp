#include <array>
#include <cmath>

#include "tests/classes/filter_test.h"

namespace {

using namespace support;

constexpr int kGrid = 18;
constexpr size_t kEntries = size_t{kGrid} * kGrid * kGrid * 3;
using Table = std::vector<double>;  // the last index fastest

size_t Index(int r, int g, int b, int x) {
  return ((static_cast<size_t>(r) * kGrid + g) * kGrid + b) * 3 + x;
}

// The six tetrahedra of the unit cube, as the table of conditions has them.
double Interpolated(const Table& table, Rgb p, int x) {
  const int r0 = p.red / 17, g0 = p.green / 17, b0 = p.blue / 17;
  const int r1 = p.red == 255 ? 15 : r0 + 1;
  const int g1 = p.green == 255 ? 15 : g0 + 1;
  const int b1 = p.blue == 255 ? 15 : b0 + 1;
  const double fx = (p.red - 17 * r0) / 17.0;
  const double fy = (p.green - 17 * g0) / 17.0;
  const double fz = (p.blue - 17 * b0) / 17.0;
  const double c000 = table[Index(r0, g0, b0, x)], c100 = table[Index(r1, g0, b0, x)];
  const double c110 = table[Index(r1, g1, b0, x)], c111 = table[Index(r1, g1, b1, x)];
  const double c101 = table[Index(r1, g0, b1, x)], c001 = table[Index(r0, g0, b1, x)];
  const double c011 = table[Index(r0, g1, b1, x)], c010 = table[Index(r0, g1, b0, x)];
  std::array<double, 4> t;
  if (fx > fy && fy > fz) {
    t = {(1 - fx) * c000, (fx - fy) * c100, (fy - fz) * c110, fz * c111};
  } else if (fx > fy && fx > fz) {
    t = {(1 - fx) * c000, (fx - fz) * c100, (fz - fy) * c101, fy * c111};
  } else if (fx > fy) {
    t = {(1 - fz) * c000, (fz - fx) * c001, (fx - fy) * c101, fy * c111};
  } else if (fz > fy) {
    t = {(1 - fz) * c000, (fz - fy) * c001, (fy - fx) * c011, fx * c111};
  } else if (fz > fx) {
    t = {(1 - fy) * c000, (fy - fz) * c010, (fz - fx) * c011, fx * c111};
  } else {
    t = {(1 - fy) * c000, (fy - fx) * c010, (fx - fz) * c110, fz * c111};
  }
  return ((t[0] + t[1]) + t[2]) + t[3];
}

int ToByte(double v) {
  if (std::isnan(v) || v < 0) return 0;
  return v > 255.0 ? 255 : static_cast<int>(v);
}

Rgb LookedUp(const Table& table, Rgb p) {
  return {ToByte(Interpolated(table, p, 0)), ToByte(Interpolated(table, p, 1)),
          ToByte(Interpolated(table, p, 2))};
}

Table Identity() {
  Table table(kEntries);
  for (int r = 0; r < kGrid; ++r) {
    for (int g = 0; g < kGrid; ++g) {
      for (int b = 0; b < kGrid; ++b) {
        table[Index(r, g, b, 0)] = 17 * r;
        table[Index(r, g, b, 1)] = 17 * g;
        table[Index(r, g, b, 2)] = 17 * b;
      }
    }
  }
  return table;
}

Table RandomTable(Random& random, double least, double most) {
  Table table(kEntries);
  for (double& entry : table) entry = random.Real(least, most);
  return table;
}

class Lut3D : public FilterTest {
 protected:
  Lut3D() : FilterTest("PictureLut3DKRT") {}

  void SetEntry(const Filter& filter, uint32_t r, uint32_t g, uint32_t b, uint32_t x, double v) {
    Assign(Find("PictureLut3DKRT", "Table", 4), filter, r, g, b, x, v);
  }
  double GetEntry(const Filter& filter, uint32_t r, uint32_t g, uint32_t b, uint32_t x) {
    return CallOn<double>(filter, "Table", r, g, b, x);
  }
  // Calls the registered functions straight away: a table has many entries.
  void SetTable(const Filter& filter, const Table& table) {
    using Setter = void(REALobject, uint32_t, uint32_t, uint32_t, uint32_t, double);
    auto* set = reinterpret_cast<Setter*>(Find("PictureLut3DKRT", "Table", 4).setter);
    size_t index = 0;
    for (uint32_t r = 0; r < kGrid; ++r) {
      for (uint32_t g = 0; g < kGrid; ++g) {
        for (uint32_t b = 0; b < kGrid; ++b) {
          for (uint32_t x = 0; x < 3; ++x) set(filter.Handle(), r, g, b, x, table[index++]);
        }
      }
    }
  }
  Table GetTable(const Filter& filter) {
    using Getter = double(REALobject, uint32_t, uint32_t, uint32_t, uint32_t);
    auto* get = reinterpret_cast<Getter*>(Find("PictureLut3DKRT", "Table", 4).function);
    Table table;
    for (uint32_t r = 0; r < kGrid; ++r) {
      for (uint32_t g = 0; g < kGrid; ++g) {
        for (uint32_t b = 0; b < kGrid; ++b) {
          for (uint32_t x = 0; x < 3; ++x) table.push_back(get(filter.Handle(), r, g, b, x));
        }
      }
    }
    return table;
  }
  void ExpectLooksUp(const Filter& filter, const Table& table, const PictureRef& source,
                     const Bounds& bounds = {}) {
    Set(filter, "SourcePicture", source);
    ExpectFilters(filter, bounds, HasAlpha(source->Layout()),
                  [&](Rgb p) { return LookedUp(table, p); });
  }
  // Every combination of fractions, each in `cells` cells at random, those at the ends of the axes
  // more often than others.
  PictureRef EveryFraction(int cells, Random& random) {
    const PictureRef picture = Host().NewPicture(17 * 17, 17 * cells);
    const auto channel = [&](int part) {
      const int cell = random.OneIn(3) ? 15 * random.Between(0, 1) : random.Between(0, 14);
      return cell == 15 ? 255 - 17 * (part > 0) + part : 17 * cell + part;
    };
    for (int y = 0; y < 17 * cells; ++y) {
      for (int x = 0; x < 17 * 17; ++x) {
        Put(picture, x, y, {channel(x / 17), channel(x % 17), channel(y % 17)}, random.Byte());
      }
    }
    return picture;
  }
  Rgb LookUp(const Filter& filter, Rgb colour) {
    const PictureRef source = Host().NewPicture(1, 1);
    Put(source, 0, 0, colour);
    Set(filter, "SourcePicture", source);
    EXPECT_TRUE(Run(filter));
    return At(Destination(filter), 0, 0);
  }
};

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

TEST_F(Lut3D, EntriesOutsideTheTableReadAsZeroAndIgnoreWrites) {
  Start();
  const Filter filter = NewFilter();
  SetTable(filter, Table(kEntries, 7.0));
  const std::array<uint32_t, 4> indices[] = {
      {18, 0, 0, 0},         {0, 18, 0, 0},         {0, 0, 18, 0},        {0, 0, 0, 3},
      {0xFFFFFFFF, 0, 0, 0}, {0, 0, 0, 0xFFFFFFFF}, {0, 0, 0x80000000, 0}};
  for (const auto& [r, g, b, x] : indices) {
    SetEntry(filter, r, g, b, x, 99.0);
    EXPECT_EQ(GetEntry(filter, r, g, b, x), 0.0);
  }
  EXPECT_TRUE(GetTable(filter) == Table(kEntries, 7.0));
}

TEST_F(Lut3D, EveryEntryIsStoredByItself) {
  Random random(827);
  Start();
  const Filter filter = NewFilter();
  const Table table = RandomTable(random, -1e9, 1e9);
  SetTable(filter, table);
  EXPECT_TRUE(GetTable(filter) == table);
  SetEntry(filter, 17, 17, 17, 2, 12.5);
  EXPECT_EQ(GetEntry(filter, 17, 17, 17, 2), 12.5);
  EXPECT_EQ(GetEntry(filter, 3, 14, 15, 1), table[Index(3, 14, 15, 1)]);
}

TEST_F(Lut3D, PropertiesKeepWhatIsSet) {
  Start();
  const Filter filter = NewFilter();
  for (const char* property : {"MinX", "MinY", "MaxX", "MaxY"}) {
    EXPECT_EQ(GetInteger(filter, property), 0) << property;
  }
  SetBounds(filter, {-1, 2, -3, 4});
  EXPECT_EQ(GetInteger(filter, "MinX"), -1);
  EXPECT_EQ(GetInteger(filter, "MinY"), 2);
  EXPECT_EQ(GetInteger(filter, "MaxX"), -3);
  EXPECT_EQ(GetInteger(filter, "MaxY"), 4);
}

TEST_F(Lut3D, RunDropsThePreviousDestination) {
  Start();
  const Filter filter = NewFilter(Host().NewPicture(2, 2));
  ASSERT_TRUE(Run(filter));
  const PictureRef first = Destination(filter);
  ASSERT_TRUE(Run(filter));
  EXPECT_FALSE(Destination(filter) == first);
  EXPECT_EQ(first->References(), 1);
}

TEST_F(Lut3D, ADestinationMayBecomeTheSource) {
  Start();
  const Filter filter = NewFilter(Host().NewPicture(2, 2));
  SetEntry(filter, 15, 15, 15, 1, 51);
  ASSERT_TRUE(Run(filter));
  Set(filter, "SourcePicture", Destination(filter));
  SetEntry(filter, 0, 3, 0, 2, 99);
  ASSERT_TRUE(Run(filter));
  EXPECT_EQ(At(Destination(filter), 1, 1), (Rgb{0, 0, 99}));
}

TEST_F(Lut3D, AFailureLeavesTheDestinationNil) {
  Start();
  const PictureRef source = Host().NewPicture(2, 2);
  const Filter filter = NewFilter();
  const auto expectFailure = [&](const char* why, const PictureRef& failing) {
    EXPECT_FALSE(Run(filter)) << why;
    EXPECT_FALSE(Destination(filter)) << why;
    if (failing) {
      EXPECT_EQ(failing->DescriptionLocks(), 0) << why;
    }
  };
  const auto succeed = [&] {
    Host().faults.Clear();
    Set(filter, "SourcePicture", source);
    ASSERT_TRUE(Run(filter));
  };

  expectFailure("no source", {});
  succeed();
  const PictureRef wide = Host().NewPicture(40000, 1);
  Set(filter, "SourcePicture", wide);
  expectFailure("a source 40000 wide", wide);
  succeed();
  const PictureRef thin = Host().NewPicture(2, 2, host::PictureLayout::BitmapContext(5, 0, 16));
  Set(filter, "SourcePicture", thin);
  expectFailure("a source of 16 bits", thin);
  succeed();
  Host().faults.FailCall("newPicture");
  expectFailure("no new picture", source);
}

TEST_F(Lut3D, AnAlphaSourceMayBeWiderThanOthers) {
  Start();
  const Filter filter = NewFilter(Host().NewPicture(40000, 1, host::PictureLayout::WithAlpha()));
  ExpectFilters(filter, {}, true, [](Rgb) { return Rgb{0, 0, 0}; });
}

TEST_F(Lut3D, AnAlphaSourceNeedsAHostOf2011_04) {
  for (const double version : {2011.03, 2011.04}) {
    host::Settings settings;
    settings.version = version;
    Start(settings);
    const Filter filter = NewFilter(Host().NewPicture(4, 1, host::PictureLayout::WithAlpha()));
    EXPECT_EQ(Run(filter), version > 2011.035);
  }
}

TEST_F(Lut3D, CloseDropsBothPicturesAndMayBeRepeated) {
  Start();
  const PictureRef source = Host().NewPicture(2, 2);
  const Filter filter = NewFilter(source);
  ASSERT_TRUE(Run(filter));
  const PictureRef destination = Destination(filter);
  for (int i = 0; i < 2; ++i) {
    Close(filter);
    EXPECT_EQ(source->References(), 1);
    EXPECT_EQ(destination->References(), 1);
    EXPECT_FALSE(Destination(filter));
  }
}

}  // namespace
