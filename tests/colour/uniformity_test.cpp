#include <limits>
#include <utility>

#include "tests/colour/uniformity_fixture.h"

namespace uniformity {
namespace {

constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
constexpr int32_t kMost = std::numeric_limits<int32_t>::max();

TEST_F(Uniformity, EmptyRectanglePassesEveryTest) {
  // Neither black nor white nor grey.
  const PictureRef picture = NewPictureOf(20, 10, {10, 200, 30});
  for (const Area& area :
       {Area{0, 0, 0, 10}, Area{0, 0, 20, 0}, Area{0, 0, 0, 0}, Area{20, 0, 5, 5},
        Area{0, 10, 5, 5}, Area{21, 0, -1, -1}, Area{0, 11, -1, -1}, Area{-5, 0, 5, 5},
        Area{0, -5, 5, 5}, Area{-20, 0, -1, -1}, Area{0, -10, -1, -1}, Area{kMost, 0, kMost, 5},
        Area{0, kMost, 5, kMost}, Area{kLeast, 0, kMost, 5}, Area{0, kLeast, 5, kMost},
        Area{kLeast, kLeast, -1, -1}}) {
    SCOPED_TRACE(testing::Message()
                 << area.left << ", " << area.top << ", " << area.width << ", " << area.height);
    EXPECT_TRUE(IsBlack(picture, area));
    EXPECT_TRUE(IsWhite(picture, area));
    EXPECT_TRUE(IsGray(picture, 0, area));
    EXPECT_TRUE(IsGray(picture, 5, area));
  }
}

TEST_F(Uniformity, LargestLengthReachesTheEdgesFromAnyStart) {
  const PictureRef picture = NewPictureOf(6, 4, {0, 0, 0});
  support::Put(picture, 5, 3, {0, 0, 7});
  EXPECT_FALSE(IsBlack(picture, {5, 3, kMost, kMost}));
  EXPECT_FALSE(IsBlack(picture, {0, 0, kMost, kMost}));
  EXPECT_TRUE(IsBlack(picture, {0, 0, kMost, 3}));
}

TEST_F(Uniformity, PictureThatOpensWithoutPixelsPassesEveryTest) {
  host::Settings console;
  console.application = host::Application::kConsole;
  for (const auto& [width, height] : {std::pair{0, 3}, std::pair{4, 0}, std::pair{0, 0}}) {
    Start(console);
    const PictureRef picture = NewPictureOf(4, 3, {10, 200, 30});
    picture->SetDescriptionHook([w = width, h = height](REALpictureDescription& description) {
      description.width = w;
      description.height = h;
    });
    EXPECT_TRUE(IsBlack(picture));
    EXPECT_TRUE(IsWhite(picture));
    EXPECT_TRUE(IsGray(picture, 0));
    EXPECT_TRUE(IsGray(picture, 3));
  }
}

TEST_F(Uniformity, NegativeLengthsReachTheEdges) {
  const PictureRef picture = NewPictureOf(20, 10, {255, 255, 255});
  support::Put(picture, 9, 5, {255, 255, 254});
  EXPECT_FALSE(IsWhite(picture, {0, 0, -1, -1}));
  EXPECT_FALSE(IsWhite(picture, {9, 0, -1, -1}));
  EXPECT_TRUE(IsWhite(picture, {10, 0, -1, -1}));
  EXPECT_FALSE(IsWhite(picture, {0, 5, kLeast, -7}));
  EXPECT_TRUE(IsWhite(picture, {0, 6, -1, -1}));
}

TEST_F(Uniformity, NegativeStartShortensTheRectangle) {
  const PictureRef picture = NewPictureOf(20, 10, {0, 0, 0});
  support::Put(picture, 5, 0, {1, 0, 0});
  EXPECT_TRUE(IsBlack(picture, {-5, 0, 10, 1}));
  EXPECT_FALSE(IsBlack(picture, {-5, 0, 11, 1}));
  EXPECT_TRUE(IsBlack(picture, {-15, 0, -1, 1}));
  EXPECT_FALSE(IsBlack(picture, {-14, 0, -1, 1}));
}

TEST_F(Uniformity, SinglePixelOfOneBlueIsNotBlackAndGreyWithinOne) {
  const PictureRef picture = NewPictureOf(31, 7, {0, 0, 0});
  EXPECT_TRUE(IsBlack(picture));
  support::Put(picture, 30, 6, {0, 0, 1});
  EXPECT_FALSE(IsBlack(picture));
  EXPECT_TRUE(IsGray(picture, 1));
  EXPECT_FALSE(IsGray(picture, 0));
}

TEST_F(Uniformity, WhiteAndBlackAreGreyWithinEveryTolerance) {
  for (const int level : {0, 255}) {
    const PictureRef picture = NewPictureOf(5, 5, {level, level, level});
    EXPECT_EQ(IsBlack(picture), level == 0);
    EXPECT_EQ(IsWhite(picture), level == 255);
    for (const int32_t tolerance : {0, 1, -1, 255, 256, -300, kMost, kLeast}) {
      EXPECT_TRUE(IsGray(picture, tolerance)) << level << ", tolerance " << tolerance;
    }
  }
}

TEST_F(Uniformity, TwoChannelsMayBeApartByExactlyTheTolerance) {
  for (const Rgb& colour : {Rgb{10, 20, 30}, Rgb{10, 30, 20}, Rgb{20, 10, 30}, Rgb{20, 30, 10},
                            Rgb{30, 10, 20}, Rgb{30, 20, 10}, Rgb{10, 10, 30}, Rgb{30, 30, 10},
                            Rgb{10, 30, 10}, Rgb{30, 10, 30}, Rgb{30, 10, 10}, Rgb{10, 30, 30}}) {
    const PictureRef picture = NewPictureOf(1, 1, colour);
    EXPECT_TRUE(IsGray(picture, 20)) << colour;
    EXPECT_FALSE(IsGray(picture, 19)) << colour;
    EXPECT_TRUE(IsGray(picture, -20)) << colour;
    EXPECT_FALSE(IsGray(picture, -19)) << colour;
  }
}

TEST_F(Uniformity, ToleranceOf255AndMorePassesEveryColour) {
  const PictureRef picture = NewPictureOf(2, 2, {255, 0, 128});
  for (const int32_t tolerance : {255, -255, 256, -256, 65536, kMost, -kMost, kLeast}) {
    EXPECT_TRUE(IsGray(picture, tolerance)) << tolerance;
  }
  EXPECT_FALSE(IsGray(picture, 254));
  EXPECT_FALSE(IsGray(picture, -254));
}

TEST_F(Uniformity, PictureThatCannotBeOpenedPassesNoTest) {
  for (const PictureRef& picture : {PictureRef(), RefusedPicture()}) {
    EXPECT_FALSE(IsBlack(picture));
    EXPECT_FALSE(IsWhite(picture));
    EXPECT_FALSE(IsGray(picture, 0));
    EXPECT_FALSE(IsGray(picture, 255));
    EXPECT_FALSE(IsBlack(picture, {0, 0, 0, 0}));
    EXPECT_FALSE(IsWhite(picture, {0, 0, 0, 0}));
    EXPECT_FALSE(IsGray(picture, 0, {0, 0, 0, 0}));
  }
}

TEST_F(Uniformity, HostThatCannotLockPicturesPassesNoTest) {
  StartWithoutPlugin().faults.Hide("REALLockPictureDescription");
  support::LoadPluginUnderTest(Host());
  const PictureRef picture = NewPictureOf(3, 3, {0, 0, 0});
  EXPECT_FALSE(IsBlack(picture));
  EXPECT_FALSE(IsGray(picture, 255));
}

TEST_F(Uniformity, VectorPictureIsDrawnAndTested) {
  const PictureRef picture = Host().NewVectorPicture(
      6, 4, [](int32_t, int32_t) -> std::optional<uint32_t> { return 0x000000; });
  EXPECT_TRUE(IsBlack(picture));
  EXPECT_FALSE(IsWhite(picture));
}

}  // namespace
}  // namespace uniformity
