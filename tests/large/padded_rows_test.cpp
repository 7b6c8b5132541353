// Rows that lie far apart: 2 GiB less four bytes from one to the next, 30 GiB of addresses in all.
#include <cstring>

#include "tests/large/sparse.h"

namespace large {
namespace {

constexpr int32_t kPaddedWidth = 5, kPaddedHeight = 15;

using Result = host::Ref<host::Picture>;

class PaddedRows : public SparseTest {
 protected:
  PaddedRows() {
    for (int32_t y = 0; y < kPaddedHeight; ++y) {
      for (int32_t x = 0; x < kPaddedWidth; ++x) pixels.Put(x, y, ColourAt(x, y));
      // Behind the pixels, where nobody may write.
      std::memset(pixels.At(kPaddedWidth, y), 0x5A, 64);
    }
  }
  static Rgb ColourAt(int32_t x, int32_t y) { return {x + 1, y, 255 - x}; }

  void ExpectPaddingUntouched() {
    for (int32_t y = 0; y < kPaddedHeight; ++y) {
      const uint8_t* padding = pixels.At(kPaddedWidth, y);
      for (int32_t i = 0; i < 64; ++i) ASSERT_EQ(padding[i], 0x5A) << "row " << y;
    }
  }

  SparsePixels pixels{kPaddedWidth, kPaddedHeight, 0x7FFFFFFC};
  PictureRef picture = Show(pixels);

  void TearDown() override {
    picture = nullptr;
    SparseTest::TearDown();
  }
};

TEST_F(PaddedRows, AreReadRowByRow) {
  const Result inverted = Call<Result>("InvertKRT", picture);
  ASSERT_TRUE(inverted);
  for (int32_t y = 0; y < kPaddedHeight; ++y) {
    for (int32_t x = 0; x < kPaddedWidth; ++x) {
      const Rgb colour = ColourAt(x, y);
      EXPECT_EQ(support::At(inverted, x, y),
                (Rgb{255 - colour.red, 255 - colour.green, 255 - colour.blue}));
    }
  }
  EXPECT_EQ(Call<int32_t>("CountColorKRT", picture, 0x010EFFU), 1);  // (0, 14)
  EXPECT_FALSE(Call<bool>("isBlackKRT", picture));
  EXPECT_TRUE(Call<bool>("isGrayKRT", picture, 255));  // there is (1, 0, 255)
  EXPECT_FALSE(Call<bool>("isGrayKRT", picture, 254));
  ExpectPaddingUntouched();
}

TEST_F(PaddedRows, AreFoundInAndMasked) {
  const PictureRef needle = Host().NewPicture(2, 1);
  support::Put(needle, 0, 0, ColourAt(3, 14));
  support::Put(needle, 1, 0, ColourAt(4, 14));
  int32_t x = 0, y = 0;
  EXPECT_TRUE(Call<bool>("FindPictureKRT", picture, needle, &x, &y));
  EXPECT_EQ(x, 3);
  EXPECT_EQ(y, 14);
  // No two channels are ever equal, so everything is coloured.
  const Result mask = Call<Result>("ExtractColorRectangleMaskKRT", picture);
  ASSERT_TRUE(mask);
  for (int32_t row = 0; row < kPaddedHeight; ++row) {
    for (int32_t column = 0; column < kPaddedWidth; ++column) {
      EXPECT_EQ(support::At(mask, column, row), (Rgb{0, 0, 0}));
    }
  }
}

TEST_F(PaddedRows, AreScrolledAcrossButNotDown) {
  EXPECT_TRUE(Call<bool>("ScrollHorizontalKRT", picture, 2, true, false));
  EXPECT_FALSE(Call<bool>("ScrollVerticalKRT", picture, 1, true, false));
  for (int32_t y = 0; y < kPaddedHeight; ++y) {
    for (int32_t x = 0; x < kPaddedWidth; ++x) {
      EXPECT_EQ(pixels.Get((x + 2) % kPaddedWidth, y), ColourAt(x, y)) << x << ", " << y;
    }
  }
  ExpectPaddingUntouched();
}

}  // namespace
}  // namespace large
