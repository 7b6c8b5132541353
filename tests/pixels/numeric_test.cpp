#include "pixels/numeric.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
constexpr int32_t kMax = std::numeric_limits<int32_t>::max();

TEST(TruncateToInt32, GoesTowardZero) {
  EXPECT_EQ(TruncateToInt32(0.9), 0);
  EXPECT_EQ(TruncateToInt32(-0.9), 0);
  EXPECT_EQ(TruncateToInt32(5.999), 5);
  EXPECT_EQ(TruncateToInt32(-5.999), -5);
}

TEST(TruncateToInt32, KeepsTheEndsOfItsRange) {
  EXPECT_EQ(TruncateToInt32(2147483647.0), kMax);
  EXPECT_EQ(TruncateToInt32(2147483647.9), kMax);
  EXPECT_EQ(TruncateToInt32(-2147483648.0), kMin);
  EXPECT_EQ(TruncateToInt32(-2147483648.9), kMin);
}

TEST(TruncateToInt32, GivesTheMostNegativeOutsideIt) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double value :
       {2147483648.0, 1e10, 1e300, infinity, -2147483649.0, -1e10, -infinity, std::nan("")}) {
    EXPECT_EQ(TruncateToInt32(value), kMin) << value;
  }
}

TEST(ClampToByte, StopsAtBothEnds) {
  EXPECT_EQ(ClampToByte(kMin), 0);
  EXPECT_EQ(ClampToByte(-1), 0);
  EXPECT_EQ(ClampToByte(0), 0);
  EXPECT_EQ(ClampToByte(255), 255);
  EXPECT_EQ(ClampToByte(256), 255);
  EXPECT_EQ(ClampToByte(kMax), 255);
}

TEST(Wrapping, GoesAroundIn32Bits) {
  EXPECT_EQ(WrappingAdd(kMax, 1), kMin);
  EXPECT_EQ(WrappingAdd(kMin, -1), kMax);
  EXPECT_EQ(WrappingMultiply(65536, 65536), 0);
  EXPECT_EQ(WrappingMultiply(kMax, 2), -2);
  EXPECT_EQ(WrappingMultiply(-3, 7), -21);
}

}  // namespace
