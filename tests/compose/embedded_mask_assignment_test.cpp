// Assigning embedded masks, and pictures that have or take none.
#include <gtest/gtest.h>

#include "tests/compose/embedded_mask_fixture.h"

namespace embedded_mask {
namespace {

TEST_F(EmbeddedMaskTest, AWhiteMaskSetsTheFirstByteAndSwappedClearsIt) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef picture = Noise(5, 4, pair.source);
    const PictureRef white = Plain(5, 4, {255, 255, 255});
    const std::vector<uint8_t> before = Bytes(picture);
    for (const bool swap : {false, true}) {
      Set(picture, swap, white);
      for (int32_t y = 0; y < 4; ++y) {
        for (int32_t x = 0; x < 5; ++x) EXPECT_EQ(picture->Row(y)[x * 4], swap ? 0 : 255);
      }
    }
    std::vector<uint8_t> after = Bytes(picture);
    for (size_t row = 0; row < 4; ++row) {
      for (size_t x = 0; x < 5; ++x) {
        const size_t place = row * (after.size() / 4) + x * 4;
        after[place] = before[place];
      }
    }
    EXPECT_EQ(after, before) << "another byte was touched";
  }
}

TEST_F(EmbeddedMaskTest, OnlyRedOfTheMaskCounts) {
  const PictureRef picture = Host().NewPicture(1, 1, PictureLayout::WithAlpha(2));
  Set(picture, false, Plain(1, 1, {12, 200, 201}));
  EXPECT_EQ(picture->Row(0)[0], 12);
}

TEST_F(EmbeddedMaskTest, AssigningFollowsTheRuleInEveryMixtureOfLayoutsAndSizes) {
  for (const LayoutPair& pair : support::AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (int32_t round = 0; round < 16; ++round) {
      const int32_t width = random.OneIn(3) ? random.Between(1, 4) : random.Between(5, 67);
      const int32_t height = random.Between(1, 5);
      const bool swap = random.OneIn(2);
      const PictureRef picture = Noise(width, height, pair.source);
      const PictureRef mask =
          Noise(std::max(1, width + random.Between(-3, 3)),
                std::max(1, height + random.Between(-3, 3)), AnotherLayout(pair.source, random));
      const std::vector<uint8_t> expected = Assigned(picture, swap, mask);
      const std::vector<uint8_t> maskBefore = Bytes(mask);
      Set(picture, swap, mask);
      EXPECT_EQ(Bytes(picture), expected)
          << width << " x " << height << " from " << mask->Width() << " x " << mask->Height()
          << ", seed " << support::Seed();
      EXPECT_EQ(Bytes(mask), maskBefore);
      ASSERT_FALSE(HasFailure());
    }
  }
}

TEST_F(EmbeddedMaskTest, AssigningStopsAtTheEdgesOfASmallerMask) {
  const PictureRef picture = Host().NewPicture(4, 4, PictureLayout::WithAlpha(2));
  support::Fill(picture, {0, 0, 0}, 100);
  Set(picture, false, Plain(2, 3, {7, 7, 7}));
  for (int32_t y = 0; y < 4; ++y) {
    for (int32_t x = 0; x < 4; ++x) {
      EXPECT_EQ(picture->Row(y)[x * 4], x < 2 && y < 3 ? 7 : 100) << x << ", " << y;
    }
  }
}

TEST_F(EmbeddedMaskTest, APictureCanBeItsOwnMask) {
  NEEDS_NESTED_LOCKS();
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef picture = Noise(37, 4, pair.source);
    const std::vector<uint8_t> expected = Assigned(picture, true, picture);
    Set(picture, true, picture);
    EXPECT_EQ(Bytes(picture), expected);
  }
}

TEST_F(EmbeddedMaskTest, WhatWasReadPutsTheSameAlphaBack) {
  for (const uint32_t alphaInfo : {2U, 4U, 6U}) {
    for (const bool swap : {false, true}) {
      const PictureLayout layout =
          alphaInfo == 2 ? PictureLayout::WithAlpha(2) : PictureLayout::BitmapContext(alphaInfo);
      const PictureRef picture = Noise(9, 3, layout);
      const std::vector<uint8_t> before = Bytes(picture);
      const Result mask = Get(picture, swap);
      for (int32_t y = 0; y < 3; ++y) {
        for (int32_t x = 0; x < 9; ++x) picture->Row(y)[x * 4] ^= 0x5A;
      }
      Set(picture, swap, mask);
      EXPECT_EQ(Bytes(picture), before);
    }
  }
}

TEST_F(EmbeddedMaskTest, AssigningLeavesTheCachedRendering) {
  const PictureRef picture = Host().NewPicture(3, 2, PictureLayout::WithAlpha(2));
  picture->Fill({0, 0, 0, 255});
  picture->Rendering();
  Set(picture, false, Plain(3, 2, {7, 7, 7}));
  EXPECT_EQ(picture->Row(0)[0], 7);
  EXPECT_FALSE(picture->RenderingIsCurrent());
}

TEST_F(EmbeddedMaskTest, AVectorTargetIsLeftAlone) {
  const PictureRef vector =
      Host().NewVectorPicture(3, 2, [](int32_t, int32_t) { return 0x123456U; });
  const std::vector<uint8_t> before = vector->ToRgba();
  Set(vector, false, Plain(3, 2, {7, 7, 7}));
  EXPECT_EQ(vector->ToRgba(), before);
}

TEST_F(EmbeddedMaskTest, AVectorMaskIsDrawnAndThenRead) {
  const PictureRef picture = Host().NewPicture(3, 2, PictureLayout::WithAlpha(2));
  const PictureRef vector = Host().NewVectorPicture(
      3, 2, [](int32_t x, int32_t y) { return static_cast<uint32_t>((10 * y + x) * 0x10000); });
  Set(picture, false, vector);
  EXPECT_EQ(picture->Row(1)[2 * 4], 12);
}

TEST_F(EmbeddedMaskTest, NilAndRefusedPicturesChangeNothing) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef picture = Noise(3, 2, pair.source);
    const PictureRef refused = Noise(3, 2, pair.source);
    refused->SetLocking(host::Locking::kRefused);
    Host().faults.FailAlways("REALGetPropValueInt");
    const std::vector<uint8_t> before = Bytes(picture);
    const std::vector<uint8_t> refusedBefore = Bytes(refused);
    Set(picture, false, nullptr);
    Set(nullptr, false, picture);
    Set(nullptr, false, nullptr);
    Set(picture, true, refused);
    Set(refused, true, picture);
    EXPECT_EQ(Bytes(picture), before);
    EXPECT_EQ(Bytes(refused), refusedBefore);
    EXPECT_FALSE(Get(nullptr, false));
    EXPECT_FALSE(Get(refused, false));
  }
}

TEST_F(EmbeddedMaskTest, ANilPictureIsAssignedWithoutOpeningTheOther) {
  Set(Plain(3, 2, {}), false, nullptr);
  EXPECT_EQ(Host().faults.Calls("REALLockPictureDescription"), 0);
}

TEST_F(EmbeddedMaskTest, WithoutANewPictureReadingGivesNil) {
  const PictureRef picture = Plain(3, 2, {});
  Host().faults.FailAlways("newPicture");
  EXPECT_FALSE(Get(picture, false));
  Host().faults.Clear();
  const PictureRef wide = Host().NewPicture(32768, 1, PictureLayout::BitmapContext(6));
  EXPECT_FALSE(Get(wide, false));
}

}  // namespace
}  // namespace embedded_mask
