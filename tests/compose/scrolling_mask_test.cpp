// Scrolling a mask with its picture, and pictures that can't be scrolled.
#include <gtest/gtest.h>

#include "tests/compose/scrolling_fixture.h"

namespace scrolling {
namespace {

TEST_F(ScrollingTest, TheMaskMovesWithThePictureWhenAsked) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef picture = Noise(6, 5, pair.source);
    const PictureRef mask = Noise(8, 3, pair.source);
    picture->SetMask(mask);

    std::vector<uint8_t> moved = MovedDown(picture, 2);
    std::vector<uint8_t> maskMoved = MovedDown(mask, 2);
    EXPECT_TRUE(Down(picture, 2, true, true));
    EXPECT_EQ(Bytes(picture), moved);
    EXPECT_EQ(Bytes(mask), maskMoved);
    EXPECT_TRUE(mask->RenderingIsCurrent());

    moved = MovedRight(picture, -1);
    maskMoved = MovedRight(mask, -1);
    EXPECT_TRUE(Right(picture, -1, true, true));
    EXPECT_EQ(Bytes(picture), moved);
    EXPECT_EQ(Bytes(mask), maskMoved);

    moved = MovedDown(picture, 1);
    EXPECT_TRUE(Down(picture, 1));
    EXPECT_EQ(Bytes(picture), moved);
    EXPECT_EQ(Bytes(mask), maskMoved) << "scrollmask was false";

    moved = Moved(picture, 3, 2);
    maskMoved = Moved(mask, 3, 2);
    EXPECT_TRUE(Both(picture, 3, 2, true, true));
    EXPECT_EQ(Bytes(picture), moved);
    EXPECT_EQ(Bytes(mask), maskMoved);
  }
}

TEST_F(ScrollingTest, APictureThatIsItsOwnMaskMovesTwice) {
  const PictureRef picture = Noise(6, 5);
  picture->SetMask(picture);
  const std::vector<uint8_t> down = MovedDown(picture, 2);
  EXPECT_TRUE(Down(picture, 1, true, true));
  EXPECT_EQ(Bytes(picture), down);
  const std::vector<uint8_t> right = MovedRight(picture, 4);
  EXPECT_TRUE(Right(picture, 2, true, true));
  EXPECT_EQ(Bytes(picture), right);
  const std::vector<uint8_t> both = Moved(picture, 2, -4);
  EXPECT_TRUE(Both(picture, 1, -2, true, true));
  EXPECT_EQ(Bytes(picture), both);
  picture->SetMask(nullptr);
}

TEST_F(ScrollingTest, AMaskThatCannotMoveStopsTheVerticalMethodAlone) {
  const PictureRef picture = Noise(6, 5);
  const PictureRef mask = Noise(6, 5);
  mask->SetLocking(host::Locking::kRefused);
  picture->SetMask(mask);
  const std::vector<uint8_t> before = Bytes(picture);
  const std::vector<uint8_t> maskBefore = Bytes(mask);
  EXPECT_FALSE(Down(picture, 2, true, true));
  EXPECT_EQ(Bytes(picture), before);

  std::vector<uint8_t> right = MovedRight(picture, 2);
  EXPECT_TRUE(Right(picture, 2, true, true));
  EXPECT_EQ(Bytes(picture), right);
  right = MovedRight(picture, -1);
  EXPECT_FALSE(Both(picture, -1, 2, true, true));
  EXPECT_EQ(Bytes(picture), right);
  EXPECT_EQ(Bytes(mask), maskBefore);
}

TEST_F(ScrollingTest, WithTheMaskEntryMissingThePictureMovesAlone) {
  StartWithoutPlugin().faults.Hide("REALGetPictureMask");
  support::LoadPluginUnderTest(Host());
  const PictureRef picture = Noise(6, 5);
  const PictureRef mask = Noise(6, 5);
  picture->SetMask(mask);
  const std::vector<uint8_t> down = MovedDown(picture, 2);
  const std::vector<uint8_t> maskBefore = Bytes(mask);
  EXPECT_TRUE(Down(picture, 2, true, true));
  EXPECT_EQ(Bytes(picture), down);
  EXPECT_EQ(Bytes(mask), maskBefore);
}

TEST_F(ScrollingTest, APictureThatCannotBeOpenedIsFalseVerticallyAndTrueHorizontally) {
  for (const host::Application application :
       {host::Application::kDesktop, host::Application::kConsole}) {
    for (const double version : {2011.04, 2012.0, 2013.03}) {
      host::Settings settings;
      settings.application = application;
      settings.version = version;
      Start(settings);
      const PictureRef picture = Host().NewPicture(6, 5);
      picture->SetLocking(host::Locking::kRefused);
      const std::vector<uint8_t> before = Bytes(picture);
      EXPECT_FALSE(Down(picture, 2));
      EXPECT_TRUE(Right(picture, 2));
      EXPECT_FALSE(Both(picture, 2, 2));
      EXPECT_EQ(Bytes(picture), before);
      EXPECT_EQ(picture->DescriptionLocks(), 0);
    }
  }
}

TEST_F(ScrollingTest, AVectorPictureIsNotDrawnIntoACopy) {
  const PictureRef vector =
      Host().NewVectorPicture(6, 5, [](int32_t, int32_t) { return 0x123456U; });
  EXPECT_FALSE(Down(vector, 2));
  EXPECT_TRUE(Right(vector, 2));
  EXPECT_EQ(Host().faults.Calls("newPicture"), 0);
}

TEST_F(ScrollingTest, APictureWithoutPixelsIsLeftAloneAndTrue) {
  host::Settings settings;
  settings.application = host::Application::kConsole;
  Start(settings);
  const PictureRef picture = Noise(6, 5, PictureLayout::RowTable());
  const std::vector<uint8_t> before = Bytes(picture);
  picture->SetDescriptionHook([](REALpictureDescription& d) { d.width = d.height = 0; });
  EXPECT_TRUE(Down(picture, 2));
  EXPECT_TRUE(Right(picture, 2));
  EXPECT_TRUE(Both(picture, 2, 2));
  EXPECT_EQ(Bytes(picture), before);
}

// The description tells of a picture that is larger than it is; nothing of it may be touched.
TEST_F(ScrollingTest, WhatNeedsMoreThan31BitsOfMemoryIsRefused) {
  struct Case {
    int32_t width, height, delta;
  };
  const Case vertical[] = {
      {1 << 27, 5, 1},     // four rows of 2^29 bytes are 2^31
      {1 << 27, 5, -1},    // and five more than that
      {102261127, 6, -1},  // six rows of 409044508 bytes are 2454267048, though five are in range
      {1 << 28, 3, 1},     // two rows of 2^30
      {1 << 29, 2, 1},     // a row of 2^31 bytes
      {1 << 30, 2, 1},     // a row of 2^32 bytes
      {1 << 30, 1 << 30, 5}, {INT_MAX, INT_MAX, -5},
  };
  host::Settings settings;
  settings.application = host::Application::kConsole;
  Start(settings);
  const PictureRef picture = Noise(6, 5, PictureLayout::RowTable());
  const std::vector<uint8_t> before = Bytes(picture);
  for (const Case& c : vertical) {
    SCOPED_TRACE(std::to_string(c.width) + " x " + std::to_string(c.height));
    picture->SetDescriptionHook([&](REALpictureDescription& d) {
      d.width = c.width;
      d.height = c.height;
    });
    EXPECT_FALSE(Down(picture, c.delta));
    if (c.width >= 1 << 29) {
      EXPECT_TRUE(Right(picture, c.delta));
    }
    EXPECT_EQ(Bytes(picture), before);
  }
}

TEST_F(ScrollingTest, EveryFailingHostCallGivesTheDocumentedResultAndBalances) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef picture = Noise(6, 5, pair.source);
    const std::vector<uint8_t> before = Bytes(picture);
    Host().faults.FailAlways("REALLockPictureDescription");
    EXPECT_FALSE(Down(picture, 2));
    EXPECT_TRUE(Right(picture, 2));
    EXPECT_FALSE(Both(picture, 2, 2));
    EXPECT_EQ(Bytes(picture), before);
    Host().faults.Clear();

    // The horizontal step fails and is passed over; the vertical one decides.
    const std::vector<uint8_t> down = MovedDown(picture, 2);
    Host().faults.FailCall("REALLockPictureDescription");
    EXPECT_TRUE(Both(picture, 2, 2));
    EXPECT_EQ(Bytes(picture), down);
    Host().faults.Clear();

    // The other way round.
    const std::vector<uint8_t> right = MovedRight(picture, 2);
    Host().faults.FailCall("REALLockPictureDescription", 2);
    EXPECT_FALSE(Both(picture, 2, 2));
    EXPECT_EQ(Bytes(picture), right);
    Host().faults.Clear();
  }
}

}  // namespace
}  // namespace scrolling
