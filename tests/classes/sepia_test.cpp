// What the sepia filter makes of colours.
#include <gtest/gtest.h>

#include "tests/classes/sepia_fixture.h"

namespace sepia {
namespace {

TEST_F(Sepia, FollowsTheRuleInEveryLayout) {
  Random random(810);
  for (const LayoutPair& pair : AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (const auto& [width, height] :
         {std::array{1, 1}, {1, 7}, {5, 1}, {16, 3}, {33, 5}, {130, 2}}) {
      const PictureRef source = Noise(width, height, pair.source, random);
      ExpectTones(source, {});
      ExpectTones(source, {0.299, 0.587, 0.114, 40, 20, -30});
    }
    ExpectTones(Noise(19, 9, pair.source, random), {}, {3, 2, 15, 8});
  }
}

TEST_F(Sepia, FollowsTheRuleForAnyFactorsAndOffsets) {
  Random random(811);
  Start();
  const PictureRef source = Noise(61, 7, {}, random);
  const double infinity = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double factor :
       {0.0, -0.0, 1.0, -1.0, 0.0009, 32.0, -32.0, 8224.0, 2097151.0, 2097151.9995, 2097152.0,
        -2097152.0, -2097152.0009, -2097153.0, 1e10, -1e10, infinity, -infinity, nan}) {
    ExpectTones(source, {factor, 0.587, 0.114, 1, 2, 3});
    ExpectTones(source, {0.299, factor, 0.114, 1, 2, 3});
    ExpectTones(source, {0.299, 0.587, factor, 1, 2, 3});
    ExpectTones(source, {factor, factor, factor, 0, kLeast, kMost});
  }
  for (int i = 0; i < 60; ++i) {
    const double reach = std::pow(10.0, random.Real(-1, 7));
    const auto offset = [&] {
      return random.OneIn(4) ? static_cast<int32_t>(random.Bits()) : random.Between(-300, 300);
    };
    ExpectTones(source, {random.Real(-reach, reach), random.Real(-reach, reach),
                         random.Real(-reach, reach), offset(), offset(), offset()});
  }
}

TEST_F(Sepia, BoundsSayHowManyPixelsAndNotWhere) {
  Random random(812);
  for (const auto application : {host::Application::kDesktop, host::Application::kConsole}) {
    host::Settings settings;
    settings.application = application;
    Start(settings);
    const host::PictureLayout layout =
        application == host::Application::kDesktop ? settings.opaqueLayout : settings.consoleLayout;
    const PictureRef source = Noise(25, 15, layout, random);
    for (const Bounds& bounds : ManyBounds(random)) ExpectTones(source, {}, bounds);
  }
}

TEST_F(Sepia, MinX10AndMaxX50ProcessColumns0To39) {
  Start();
  const PictureRef source = Host().NewPicture(100, 1);
  Fill(source, {0, 0, 0});
  const Filter filter = NewFilter(source);
  SetBounds(filter, {10, 0, 50, 0});
  ASSERT_TRUE(Run(filter));
  EXPECT_EQ(At(Destination(filter), 0, 0), (Rgb{0, 0, 0}));
  EXPECT_EQ(At(Destination(filter), 39, 0), (Rgb{0, 0, 0}));
  EXPECT_EQ(At(Destination(filter), 40, 0), (Rgb{255, 255, 255}));
  EXPECT_EQ(At(Destination(filter), 49, 0), (Rgb{255, 255, 255}));
}

TEST_F(Sepia, NoRowsAreStillASuccess) {
  Start();
  const Filter filter = NewFilter(Host().NewPicture(3, 4));
  SetBounds(filter, {0, 4, 0, 0});
  EXPECT_TRUE(Run(filter));
  EXPECT_TRUE(IsNewPicture(Destination(filter), 3, 4, false,
                           [](int32_t, int32_t) { return std::nullopt; }));
}

TEST_F(Sepia, DefaultsMakeRed76) { EXPECT_EQ(ToneOfColour({255, 0, 0}, {}), (Rgb{76, 76, 76})); }

TEST_F(Sepia, DefaultsMakeWhite254) {
  EXPECT_EQ(ToneOfColour({255, 255, 255}, {}), (Rgb{254, 254, 254}));
}

TEST_F(Sepia, OffsetsAreClamped) {
  EXPECT_EQ(ToneOfColour({0, 0, 0}, {0.299, 0.587, 0.114, 300, 0, -300}), (Rgb{255, 0, 0}));
  EXPECT_EQ(ToneOfColour({255, 255, 255}, {0.299, 0.587, 0.114, 300, 1, -300}), (Rgb{255, 255, 0}));
}

// -306 * 255 / 1024 is -76.2; the offsets go on top of -76.
TEST_F(Sepia, NegativeSumsAreTruncatedBeforeTheOffsets) {
  EXPECT_EQ(ToneOfColour({255, 0, 0}, {-0.299, 0, 0, 76, 77, 100}), (Rgb{0, 1, 24}));
}

TEST_F(Sepia, SumsAndOffsetsWrap) {
  // Weight 0x7FFFFC00: times 2 is 0xFFFFF800, which is -2048 and makes a grey of -2.
  EXPECT_EQ(ToneOfColour({2, 0, 0}, {2097151.0, 0, 0, 3, 2, 102}), (Rgb{1, 0, 100}));
  // A grey of 1 takes the greatest offset past the end.
  EXPECT_EQ(ToneOfColour({1, 0, 0}, {1.0, 0, 0, kMost, kMost - 1, 0}), (Rgb{0, 255, 1}));
}

TEST_F(Sepia, FactorBlueIsTheWeightOfGreenAndFactorGreenThatOfBlue) {
  Start();
  const PictureRef source = Host().NewPicture(1, 1);
  Put(source, 0, 0, {0, 200, 0});
  const Filter withoutGreen = NewFilter(source);
  Set(withoutGreen, "FactorBlue", 0.0);
  ASSERT_TRUE(Run(withoutGreen));
  EXPECT_EQ(At(Destination(withoutGreen), 0, 0), (Rgb{0, 0, 0}));

  Put(source, 0, 0, {0, 0, 200});
  const Filter withoutBlue = NewFilter(source);
  Set(withoutBlue, "FactorGreen", 0.0);
  ASSERT_TRUE(Run(withoutBlue));
  EXPECT_EQ(At(Destination(withoutBlue), 0, 0), (Rgb{0, 0, 0}));
}

}  // namespace
}  // namespace sepia
