// The object of the sepia filter: its properties and its pictures.
#include <gtest/gtest.h>

#include "tests/classes/sepia_fixture.h"

namespace sepia {
namespace {

TEST_F(Sepia, ANewObjectHasTheDefaults) {
  Start();
  const Filter filter = NewFilter();
  EXPECT_EQ(GetDouble(filter, "FactorRed"), 0.299);
  EXPECT_EQ(GetDouble(filter, "FactorBlue"), 0.587);
  EXPECT_EQ(GetDouble(filter, "FactorGreen"), 0.114);
  for (const char* property :
       {"MinX", "MinY", "MaxX", "MaxY", "SepiaRed", "SepiaGreen", "SepiaBlue"}) {
    EXPECT_EQ(GetInteger(filter, property), 0) << property;
  }
  EXPECT_FALSE(GetPicture(filter, "SourcePicture"));
  EXPECT_FALSE(Destination(filter));
}

TEST_F(Sepia, PropertiesKeepWhatIsSet) {
  Start();
  const Filter filter = NewFilter();
  int32_t value = -7;
  for (const char* property :
       {"MinX", "MinY", "MaxX", "MaxY", "SepiaRed", "SepiaGreen", "SepiaBlue"}) {
    Set(filter, property, value++);
  }
  Set(filter, "FactorRed", 0.25);
  Set(filter, "FactorGreen", 0.5);
  Set(filter, "FactorBlue", 0.75);
  value = -7;
  for (const char* property :
       {"MinX", "MinY", "MaxX", "MaxY", "SepiaRed", "SepiaGreen", "SepiaBlue"}) {
    EXPECT_EQ(GetInteger(filter, property), value++) << property;
  }
  EXPECT_EQ(GetDouble(filter, "FactorRed"), 0.25);
  EXPECT_EQ(GetDouble(filter, "FactorGreen"), 0.5);
  EXPECT_EQ(GetDouble(filter, "FactorBlue"), 0.75);
}

TEST_F(Sepia, ThePreviousDestinationKeepsItsReference) {
  Start();
  ExpectLeft(1);
  const Filter filter = NewFilter(Host().NewPicture(2, 2));
  ASSERT_TRUE(Run(filter));
  const PictureRef first = Destination(filter);
  ASSERT_TRUE(Run(filter));
  EXPECT_FALSE(Destination(filter) == first);
  EXPECT_EQ(first->References(), 2);
}

TEST_F(Sepia, CloseDropsBothPicturesAndMayBeRepeated) {
  Start();
  const PictureRef source = Host().NewPicture(2, 2);
  const Filter filter = NewFilter(source);
  ASSERT_TRUE(Run(filter));
  const PictureRef destination = Destination(filter);
  EXPECT_EQ(source->References(), 2);
  for (int i = 0; i < 2; ++i) {
    Close(filter);
    EXPECT_EQ(source->References(), 1);
    EXPECT_EQ(destination->References(), 1);
    EXPECT_FALSE(GetPicture(filter, "SourcePicture"));
    EXPECT_FALSE(Destination(filter));
  }
  EXPECT_FALSE(Run(filter));
}

TEST_F(Sepia, AFailureLeavesTheDestinationAsItWas) {
  Start();
  const PictureRef source = Host().NewPicture(2, 2);
  const Filter filter = NewFilter(source);
  ASSERT_TRUE(Run(filter));
  const PictureRef destination = Destination(filter);
  const auto expectFailure = [&](const char* why) {
    EXPECT_FALSE(Run(filter)) << why;
    EXPECT_TRUE(Destination(filter) == destination) << why;
    EXPECT_EQ(destination->References(), 2) << why;
  };

  Set(filter, "SourcePicture", host::Nil{});
  expectFailure("no source");
  Set(filter, "SourcePicture", Host().NewPicture(40000, 1));
  expectFailure("a source 40000 wide");
  Set(filter, "SourcePicture", Host().NewPicture(1, 32768));
  expectFailure("a source 32768 high");
  Set(filter, "SourcePicture",
      Host().NewPicture(2, 2, host::PictureLayout::BitmapContext(5, 0, 16)));
  expectFailure("a source of 16 bits");
  Set(filter, "SourcePicture", source);
  Host().faults.FailCall("newPicture");
  expectFailure("no new picture");
  Host().faults.FailCall("REALLockPictureDescription", 2);
  expectFailure("the new picture can't be opened");
}

TEST_F(Sepia, AHostWithoutNewPictureMakesRunFail) {
  StartWithoutPlugin();
  Host().faults.Hide("newPicture");
  LoadPluginUnderTest(Host());
  const Filter filter = NewFilter(Host().NewPicture(2, 2));
  EXPECT_FALSE(Run(filter));
  EXPECT_FALSE(Destination(filter));
}

TEST_F(Sepia, TheGreatestWidthIsProcessed) {
  Start();
  const PictureRef source = Host().NewPicture(32767, 1);
  Fill(source, {255, 0, 0});
  const Filter filter = NewFilter(source);
  ASSERT_TRUE(Run(filter));
  EXPECT_EQ(At(Destination(filter), 32766, 0), (Rgb{76, 76, 76}));
}

TEST_F(Sepia, AVectorPictureIsDrawnFirst) {
  Start();
  const PictureRef source = Host().NewVectorPicture(3, 2, [](int32_t x, int32_t) {
    return std::optional<uint32_t>(x == 0 ? 0xFF0000 : 0xFFFFFF);
  });
  const Filter filter = NewFilter(source);
  ASSERT_TRUE(Run(filter));
  EXPECT_EQ(At(Destination(filter), 0, 1), (Rgb{76, 76, 76}));
  EXPECT_EQ(At(Destination(filter), 2, 1), (Rgb{254, 254, 254}));
}

}  // namespace
}  // namespace sepia
