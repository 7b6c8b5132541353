// Pictures of 2.4 GiB: what stands beyond the first two is read and written where it belongs.
#include <array>
#include <cstring>
#include <vector>

#include "tests/large/sparse.h"

namespace large {
namespace {

constexpr int32_t kWidth = 32767, kHeight = 20000;
constexpr int64_t kRowBytes = int64_t{kWidth} * 4;
// The first row that begins behind 2 GiB.
constexpr int32_t kFarRow = 16385;
static_assert(kFarRow * kRowBytes > INT32_MAX && (kFarRow - 1) * kRowBytes <= INT32_MAX);

using Result = host::Ref<host::Picture>;

class BeyondTwoGib : public SparseTest {
 protected:
  // A few colours on either side of the border, and the last pixel of all.
  struct Mark {
    int32_t x, y;
    Rgb colour;
  };
  static constexpr std::array<Mark, 5> kMarks = {{{0, 0, {1, 2, 3}},
                                                  {5, kFarRow - 1, {9, 8, 7}},
                                                  {32766, kFarRow, {200, 100, 50}},
                                                  {16000, 18000, {4, 4, 5}},
                                                  {32766, 19999, {255, 254, 253}}}};
  void PutMarks() {
    for (const Mark& mark : kMarks) pixels.Put(mark.x, mark.y, mark.colour);
  }

  SparsePixels pixels{kWidth, kHeight, kRowBytes};
  PictureRef picture = Show(pixels);

  void TearDown() override {
    picture = nullptr;
    SparseTest::TearDown();
  }
};

TEST_F(BeyondTwoGib, Invert) {
  PutMarks();
  const Result inverted = Call<Result>("InvertKRT", picture);
  ASSERT_TRUE(inverted);
  ASSERT_EQ(inverted->Width(), kWidth);
  ASSERT_EQ(inverted->Height(), kHeight);
  for (const Mark& mark : kMarks) {
    const Rgb expected{255 - mark.colour.red, 255 - mark.colour.green, 255 - mark.colour.blue};
    EXPECT_EQ(support::At(inverted, mark.x, mark.y), expected) << mark.x << ", " << mark.y;
    support::Put(inverted, mark.x, mark.y, {255, 255, 255});
  }
  // Every other pixel was black.
  const std::vector<uint8_t> white(static_cast<size_t>(kRowBytes), 255);
  for (int32_t y = 0; y < kHeight; ++y) {
    ASSERT_EQ(std::memcmp(inverted->Row(y), white.data(), white.size()), 0) << "row " << y;
  }
}

TEST_F(BeyondTwoGib, InvertOfARectangle) {
  PutMarks();
  const Result inverted = Call<Result>("InvertKRT", picture, 32766, kFarRow, 1, 1);
  ASSERT_TRUE(inverted);
  EXPECT_EQ(support::At(inverted, 32766, kFarRow), (Rgb{55, 155, 205}));
}

TEST_F(BeyondTwoGib, Counting) {
  PutMarks();
  constexpr int32_t kPixels = kWidth * kHeight;  // 655 340 000
  EXPECT_EQ(Call<int32_t>("CountColorKRT", picture, 0x000000U), kPixels - 5);
  EXPECT_EQ(Call<int32_t>("CountColorKRT", picture, 0xFFFEFDU), 1);
  EXPECT_EQ(Call<int32_t>("CountColorKRT", picture, 0xC86432U), 1);

  const auto red = Host().NewMemoryBlock(1024), green = Host().NewMemoryBlock(1024),
             blue = Host().NewMemoryBlock(1024);
  REALmemoryBlock blocks[] = {red.Handle(), green.Handle(), blue.Handle()};
  int32_t count = 0;
  Call("CountColorsKRT", picture, &blocks[0], &blocks[1], &blocks[2], &count);
  EXPECT_EQ(count, kPixels);
  const auto counter = [](const host::Ref<host::MemoryBlock>& block, size_t value) {
    uint32_t number = 0;
    std::memcpy(&number, block->Bytes().data() + 4 * value, 4);
    return number;
  };
  EXPECT_EQ(counter(red, 0), static_cast<uint32_t>(kPixels - 5));
  EXPECT_EQ(counter(red, 200), 1U);
  EXPECT_EQ(counter(green, 254), 1U);
  EXPECT_EQ(counter(green, 4), 1U);
  EXPECT_EQ(counter(blue, 253), 1U);
}

TEST_F(BeyondTwoGib, Uniformity) {
  EXPECT_TRUE(Call<bool>("isBlackKRT", picture));
  EXPECT_TRUE(Call<bool>("isGrayKRT", picture, 0));
  pixels.Put(32766, 19999, {255, 255, 255});
  EXPECT_FALSE(Call<bool>("isBlackKRT", picture));
  EXPECT_TRUE(Call<bool>("isGrayKRT", picture, 0));
  EXPECT_TRUE(Call<bool>("isWhiteKRT", picture, 32766, 19999, 1, 1));
  EXPECT_FALSE(Call<bool>("isWhiteKRT", picture, 32766, 19998, 1, 2));
  pixels.Put(1, 19998, {0, 0, 9});
  EXPECT_FALSE(Call<bool>("isGrayKRT", picture, 8));
  EXPECT_TRUE(Call<bool>("isGrayKRT", picture, 9));
}

TEST_F(BeyondTwoGib, HorizontalScroll) {
  PutMarks();
  EXPECT_TRUE(Call<bool>("ScrollHorizontalKRT", picture, 3, true, false));
  for (const Mark& mark : kMarks) {
    const int32_t x = (mark.x + 3) % kWidth;
    EXPECT_EQ(pixels.Get(x, mark.y), mark.colour) << mark.x << ", " << mark.y;
    pixels.Put(x, mark.y, {});
  }
  for (int32_t y = 0; y < kHeight; ++y) ASSERT_TRUE(pixels.RowIsZero(y)) << "row " << y;
}

// As many rows as are saved, or all of them, must fit 31 bits.
TEST_F(BeyondTwoGib, VerticalScrollRefusesWhatDoesNotFit) {
  PutMarks();
  EXPECT_FALSE(Call<bool>("ScrollVerticalKRT", picture, 1, true, false));
  EXPECT_FALSE(Call<bool>("ScrollVerticalKRT", picture, -1, true, false));
  EXPECT_FALSE(Call<bool>("ScrollKRT", picture, 0, 3000, true, false));
  for (const Mark& mark : kMarks) EXPECT_EQ(pixels.Get(mark.x, mark.y), mark.colour);
  // 20000 - 3616 rows have 2147418112 bytes, one more has 2147549180.
  EXPECT_FALSE(Call<bool>("ScrollVerticalKRT", picture, 3615, true, false));
  EXPECT_TRUE(Call<bool>("ScrollVerticalKRT", picture, 3616, true, false));
  for (const Mark& mark : kMarks) {
    EXPECT_EQ(pixels.Get(mark.x, (mark.y + 3616) % kHeight), mark.colour) << mark.y;
  }
}

TEST_F(BeyondTwoGib, Search) {
  pixels.Put(32765, 19998, {10, 20, 30});
  pixels.Put(32766, 19998, {11, 21, 31});
  pixels.Put(32766, 19999, {12, 22, 32});
  const PictureRef needle = Host().NewPicture(2, 2);
  support::Put(needle, 0, 0, {10, 20, 30});
  support::Put(needle, 1, 0, {11, 21, 31});
  support::Put(needle, 0, 1, {0, 0, 0});
  support::Put(needle, 1, 1, {12, 22, 32});
  int32_t x = 0, y = 0;
  EXPECT_TRUE(Call<bool>("FindPictureKRT", picture, needle, &x, &y));
  EXPECT_EQ(x, 32765);
  EXPECT_EQ(y, 19998);
}

TEST_F(BeyondTwoGib, MaskGrowth) {
  // An L beyond the border, whose rectangle is 3 x 4, and the last pixel.
  for (int32_t y = 17000; y < 17004; ++y) pixels.Put(30000, y, {1, 0, 0});
  for (int32_t x = 30000; x < 30003; ++x) pixels.Put(x, 17003, {1, 0, 0});
  pixels.Put(32766, 19999, {0, 0, 1});
  const Result mask = Call<Result>("ExtractColorRectangleMaskKRT", picture);
  ASSERT_TRUE(mask);
  for (int32_t y = 17000; y < 17004; ++y) {
    for (int32_t x = 30000; x < 30003; ++x) {
      EXPECT_EQ(support::At(mask, x, y), (Rgb{0, 0, 0})) << x << ", " << y;
      support::Put(mask, x, y, {255, 255, 255});
    }
  }
  EXPECT_EQ(support::At(mask, 32766, 19999), (Rgb{0, 0, 0}));
  support::Put(mask, 32766, 19999, {255, 255, 255});
  const std::vector<uint8_t> white(static_cast<size_t>(kRowBytes), 255);
  for (int32_t y = 0; y < kHeight; ++y) {
    ASSERT_EQ(std::memcmp(mask->Row(y), white.data(), white.size()), 0) << "row " << y;
  }
}

TEST_F(BeyondTwoGib, BinaryString) {
  PutMarks();
  const auto string = CallGlobal<host::Ref<host::String>>("PicturetoBinaryStringKRT", picture);
  ASSERT_TRUE(string);
  const std::string& bytes = string->Bytes();
  ASSERT_EQ(bytes.size(), 40 + size_t{3} * kWidth * kHeight);
  for (const Mark& mark : kMarks) {
    const size_t place = 40 + 3 * (static_cast<size_t>(mark.y) * kWidth + size_t(mark.x));
    EXPECT_EQ(static_cast<uint8_t>(bytes[place]), mark.colour.red) << mark.y;
    EXPECT_EQ(static_cast<uint8_t>(bytes[place + 1]), mark.colour.green) << mark.y;
    EXPECT_EQ(static_cast<uint8_t>(bytes[place + 2]), mark.colour.blue) << mark.y;
  }
}

// 40 bytes and three for each pixel: 2147385385 for 21845 rows, one row more has 2147483686, which
// is beyond 31 bits.
TEST_F(SparseTest, ABinaryStringBeyond31BitsIsRefused) {
  SparsePixels tall(kWidth, 21846, kRowBytes);
  EXPECT_FALSE(CallGlobal<host::Ref<host::String>>("PicturetoBinaryStringKRT", Show(tall)));
}

}  // namespace
}  // namespace large
