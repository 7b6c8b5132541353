#include "pixels/rectangle.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
constexpr int32_t kMost = std::numeric_limits<int32_t>::max();

void ExpectClipped(RectangleRequest request, int32_t width, int32_t height, Rectangle expected) {
  const Rectangle clipped = ClipRectangle(request, width, height);
  EXPECT_EQ(clipped.left, expected.left);
  EXPECT_EQ(clipped.top, expected.top);
  EXPECT_EQ(clipped.right, expected.right);
  EXPECT_EQ(clipped.bottom, expected.bottom);
}

TEST(Rectangle, ZeroSizeSelectsNothing) {
  EXPECT_TRUE(ClipRectangle({0, 0, 0, 0}, 12, 12).IsEmpty());
  EXPECT_TRUE(ClipRectangle({0, 0, 0, 5}, 12, 12).IsEmpty());
  EXPECT_TRUE(ClipRectangle({0, 0, 5, 0}, 12, 12).IsEmpty());
}

TEST(Rectangle, NegativeSizeMeansThePictures) {
  ExpectClipped({0, 0, -1, -1}, 12, 7, {0, 0, 12, 7});
  ExpectClipped({0, 0, kLeast, -5}, 12, 7, {0, 0, 12, 7});
  ExpectClipped({10, 3, -1, -1}, 12, 7, {10, 3, 12, 7});
  ExpectClipped({-5, 0, -1, -1}, 12, 7, {0, 0, 7, 7});
}

TEST(Rectangle, NegativeStartShortens) {
  ExpectClipped({-5, -5, 10, 10}, 12, 12, {0, 0, 5, 5});
  EXPECT_TRUE(ClipRectangle({-5, 0, 5, 5}, 12, 12).IsEmpty());
}

TEST(Rectangle, StartBeyondThePictureSelectsNothing) {
  EXPECT_TRUE(ClipRectangle({12, 0, 5, 5}, 12, 12).IsEmpty());
  EXPECT_TRUE(ClipRectangle({0, 12, 5, 5}, 12, 12).IsEmpty());
}

TEST(Rectangle, EndsOfTheIntegersDoNotOverflow) {
  ExpectClipped({kMost, kMost, kMost, kMost}, 12, 7, {kMost, kMost, 12, 7});
  ExpectClipped({5, 5, kMost, kMost}, 12, 7, {5, 5, 12, 7});
  EXPECT_TRUE(ClipRectangle({kLeast, kLeast, kMost, kMost}, 12, 7).IsEmpty());
  EXPECT_TRUE(ClipRectangle({kLeast, kLeast, -1, -1}, 12, 7).IsEmpty());
  EXPECT_TRUE(ClipRectangle({kMost, kMost, -1, -1}, 12, 7).IsEmpty());
}

}  // namespace
