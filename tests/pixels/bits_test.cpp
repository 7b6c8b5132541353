// Words of bits and grids of them, beside one bit at a time.
#include "pixels/bits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "pixels/bit_grid.h"
#include "tests/support/random.h"

namespace {

bool Has(uint32_t word, int32_t bit) { return (word >> bit) % 2 == 1; }

TEST(Bits, AColumnHasItsWordAndBit) {
  for (int32_t x = 0; x < 200; ++x) {
    EXPECT_EQ(WordOf(x), x / 32);
    EXPECT_EQ(BitOf(x), x % 32);
  }
  EXPECT_EQ(WordOf(-1), -1);
  EXPECT_EQ(BitOf(-1), 31);
}

TEST(Bits, ARangeHoldsTheBitsFromFirstToLast) {
  for (int32_t first = 0; first < 32; ++first) {
    for (int32_t last = first; last < 32; ++last) {
      const uint32_t range = BitRange(first, last);
      for (int32_t bit = 0; bit < 32; ++bit) {
        EXPECT_EQ(Has(range, bit), first <= bit && bit <= last) << first << " to " << last;
      }
    }
  }
}

TEST(Bits, OnesAreCountedFromBothEnds) {
  support::Random random(1);
  std::vector<uint32_t> words{0, ~0U, 1, 0x80000000, 0x7FFFFFFF, 0xFFFFFFFE};
  for (int i = 0; i < 200; ++i) {
    words.push_back(random.Bits());
    words.push_back(~0U << random.Between(0, 31));
    words.push_back(~0U >> random.Between(0, 31));
  }
  for (const uint32_t word : words) {
    int32_t below = 0;
    while (below < 32 && Has(word, below)) ++below;
    int32_t above = 0;
    while (above < 32 && Has(word, 31 - above)) ++above;
    EXPECT_EQ(OnesBelow(word), below) << word;
    EXPECT_EQ(OnesAbove(word), above) << word;
    int32_t lowest = 0;
    while (lowest < 32 && !Has(word, lowest)) ++lowest;
    int32_t highest = 31;
    while (highest >= 0 && !Has(word, highest)) --highest;
    if (word != 0) {
      EXPECT_EQ(LowestBit(word), lowest) << word;
      EXPECT_EQ(HighestBit(word), highest) << word;
    }
  }
}

TEST(Bits, ARunGoesFromABitToTheGapsAroundIt) {
  support::Random random(3);
  for (int i = 0; i < 2000; ++i) {
    const int32_t bit = random.Between(0, 31);
    uint32_t word = ~0U;
    for (int32_t gaps = random.Between(0, 6); gaps > 0; --gaps) word ^= 1U << random.Between(0, 31);
    word |= 1U << bit;
    uint32_t run = 0;
    for (int32_t at = bit; at < 32 && Has(word, at); ++at) run |= 1U << at;
    for (int32_t at = bit; at >= 0 && Has(word, at); --at) run |= 1U << at;
    EXPECT_EQ(RunAround(word, bit), run) << word << ", bit " << bit;
  }
}

TEST(Bits, BitsAreSetWhereTheTestHoldsAndNoFurtherThanAsked) {
  for (int32_t count = -1; count <= 70; ++count) {
    const uint32_t bits = BitsWhere(count, [](int32_t i) { return i % 3 == 0; });
    for (int32_t bit = 0; bit < 32; ++bit) {
      EXPECT_EQ(Has(bits, bit), bit < count && bit % 3 == 0) << bit << " of " << count;
    }
  }
}

TEST(BitGrid, IsClearWithABorderOfZerosWhateverItsWidth) {
  for (int32_t width = 1; width <= 130; ++width) {
    const BitGrid grid(width, 3);
    ASSERT_TRUE(grid);
    for (int32_t y = 0; y < 3; ++y) {
      EXPECT_FALSE(AnyBit(grid.Row(y), 0, width - 1));
      SetBits(grid.Row(y), 0, width - 1);
    }
    for (int32_t y = 0; y < 3; ++y) {
      EXPECT_FALSE(AnyBit(grid.Row(y), -1, -1)) << width;
      EXPECT_FALSE(AnyBit(grid.Row(y), width, width)) << width;
      EXPECT_TRUE(AnyBit(grid.Row(y), 0, 0));
      EXPECT_TRUE(AnyBit(grid.Row(y), width - 1, width - 1));
    }
    EXPECT_FALSE(AnyBit(grid.Row(-1), 0, width)) << width;
    EXPECT_FALSE(AnyBit(grid.Row(3), 0, width)) << width;
  }
}

TEST(BitGrid, ColumnsAreSetClearedAndFound) {
  support::Random random(2);
  constexpr int32_t kWidth = 150;
  const BitGrid grid(kWidth, 1);
  ASSERT_TRUE(grid);
  std::vector<bool> expected(kWidth);
  for (int i = 0; i < 3000; ++i) {
    const int32_t left = random.Between(0, kWidth - 1);
    const int32_t right = random.Between(left, std::min(kWidth - 1, left + random.Between(0, 99)));
    const bool set = random.OneIn(2);
    if (set) {
      SetBits(grid.Row(0), left, right);
    } else {
      ClearBits(grid.Row(0), left, right);
    }
    std::fill(expected.begin() + left, expected.begin() + right + 1, set);
    for (int32_t x = 0; x < kWidth; ++x) {
      ASSERT_EQ(Has(grid.Row(0)[WordOf(x)], BitOf(x)), expected[static_cast<size_t>(x)]) << x;
    }
    const int32_t from = random.Between(0, kWidth - 1);
    const int32_t to = random.Between(0, kWidth - 1);
    const bool any = from <= to && std::find(expected.begin() + from, expected.begin() + to + 1,
                                             true) != expected.begin() + to + 1;
    ASSERT_EQ(AnyBit(grid.Row(0), from, to), any) << from << " to " << to;
  }
}

}  // namespace
