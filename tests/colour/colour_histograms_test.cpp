#include <array>
#include <cstring>
#include <utility>
#include <vector>

#include "tests/support/fixture.h"

namespace {

using host::PictureLayout;
using support::LayoutPair;
using support::PictureRef;
using support::Random;
using support::Rgb;
using BlockRef = host::Ref<host::MemoryBlock>;

constexpr std::pair<int32_t, int32_t> kHistogramSizes[] = {
    {1, 1}, {2, 3}, {3, 1}, {4, 2}, {5, 4}, {1, 9}, {17, 3}, {66, 2}, {131, 3}};
constexpr size_t kHistogramBytes = 1024;

using Counters = std::array<uint32_t, 256>;

Counters CountersOf(const BlockRef& block) {
  Counters counters{};
  std::memcpy(counters.data(), block->Bytes().data(), kHistogramBytes);
  return counters;
}

uint64_t Sum(const Counters& counters) {
  uint64_t sum = 0;
  for (const uint32_t counter : counters) sum += counter;
  return sum;
}

std::vector<uint8_t> Content(const BlockRef& block) {
  const auto bytes = block->Bytes();
  return {bytes.begin(), bytes.end()};
}

class ColourHistograms : public support::PluginTest {
 protected:
  // In declared order: red, blue, green. Blocks that were nil are the caller's afterwards.
  int32_t CountColours(const PictureRef& picture, BlockRef& first, BlockRef& second,
                       BlockRef& third) {
    BlockRef* const blocks[] = {&first, &second, &third};
    REALmemoryBlock handles[] = {first.Handle(), second.Handle(), third.Handle()};
    int32_t count = 424242;
    CallStoring("CountColorsKRT", picture, &handles[0], &handles[1], &handles[2], &count);
    for (int i = 0; i < 3; ++i) {
      if (*blocks[i]) {
        EXPECT_EQ(blocks[i]->Handle(), handles[i]) << "a block of the caller's was exchanged";
      } else {
        *blocks[i] = host::AdoptHandle<host::MemoryBlock>(handles[i]);
      }
    }
    return count;
  }

  BlockRef ZeroedBlock(size_t size = kHistogramBytes) { return Host().NewMemoryBlock(size); }
};

TEST_F(ColourHistograms, BlocksTakeRedGreenAndBlueByPosition) {
  const PictureRef picture = NewPictureOf(9, 5, {0, 0, 255});
  BlockRef red = ZeroedBlock();
  BlockRef declaredBlue = ZeroedBlock();
  BlockRef declaredGreen = ZeroedBlock();
  EXPECT_EQ(CountColours(picture, red, declaredBlue, declaredGreen), 45);
  EXPECT_EQ(CountersOf(red)[0], 45U);
  EXPECT_EQ(CountersOf(declaredBlue)[0], 45U);
  EXPECT_EQ(CountersOf(declaredGreen)[255], 45U);
  EXPECT_EQ(Sum(CountersOf(red)), 45U);
  EXPECT_EQ(Sum(CountersOf(declaredBlue)), 45U);
  EXPECT_EQ(Sum(CountersOf(declaredGreen)), 45U);
}

TEST_F(ColourHistograms, SecondCallAddsToTheBlocksAndNotToTheCount) {
  Random random(402);
  const PictureRef picture = Host().NewPicture(13, 7);
  support::FillWithNoise(picture, random);
  BlockRef blocks[] = {ZeroedBlock(), ZeroedBlock(), ZeroedBlock()};
  EXPECT_EQ(CountColours(picture, blocks[0], blocks[1], blocks[2]), 91);
  std::vector<Counters> once;
  for (const BlockRef& block : blocks) once.push_back(CountersOf(block));
  EXPECT_EQ(CountColours(picture, blocks[0], blocks[1], blocks[2]), 91);
  for (size_t i = 0; i < 3; ++i) {
    const Counters twice = CountersOf(blocks[i]);
    for (size_t value = 0; value < 256; ++value) {
      EXPECT_EQ(twice[value], 2 * once[i][value]) << "block " << i << ", counter " << value;
    }
  }
}

TEST_F(ColourHistograms, HistogramsAreThePlainOnesInEveryLayout) {
  Random random(403);
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    Start(pair.settings);
    for (const auto& [width, height] : kHistogramSizes) {
      const PictureRef picture = Host().NewPicture(width, height, pair.source);
      support::FillWithNoise(picture, random, random.OneIn(2) ? 3 : 256);
      const std::vector<uint8_t> before = support::Bytes(picture);

      // Blocks may be longer than needed and hold anything; the rest stays.
      BlockRef blocks[3];
      std::vector<uint8_t> contents[3];
      Counters expected[3];
      for (int i = 0; i < 3; ++i) {
        blocks[i] = Host().NewMemoryBlock(kHistogramBytes + static_cast<size_t>(i) * 3);
        for (uint8_t& byte : blocks[i]->Bytes()) byte = random.Byte();
        contents[i] = Content(blocks[i]);
        expected[i] = CountersOf(blocks[i]);
      }
      for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
          const Rgb p = support::At(picture, x, y);
          expected[0][static_cast<size_t>(p.red)] += 1;
          expected[1][static_cast<size_t>(p.green)] += 1;
          expected[2][static_cast<size_t>(p.blue)] += 1;
        }
      }

      EXPECT_EQ(CountColours(picture, blocks[0], blocks[1], blocks[2]), width * height)
          << pair.name << ", " << width << " x " << height;
      for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(CountersOf(blocks[i]), expected[i])
            << pair.name << ", " << width << " x " << height << ", block " << i << ", seed "
            << support::Seed();
        std::memcpy(contents[i].data(), expected[i].data(), kHistogramBytes);
        EXPECT_TRUE(Content(blocks[i]) == contents[i]) << "block " << i << " beyond its counters";
      }
      EXPECT_TRUE(support::Bytes(picture) == before) << pair.name << ": the picture was changed";
    }
  }
}

// Large pictures are counted in several histograms, which are added up.
TEST_F(ColourHistograms, LargePicturesAreCountedAsSmallOnes) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    Random random(77);
    const PictureRef picture = Host().NewPicture(67, 63, pair.source);
    support::FillWithNoise(picture, random);
    Counters expected[3] = {};
    BlockRef blocks[3] = {ZeroedBlock(), ZeroedBlock(), ZeroedBlock()};
    for (auto& counters : expected) counters[5] = 1000;
    for (const BlockRef& block : blocks) {
      std::memcpy(block->Bytes().data() + 4 * 5, &expected[0][5], 4);
    }
    for (int32_t y = 0; y < 63; ++y) {
      for (int32_t x = 0; x < 67; ++x) {
        const Rgb colour = support::At(picture, x, y);
        ++expected[0][static_cast<size_t>(colour.red)];
        ++expected[1][static_cast<size_t>(colour.green)];
        ++expected[2][static_cast<size_t>(colour.blue)];
      }
    }
    EXPECT_EQ(CountColours(picture, blocks[0], blocks[1], blocks[2]), 67 * 63);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(CountersOf(blocks[i]), expected[i]) << "block " << i;
    // One block for all three.
    BlockRef one = ZeroedBlock(), again = one, onceMore = one;
    EXPECT_EQ(CountColours(picture, one, again, onceMore), 67 * 63);
    EXPECT_EQ(Sum(CountersOf(one)), 3 * 67 * 63U);
  }
}

TEST_F(ColourHistograms, CounterWrapsAfterItsLargestValue) {
  BlockRef red = ZeroedBlock();
  BlockRef second = ZeroedBlock();
  BlockRef third = ZeroedBlock();
  for (uint8_t& byte : red->Bytes()) byte = 255;
  EXPECT_EQ(CountColours(NewPictureOf(2, 1, {7, 8, 9}), red, second, third), 2);
  EXPECT_EQ(CountersOf(red)[7], 1U);
  EXPECT_EQ(CountersOf(red)[6], 0xFFFFFFFFU);
  EXPECT_EQ(CountersOf(red)[8], 0xFFFFFFFFU);
}

TEST_F(ColourHistograms, OneBlockForAllThreeChannelsTakesAllThree) {
  BlockRef block = ZeroedBlock();
  BlockRef again = block;
  BlockRef onceMore = block;
  EXPECT_EQ(CountColours(NewPictureOf(6, 2, {4, 4, 200}), block, again, onceMore), 12);
  EXPECT_EQ(CountersOf(block)[4], 24U);
  EXPECT_EQ(CountersOf(block)[200], 12U);
}

TEST_F(ColourHistograms, NilBlocksAreMadeForTheCaller) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    Start(pair.settings);
    const PictureRef picture = Host().NewPicture(5, 3, pair.source);
    support::Fill(picture, {1, 2, 3}, 77);
    BlockRef red;
    BlockRef second;
    BlockRef third;
    EXPECT_EQ(CountColours(picture, red, second, third), 15) << pair.name;
    ASSERT_TRUE(red && second && third) << pair.name;
    EXPECT_EQ(red->Bytes().size(), kHistogramBytes);
    EXPECT_EQ(second->Bytes().size(), kHistogramBytes);
    EXPECT_EQ(third->Bytes().size(), kHistogramBytes);
    EXPECT_EQ(CountersOf(red)[1], 15U);
    EXPECT_EQ(CountersOf(second)[2], 15U);
    EXPECT_EQ(CountersOf(third)[3], 15U);
    EXPECT_EQ(Sum(CountersOf(red)) + Sum(CountersOf(second)) + Sum(CountersOf(third)), 45U);
  }
}

TEST_F(ColourHistograms, BlocksMadeStayWhenThePictureCannotBeOpened) {
  for (const bool nil : {true, false}) {
    Start();
    BlockRef red;
    BlockRef second = ZeroedBlock();
    BlockRef third;
    EXPECT_EQ(CountColours(nil ? PictureRef() : RefusedPicture(), red, second, third), -1);
    ASSERT_TRUE(red && third);
    EXPECT_EQ(red->Bytes().size(), kHistogramBytes);
    EXPECT_EQ(Sum(CountersOf(red)) + Sum(CountersOf(second)) + Sum(CountersOf(third)), 0U);
  }
}

TEST_F(ColourHistograms, BlockThatCannotBeMadeEndsTheCallBeforeThePictureIsOpened) {
  for (int failing = 1; failing <= 3; ++failing) {
    Start();
    const PictureRef picture = NewPictureOf(5, 3, {1, 2, 3});
    Host().faults.FailCall("newMemoryBlock", failing);
    BlockRef blocks[3];
    EXPECT_EQ(CountColours(picture, blocks[0], blocks[1], blocks[2]), -1);
    EXPECT_EQ(Host().faults.Calls("newMemoryBlock"), 3);
    EXPECT_EQ(Host().faults.Calls("REALLockPictureDescription"), 0);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(static_cast<bool>(blocks[i]), i != failing - 1);
  }
}

TEST_F(ColourHistograms, PictureWithoutPixelsLeavesTheHistogramsAndCountsZero) {
  for (const auto& [width, height] : {std::pair{0, 3}, std::pair{4, 0}, std::pair{0, 0}}) {
    const PictureRef picture = PictureThatOpensAs(width, height);
    BlockRef blocks[] = {ZeroedBlock(), ZeroedBlock(), ZeroedBlock()};
    blocks[1]->Bytes()[17] = 99;
    const std::vector<uint8_t> before = Content(blocks[1]);
    EXPECT_EQ(CountColours(picture, blocks[0], blocks[1], blocks[2]), 0);
    EXPECT_EQ(Sum(CountersOf(blocks[0])), 0U);
    EXPECT_EQ(Content(blocks[1]), before);
    EXPECT_EQ(Sum(CountersOf(blocks[2])), 0U);
  }
}

TEST_F(ColourHistograms, BlockThatIsTooShortOrHasNoBytesKeepsAllThreeFromBeingWritten) {
  for (int which = 0; which < 3; ++which) {
    for (const bool hasBytes : {true, false}) {
      Start();
      const PictureRef picture = NewPictureOf(8, 2, {0, 0, 0});
      BlockRef blocks[3];
      for (int i = 0; i < 3; ++i) blocks[i] = ZeroedBlock();
      blocks[which] = ZeroedBlock(hasBytes ? kHistogramBytes - 1 : kHistogramBytes);
      if (!hasBytes) blocks[which]->HidePointer();
      EXPECT_EQ(CountColours(picture, blocks[0], blocks[1], blocks[2]), -1);
      for (const BlockRef& block : blocks) {
        EXPECT_EQ(Content(block), std::vector<uint8_t>(block->Bytes().size(), 0))
            << "bad block " << which;
      }
    }
  }
}

TEST_F(ColourHistograms, BlockWhoseSizeNobodyKnowsIsTrusted) {
  const PictureRef picture = NewPictureOf(8, 2, {3, 4, 5});
  BlockRef blocks[] = {ZeroedBlock(), ZeroedBlock(), ZeroedBlock()};
  for (const BlockRef& block : blocks) block->HideSize();
  EXPECT_EQ(CountColours(picture, blocks[0], blocks[1], blocks[2]), 16);
  EXPECT_EQ(CountersOf(blocks[2])[5], 16U);
}

TEST_F(ColourHistograms, HostThatCannotTellSizesIsTrusted) {
  StartWithoutPlugin().faults.Hide("memoryBlockGetSize");
  support::LoadPluginUnderTest(Host());
  const PictureRef picture = NewPictureOf(8, 2, {3, 4, 5});
  BlockRef blocks[3];
  EXPECT_EQ(CountColours(picture, blocks[0], blocks[1], blocks[2]), 16);
  EXPECT_EQ(CountersOf(blocks[0])[3], 16U);
}

TEST_F(ColourHistograms, HostWithoutAnEntryThatIsNeededGivesTheValueOfFailure) {
  for (const char* entry : {"memoryBlockGetPtr", "newMemoryBlock", "REALLockPictureDescription"}) {
    StartWithoutPlugin().faults.Hide(entry);
    support::LoadPluginUnderTest(Host());
    const PictureRef picture = NewPictureOf(8, 2, {3, 4, 5});
    BlockRef blocks[3];
    EXPECT_EQ(CountColours(picture, blocks[0], blocks[1], blocks[2]), -1) << entry;
  }
}

}  // namespace
