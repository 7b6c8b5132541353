#include "tests/support/fixture.h"

namespace {

using namespace support;

bool Counts(Rgb p, int64_t threshold) {
  if (p.red <= 29 && p.green <= 29 && p.blue <= 29) return false;
  const int64_t d1 = p.green - p.red;
  const int64_t d2 = p.green - p.blue;
  return d1 > threshold || d2 > threshold || d1 < -threshold || d2 < -threshold;
}

double Share(const PictureRef& picture, int32_t threshold) {
  int32_t count = 0;
  for (int32_t y = 0; y < picture->Height(); ++y) {
    for (int32_t x = 0; x < picture->Width(); ++x) {
      if (Counts(At(picture, x, y), threshold)) count += 1;
    }
  }
  return static_cast<double>(count) / (picture->Width() * picture->Height());
}

class Colorness : public PluginTest {
 protected:
  double Of(const PictureRef& picture, int32_t threshold = 10) {
    return Call<double>("ColornessKRT", picture, threshold);
  }
  double OfColour(Rgb colour, int32_t threshold = 10) {
    const PictureRef picture = Host().NewPicture(3, 2);
    Fill(picture, colour);
    return Of(picture, threshold);
  }
};

TEST_F(Colorness, FollowsTheRuleInEveryLayout) {
  Random random(350);
  for (const LayoutPair& pair : AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (const auto& [width, height] :
         {std::pair{1, 1}, {3, 2}, {2, 5}, {17, 3}, {67, 4}, {131, 7}}) {
      const PictureRef picture = Host().NewPicture(width, height, pair.source);
      FillWithNoise(picture, random, random.OneIn(2) ? 256 : 3);
      // Dark pixels and near greys among them.
      for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
          if (random.OneIn(2)) continue;
          const int32_t base = random.OneIn(2) ? 20 : random.Between(0, 240);
          const auto near = [&] { return base + random.Between(0, 14); };
          Put(picture, x, y, {near(), near(), near()}, random.Byte());
        }
      }
      const std::vector<uint8_t> before = Bytes(picture);
      for (const int32_t threshold : {10, 0, 1, -1, 9, 13, 100, 254, 255, 256, -255, -256,
                                      INT32_MAX, INT32_MIN, INT32_MIN + 1}) {
        EXPECT_EQ(Of(picture, threshold), Share(picture, threshold))
            << width << " x " << height << ", threshold " << threshold << ", seed " << Seed();
      }
      EXPECT_EQ(Bytes(picture), before) << "the picture was changed";
    }
  }
}

TEST_F(Colorness, DarkPicturesHaveNone) {
  EXPECT_EQ(OfColour({0, 0, 0}), 0.0);
  EXPECT_EQ(OfColour({29, 0, 0}), 0.0);
  EXPECT_EQ(OfColour({0, 29, 29}, -5), 0.0);
}

TEST_F(Colorness, GreyPicturesHaveNoneAtAnyThresholdFromZero) {
  for (const int32_t threshold : {0, 1, 10, INT32_MAX}) {
    EXPECT_EQ(OfColour({128, 128, 128}, threshold), 0.0);
    EXPECT_EQ(OfColour({255, 255, 255}, threshold), 0.0);
  }
}

TEST_F(Colorness, PureRedIsAllColour) { EXPECT_EQ(OfColour({255, 0, 0}), 1.0); }

TEST_F(Colorness, DifferencesMustExceedTheThreshold) {
  EXPECT_EQ(OfColour({40, 50, 40}, 10), 0.0);
  EXPECT_EQ(OfColour({40, 50, 40}, 9), 1.0);
  EXPECT_EQ(OfColour({50, 40, 50}, 10), 0.0);
  EXPECT_EQ(OfColour({50, 40, 50}, 9), 1.0);
}

TEST_F(Colorness, OnlyDifferencesFromGreenCount) {
  EXPECT_EQ(OfColour({90, 100, 110}), 0.0);
  EXPECT_EQ(OfColour({200, 100, 200}), 1.0);
  EXPECT_EQ(OfColour({200, 200, 100}), 1.0);
  EXPECT_EQ(OfColour({100, 200, 200}), 1.0);
}

TEST_F(Colorness, OneChannelAboveTwentyNineIsNotDark) {
  EXPECT_EQ(OfColour({29, 29, 30}, 0), 1.0);
  EXPECT_EQ(OfColour({29, 30, 29}, 0), 1.0);
  EXPECT_EQ(OfColour({30, 29, 29}, 0), 1.0);
  EXPECT_EQ(OfColour({29, 29, 29}, -1), 0.0);
}

TEST_F(Colorness, DarkPixelsStayInTheTotal) {
  const PictureRef picture = Host().NewPicture(6, 4);
  Fill(picture, {0, 0, 0});
  for (int32_t y = 0; y < 4; ++y) {
    for (int32_t x = 0; x < 3; ++x) Put(picture, x * 2 + y % 2, y, {0, 0, 255});
  }
  EXPECT_EQ(Of(picture), 0.5);
}

TEST_F(Colorness, ANegativeThresholdCountsEveryPixelThatIsNotDark) {
  for (const int32_t threshold : {-1, -300, INT32_MIN}) {
    EXPECT_EQ(OfColour({128, 128, 128}, threshold), 1.0);
    EXPECT_EQ(OfColour({255, 255, 255}, threshold), 1.0);
  }
}

TEST_F(Colorness, IsTheNearestDoubleOfTheShare) {
  const PictureRef picture = Host().NewPicture(3, 1);
  Fill(picture, {200, 200, 200});
  Put(picture, 1, 0, {255, 0, 0});
  EXPECT_EQ(Of(picture), 1.0 / 3.0);
}

TEST_F(Colorness, TheThresholdIsTenUnlessSaidOtherwise) {
  const auto& parameters = Find("Picture", "ColornessKRT", 1).declaration.parameters;
  ASSERT_EQ(parameters.size(), 1U);
  ASSERT_TRUE(parameters[0].defaultValue.has_value());
  EXPECT_EQ(*parameters[0].defaultValue, host::Literal(int64_t{10}));
}

TEST_F(Colorness, WhatCannotBeOpenedHasNone) {
  EXPECT_EQ(Of(PictureRef{}), 0.0);
  EXPECT_EQ(Of(RefusedPicture(), -1), 0.0);
}

}  // namespace
