// Asking for embedded masks and reading them.
#include <gtest/gtest.h>

#include "tests/compose/embedded_mask_fixture.h"

namespace embedded_mask {
namespace {

TEST_F(EmbeddedMaskTest, NilHasNoMask) { EXPECT_FALSE(HasMask(nullptr)); }

TEST_F(EmbeddedMaskTest, AskingForAMaskMakesNone) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    Start(pair.settings);
    const PictureRef picture = Noise(3, 2, pair.source);
    EXPECT_FALSE(HasMask(picture));
    EXPECT_FALSE(picture->Mask());
    picture->SetMask(Noise(3, 2, pair.source));
    EXPECT_TRUE(HasMask(picture));
    picture->SetMask(nullptr);
    EXPECT_FALSE(HasMask(picture));
  }
}

TEST_F(EmbeddedMaskTest, WithoutTheHostsFunctionThereIsNoMask) {
  StartWithoutPlugin().faults.Hide("REALGetPictureMask");
  support::LoadPluginUnderTest(Host());
  const PictureRef picture = Plain(3, 2, {});
  picture->SetMask(Plain(3, 2, {}));
  EXPECT_FALSE(HasMask(picture));
}

TEST_F(EmbeddedMaskTest, AnOpaquePictureIsWhiteAndSwappedBlack) {
  const PictureRef picture = Host().NewPicture(5, 4, PictureLayout::WithAlpha(2));
  support::Fill(picture, {1, 2, 3}, 255);
  EXPECT_TRUE(IsNewPicture(Get(picture, false), 5, 4, false, [](int32_t, int32_t) {
    return Rgb{255, 255, 255};
  }));
  EXPECT_TRUE(IsNewPicture(Get(picture, true), 5, 4, false, [](int32_t, int32_t) {
    return Rgb{0, 0, 0};
  }));
}

TEST_F(EmbeddedMaskTest, APictureWithoutAlphaGivesItsFourthBytes) {
  const PictureRef picture = Host().NewPicture(2, 1, PictureLayout::BitmapContext(5));
  support::Put(picture, 0, 0, {1, 2, 3}, 77);
  support::Put(picture, 1, 0, {1, 2, 3}, 255);
  EXPECT_TRUE(IsNewPicture(Get(picture, false), 2, 1, false, [](int32_t x, int32_t) {
    return x == 0 ? Rgb{77, 77, 77} : Rgb{255, 255, 255};
  }));
}

TEST_F(EmbeddedMaskTest, TheTopByteOfARowTableIsStretched) {
  host::Settings settings;
  settings.application = host::Application::kConsole;
  Start(settings);
  const PictureRef picture = Host().NewPicture(256, 1, PictureLayout::RowTable());
  for (int32_t x = 0; x < 256; ++x) support::Put(picture, x, 0, {9, 9, 9}, static_cast<uint8_t>(x));
  const Result mask = Get(picture, false);
  const auto grey = [&](int32_t top) { return At(mask, top, 0).red; };
  EXPECT_EQ(grey(127), 255);
  EXPECT_EQ(grey(64), 128);
  EXPECT_EQ(grey(128), 0);
  EXPECT_EQ(grey(0), 0);
  EXPECT_EQ(grey(1), 3);
  EXPECT_EQ(grey(2), 4);
  EXPECT_EQ(grey(255), 255);
  EXPECT_TRUE(IsNewPicture(mask, 256, 1, false, [](int32_t x, int32_t) {
    const int level = (x % 128) * 2 + x % 2;
    return Rgb{level, level, level};
  }));
}

TEST_F(EmbeddedMaskTest, ReadingFollowsTheRuleInEveryPairOfLayouts) {
  for (const LayoutPair& pair : support::AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (int32_t round = 0; round < 12; ++round) {
      const int32_t width = random.OneIn(3) ? random.Between(1, 4) : random.Between(5, 67);
      const int32_t height = random.Between(1, 4);
      const bool swap = random.OneIn(2);
      const PictureRef picture = Noise(width, height, pair.source);
      const std::vector<uint8_t> before = Bytes(picture);
      EXPECT_TRUE(IsNewPicture(Get(picture, swap), width, height, false, [&](int32_t x, int32_t y) {
        const int grey = GreyOf(pair.source, picture->Row(y) + static_cast<ptrdiff_t>(x) * 4);
        const int level = swap ? 255 - grey : grey;
        return Rgb{level, level, level};
      }));
      EXPECT_EQ(Bytes(picture), before);
      ASSERT_FALSE(HasFailure());
    }
  }
}

}  // namespace
}  // namespace embedded_mask
