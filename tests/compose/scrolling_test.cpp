// Scrolling with wrap: every row and column goes where the rule puts it.
#include <gtest/gtest.h>

#include "tests/compose/scrolling_fixture.h"

namespace scrolling {
namespace {

TEST_F(ScrollingTest, ADeltaOfZeroIsTrueEvenForNil) {
  for (const bool wrap : {false, true}) {
    for (const bool mask : {false, true}) {
      EXPECT_TRUE(Down(nullptr, 0, wrap, mask));
      EXPECT_TRUE(Right(nullptr, 0, wrap, mask));
      EXPECT_TRUE(Both(nullptr, 0, 0, wrap, mask));
    }
  }
}

TEST_F(ScrollingTest, ADeltaOfZeroTouchesNeitherPictureNorMask) {
  const PictureRef picture = Noise(5, 4);
  const PictureRef mask = Noise(5, 4);
  picture->SetMask(mask);
  const std::vector<uint8_t> before = Bytes(picture);
  const std::vector<uint8_t> maskBefore = Bytes(mask);
  for (const bool wrap : {false, true}) {
    EXPECT_TRUE(Down(picture, 0, wrap, true));
    EXPECT_TRUE(Right(picture, 0, wrap, true));
    EXPECT_TRUE(Both(picture, 0, 0, wrap, true));
  }
  EXPECT_EQ(Bytes(picture), before);
  EXPECT_EQ(Bytes(mask), maskBefore);
}

TEST_F(ScrollingTest, ADeltaOfZeroAsksNothingOfTheHost) {
  const PictureRef picture = Noise(5, 4);
  const int64_t calls = Host().faults.AllCalls();
  for (const bool wrap : {false, true}) {
    EXPECT_TRUE(Down(picture, 0, wrap));
    EXPECT_TRUE(Right(picture, 0, wrap));
    EXPECT_TRUE(Both(picture, 0, 0, wrap));
  }
  EXPECT_EQ(Host().faults.AllCalls(), calls);
}

TEST_F(ScrollingTest, NilIsFalseVerticallyAndTrueHorizontally) {
  for (const bool wrap : {false, true}) {
    EXPECT_FALSE(Down(nullptr, 3, wrap, true));
    EXPECT_TRUE(Right(nullptr, 3, wrap, true));
    EXPECT_FALSE(Both(nullptr, 3, 3, wrap, true));
    EXPECT_TRUE(Both(nullptr, 3, 0, wrap, true));
  }
}

TEST_F(ScrollingTest, MultiplesOfTheAxisChangeNothing) {
  const PictureRef picture = Noise(7, 10);
  const std::vector<uint8_t> before = Bytes(picture);
  for (const int32_t times : {-3, -1, 1, 2}) {
    EXPECT_TRUE(Down(picture, 10 * times));
    EXPECT_TRUE(Right(picture, 7 * times));
    EXPECT_TRUE(Both(picture, 7 * times, 10 * times));
    EXPECT_EQ(Bytes(picture), before);
  }
}

TEST_F(ScrollingTest, RowsOfAPictureTenHighMoveAsWorkedOut) {
  struct Case {
    int32_t delta, movesDownBy;
  };
  for (const Case& c : {Case{5, 5}, Case{-5, 5}, Case{6, -4}, Case{-13, -3}}) {
    const PictureRef picture = Noise(3, 10);
    const std::vector<uint8_t> expected = MovedDown(picture, c.movesDownBy);
    EXPECT_TRUE(Down(picture, c.delta));
    EXPECT_EQ(Bytes(picture), expected) << "delta " << c.delta;
  }
}

TEST_F(ScrollingTest, RowsAreFoundWhereHandArithmeticPutsThem) {
  const PictureRef picture = Host().NewPicture(1, 5, PictureLayout::BitmapContext(5));
  for (int32_t y = 0; y < 5; ++y) support::Put(picture, 0, y, {10 * y, 0, 0});
  EXPECT_TRUE(Down(picture, 2));
  const std::array<int, 5> reds = {30, 40, 0, 10, 20};
  for (int32_t y = 0; y < 5; ++y) {
    EXPECT_EQ(support::At(picture, 0, y).red, reds[static_cast<size_t>(y)]);
  }
}

TEST_F(ScrollingTest, ColumnsOfAPictureSevenWideMoveAsWorkedOut) {
  const PictureRef picture = Host().NewPicture(7, 1, PictureLayout::BitmapContext(5));
  for (int32_t x = 0; x < 7; ++x) support::Put(picture, x, 0, {10 * x, 0, 0});
  EXPECT_TRUE(Right(picture, 4));
  const std::array<int, 7> reds = {30, 40, 50, 60, 0, 10, 20};
  for (int32_t x = 0; x < 7; ++x) {
    EXPECT_EQ(support::At(picture, x, 0).red, reds[static_cast<size_t>(x)]);
  }
}

TEST_F(ScrollingTest, WithoutWrapOnlyGraphicsWorldsMove) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef picture = Noise(6, 5, pair.source);
    const std::vector<uint8_t> before = Bytes(picture);
    EXPECT_FALSE(Down(picture, 2, false));
    EXPECT_TRUE(Right(picture, 2, false));
    EXPECT_FALSE(Both(picture, 2, 2, false));
    EXPECT_TRUE(Both(picture, 2, 0, false));
    EXPECT_EQ(Bytes(picture), before);
  }
}

TEST_F(ScrollingTest, BothAxesMoveByTheirOwnDelta) {
  const PictureRef picture = Noise(6, 5);
  const std::vector<uint8_t> right = MovedRight(picture, 1);
  EXPECT_TRUE(Both(picture, 1, 0));
  EXPECT_EQ(Bytes(picture), right);
  const std::vector<uint8_t> down = MovedDown(picture, -2);
  EXPECT_TRUE(Both(picture, 0, -2));
  EXPECT_EQ(Bytes(picture), down);
}

TEST_F(ScrollingTest, WithoutAMaskScrollmaskChangesNothing) {
  const PictureRef picture = Noise(6, 5);
  const std::vector<uint8_t> down = MovedDown(picture, 2);
  EXPECT_TRUE(Down(picture, 2, true, true));
  EXPECT_EQ(Bytes(picture), down);
  const std::vector<uint8_t> right = MovedRight(picture, 2);
  EXPECT_TRUE(Right(picture, 2, true, true));
  EXPECT_EQ(Bytes(picture), right);
  EXPECT_FALSE(picture->Mask()) << "a mask was made";
}

TEST_F(ScrollingTest, EveryLayoutAndDeltaRotatesByTheRule) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (int32_t round = 0; round < 40; ++round) {
      const int32_t width = random.Between(1, 9);
      const int32_t height = random.Between(1, 9);
      PictureLayout layout = pair.source;
      layout.rowPadding = random.Between(0, 3) * 4;
      layout.contiguousRows = random.OneIn(2);
      const PictureRef picture = Noise(width, height, layout);
      const std::array<int32_t, 4> deltas = {random.Between(-20, 20), random.Between(-20, 20),
                                             static_cast<int32_t>(random.Bits()),
                                             random.OneIn(2) ? INT_MIN : INT_MAX};
      for (const int32_t delta : deltas) {
        SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height) + " by " +
                     std::to_string(delta));
        const std::vector<uint8_t> down = MovedDown(picture, delta);
        EXPECT_TRUE(Down(picture, delta));
        EXPECT_EQ(Bytes(picture), down);
        EXPECT_TRUE(picture->RenderingIsCurrent());
        const std::vector<uint8_t> right = MovedRight(picture, delta);
        EXPECT_TRUE(Right(picture, delta));
        EXPECT_EQ(Bytes(picture), right);
        EXPECT_TRUE(picture->RenderingIsCurrent());
        const int32_t other = deltas[random.Between(0, 3)];
        const std::vector<uint8_t> both = Moved(picture, delta, other);
        EXPECT_TRUE(Both(picture, delta, other));
        EXPECT_EQ(Bytes(picture), both) << "down by " << other;
        EXPECT_TRUE(picture->RenderingIsCurrent());
      }
      ASSERT_FALSE(HasFailure());
    }
  }
}

}  // namespace
}  // namespace scrolling
