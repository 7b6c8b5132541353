#include "platforms/macos-i386/division.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "tests/support/random.h"

namespace {

// Every power of two and its neighbours, the ends, and numbers of every length.
std::vector<uint64_t> Operands() {
  std::vector<uint64_t> operands = {0, std::numeric_limits<uint64_t>::max()};
  support::Random random(64);
  for (int bit = 0; bit < 64; ++bit) {
    const uint64_t power = uint64_t{1} << bit;
    const uint64_t any = uint64_t{random.Bits()} << 32 | random.Bits();
    operands.insert(operands.end(), {power - 1, power, power + 1, any >> bit});
  }
  return operands;
}

TEST(Division, DividesAsTheCompilerDoes) {
  for (const uint64_t dividend : Operands()) {
    for (const uint64_t divisor : Operands()) {
      if (divisor == 0) continue;
      const Division result = Divide(dividend, divisor);
      ASSERT_EQ(result.quotient, dividend / divisor) << dividend << " / " << divisor;
      ASSERT_EQ(result.remainder, dividend % divisor) << dividend << " % " << divisor;
    }
  }
}

TEST(Division, OfSignedNumbersGoesTowardZero) {
  for (const uint64_t a : Operands()) {
    for (const uint64_t b : Operands()) {
      const auto dividend = static_cast<int64_t>(a);
      const auto divisor = static_cast<int64_t>(b);
      if (divisor == 0 || (dividend == std::numeric_limits<int64_t>::min() && divisor == -1)) {
        continue;
      }
      ASSERT_EQ(Quotient(dividend, divisor), dividend / divisor) << dividend << " / " << divisor;
      ASSERT_EQ(Remainder(dividend, divisor), dividend % divisor) << dividend << " % " << divisor;
    }
  }
}

TEST(Division, WrapsWhereTheQuotientDoesNotFitAndSurvivesZero) {
  constexpr int64_t kLowest = std::numeric_limits<int64_t>::min();
  EXPECT_EQ(Quotient(kLowest, -1), kLowest);
  EXPECT_EQ(Remainder(kLowest, -1), 0);
  EXPECT_EQ(Divide(7, 0).quotient, 0U);
  EXPECT_EQ(Divide(7, 0).remainder, 7U);
}

}  // namespace
