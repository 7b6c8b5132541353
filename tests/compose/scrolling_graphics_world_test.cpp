#include <gtest/gtest.h>

#include "tests/compose/scrolling_fixture.h"

namespace scrolling {
namespace {

// Pictures that a QuickDraw graphics world backs: without wrap, the platform moves them.
class GraphicsWorldTest : public ScrollingTest {
 protected:
  PictureRef World(int32_t width, int32_t height) {
    PictureRef picture = Host().NewPicture(width, height, PictureLayout::GraphicsWorld(8));
    FillWithNoise(picture, random);
    Show(picture);
    return picture;
  }

  // What a picture holds, channel values in a row.
  static std::vector<host::Rgba> Colours(const PictureRef& picture) {
    std::vector<host::Rgba> colours;
    for (int32_t y = 0; y < picture->Height(); ++y) {
      for (int32_t x = 0; x < picture->Width(); ++x) colours.push_back(picture->Pixel(x, y));
    }
    return colours;
  }

  // The colours moved by (dh, dv), white where nothing came from.
  static std::vector<host::Rgba> Shifted(const PictureRef& picture, int32_t dh, int32_t dv) {
    std::vector<host::Rgba> colours;
    for (int32_t y = 0; y < picture->Height(); ++y) {
      for (int32_t x = 0; x < picture->Width(); ++x) {
        const int32_t fromX = x - dh;
        const int32_t fromY = y - dv;
        const bool inside =
            fromX >= 0 && fromX < picture->Width() && fromY >= 0 && fromY < picture->Height();
        colours.push_back(inside ? picture->Pixel(fromX, fromY) : host::Rgba{255, 255, 255, 255});
      }
    }
    return colours;
  }
};

TEST_F(GraphicsWorldTest, TheContentShiftsAndTheStripIsErased) {
  for (const int32_t delta : {1, 3, -2, 4, -4, 100, -100}) {
    SCOPED_TRACE(delta);
    const PictureRef picture = World(5, 4);
    const std::vector<host::Rgba> down = Shifted(picture, 0, delta);
    EXPECT_TRUE(Down(picture, delta, false));
    EXPECT_EQ(Colours(picture), down);

    const PictureRef second = World(5, 4);
    const std::vector<host::Rgba> right = Shifted(second, delta, 0);
    EXPECT_TRUE(Right(second, delta, false));
    EXPECT_EQ(Colours(second), right);
  }
}

TEST_F(GraphicsWorldTest, BothAxesShift) {
  const PictureRef picture = World(5, 4);
  const std::vector<host::Rgba> shifted = Shifted(picture, 2, -1);
  EXPECT_TRUE(Both(picture, 2, -1, false));
  EXPECT_EQ(Colours(picture), shifted);
}

TEST_F(GraphicsWorldTest, TheMaskShiftsFirst) {
  const PictureRef picture = World(5, 4);
  const PictureRef mask = World(3, 6);
  picture->SetMask(mask);
  const std::vector<host::Rgba> shifted = Shifted(picture, 0, 2);
  const std::vector<host::Rgba> maskShifted = Shifted(mask, 0, 2);
  EXPECT_TRUE(Down(picture, 2, false, true));
  EXPECT_EQ(Colours(picture), shifted);
  EXPECT_EQ(Colours(mask), maskShifted);
}

TEST_F(GraphicsWorldTest, AMaskThatIsNoGraphicsWorldStopsTheVerticalMethodAlone) {
  const PictureRef picture = World(5, 4);
  const PictureRef mask = Noise(5, 4);
  picture->SetMask(mask);
  const std::vector<host::Rgba> before = Colours(picture);
  EXPECT_FALSE(Down(picture, 2, false, true));
  EXPECT_EQ(Colours(picture), before);
  const std::vector<host::Rgba> right = Shifted(picture, 2, 0);
  EXPECT_TRUE(Right(picture, 2, false, true));
  EXPECT_EQ(Colours(picture), right);
}

TEST_F(GraphicsWorldTest, DistancesKeepTheirLower16Bits) {
  struct Case {
    int32_t delta, shift;
  };
  for (const Case& c : {Case{65536, 0}, Case{65537, 1}, Case{-65538, -2}, Case{INT_MIN, 0},
                        Case{INT_MAX, -1}, Case{0x12340002, 2}}) {
    SCOPED_TRACE(c.delta);
    const PictureRef picture = World(5, 4);
    const std::vector<host::Rgba> down = Shifted(picture, 0, c.shift);
    EXPECT_TRUE(Down(picture, c.delta, false));
    EXPECT_EQ(Colours(picture), down);
    const std::vector<host::Rgba> right = Shifted(picture, c.shift, 0);
    EXPECT_TRUE(Right(picture, c.delta, false));
    EXPECT_EQ(Colours(picture), right);
  }
}

TEST_F(GraphicsWorldTest, WrappingNeedsAnotherKindOfLock) {
  const PictureRef picture = World(5, 4);
  const std::vector<host::Rgba> before = Colours(picture);
  EXPECT_FALSE(Down(picture, 2));
  EXPECT_TRUE(Right(picture, 2));
  EXPECT_EQ(Colours(picture), before);
}

// The calls that are there are made all the same; what moves is what they do without the others.
TEST_F(GraphicsWorldTest, MissingQuickDrawFunctionsAreLeftOutAndItIsTrue) {
  struct Case {
    const char* missing;
    bool moves;
    int regionsLeft;
  };
  for (const Case& c :
       {Case{"GetGWorld", true, 0}, Case{"NewRgn", true, 0}, Case{"DisposeRgn", true, 1},
        Case{"SetGWorld", false, 0}, Case{"ScrollRect", false, 0}, Case{"FSFindFolder", false, 0},
        Case{"CFURLCreateFromFSRef", false, 0},
        Case{"CFURLCreateCopyAppendingPathComponent", false, 0}, Case{"CFBundleCreate", false, 0},
        Case{"CFBundleLoadExecutable", false, 0},
        Case{"CFBundleGetFunctionPointerForName", false, 0}}) {
    SCOPED_TRACE(c.missing);
    StartWithoutPlugin().faults.Hide(c.missing);
    support::LoadPluginUnderTest(Host());
    {
      const PictureRef picture = World(5, 4);
      const std::vector<host::Rgba> expected = c.moves ? Shifted(picture, 0, 2) : Colours(picture);
      EXPECT_TRUE(CallStoring<bool>("ScrollVerticalKRT", picture, 2, false, false));
      EXPECT_EQ(Colours(picture), expected);
      EXPECT_EQ(picture->DescriptionLocks(), 0);
      EXPECT_EQ(host::CurrentGraphicsWorld(), nullptr);
    }
    ExpectLeft(c.regionsLeft);
    StartWithoutPlugin();  // ends the host, which looks at its census
    ExpectLeft(0);
  }
}

TEST_F(GraphicsWorldTest, WithoutASavedWorldOrARegionTheContentMovesAllTheSame) {
  for (const char* entry : {"GetGWorld", "NewRgn"}) {
    SCOPED_TRACE(entry);
    const PictureRef picture = World(5, 4);
    const std::vector<host::Rgba> right = Shifted(picture, 2, 0);
    Host().faults.FailCall(entry);
    EXPECT_TRUE(Right(picture, 2, false));
    EXPECT_EQ(Colours(picture), right);
    EXPECT_EQ(host::CurrentGraphicsWorld(), nullptr);
    Host().faults.Clear();
  }
}

TEST_F(GraphicsWorldTest, TheCallsComeInTheirOrder) {
  const PictureRef picture = World(5, 4);
  ASSERT_TRUE(Down(picture, 1, false));
  Host().faults.StartRecord();
  ASSERT_TRUE(Down(picture, 1, false));
  const std::vector<std::string> expected = {"lockPictureDescription",
                                             "GetGWorld",
                                             "SetGWorld",
                                             "NewRgn",
                                             "ScrollRect",
                                             "DisposeRgn",
                                             "SetGWorld",
                                             "unlockPictureDescription"};
  EXPECT_EQ(Host().faults.StopRecord(), expected);
}

TEST_F(GraphicsWorldTest, WithoutTheTwoArgumentLockItIsNoGraphicsWorld) {
  for (const double version : {2009.05, 2012.0}) {
    host::Settings settings;
    settings.version = version;
    StartWithoutPlugin(settings).faults.Hide("lockPictureDescription");
    support::LoadPluginUnderTest(Host());
    const PictureRef picture = World(5, 4);
    const std::vector<host::Rgba> before = Colours(picture);
    EXPECT_FALSE(Down(picture, 2, false));
    EXPECT_TRUE(Right(picture, 2, false));
    EXPECT_EQ(Colours(picture), before);
    EXPECT_EQ(picture->DescriptionLocks(), 0);
  }
}

TEST_F(GraphicsWorldTest, ARefusedLockIsUndoneWhereTheHostCountsIt) {
  for (const double version : {2009.05, 2011.99, 2012.0, 2013.03}) {
    SCOPED_TRACE(version);
    host::Settings settings;
    settings.version = version;
    Start(settings);
    const PictureRef picture = World(5, 4);
    picture->SetLocking(host::Locking::kRefused);
    EXPECT_FALSE(Down(picture, 2, false));
    EXPECT_TRUE(Right(picture, 2, false));
    EXPECT_EQ(picture->DescriptionLocks(), 0);
  }
}

TEST_F(GraphicsWorldTest, ADescriptionOfAnotherKindIsUnlocked) {
  const PictureRef picture = World(5, 4);
  const std::vector<host::Rgba> before = Colours(picture);
  for (const int32_t type : {0, 3, 5, 8, 10}) {
    picture->SetDescriptionHook([type](REALpictureDescription& d) { d.pictureType = type; });
    EXPECT_FALSE(Down(picture, 2, false));
    EXPECT_TRUE(Right(picture, 2, false));
    EXPECT_EQ(picture->DescriptionLocks(), 0);
  }
  EXPECT_EQ(Colours(picture), before);
}

TEST_F(GraphicsWorldTest, ADescriptionWithoutItsWorldIsNoGraphicsWorld) {
  const PictureRef picture = World(5, 4);
  const std::vector<host::Rgba> before = Colours(picture);
  picture->SetDescriptionHook([](REALpictureDescription& d) { d.pictureData = nullptr; });
  EXPECT_FALSE(Down(picture, 2, false));
  EXPECT_TRUE(Right(picture, 2, false));
  EXPECT_EQ(Colours(picture), before);
}

}  // namespace
}  // namespace scrolling
