// The object of a 3D lookup table: its entries, its properties and its pictures.
#include <gtest/gtest.h>

#include "tests/classes/lut3d_fixture.h"

namespace lut3d {
namespace {

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
}  // namespace lut3d
