// Scaling, smoothing and outlines of waveforms.
#include <gtest/gtest.h>

#include "tests/render/samples_fixture.h"

namespace waveform {
namespace {

TEST_F(Samples, FewerThanColumnsLeaveColumnsEmpty) {
  Start();
  Waveform wave;
  wave.width = 9;
  wave.height = 21;
  wave.sampleCount = 2;
  wave.bits = 7;
  const PictureRef picture = Render(Block{127, 127}, wave);
  const Rgb bar{0x27, 0x4C, 0x5A};
  for (int32_t x = 0; x < 9; ++x) {
    // trunc(x / 9 * 2) moves on after columns 4 and 8.
    EXPECT_EQ(At(picture, x, 20) == bar, x == 4 || x == 8) << x;
    EXPECT_EQ(At(picture, x, 10), bar);
    EXPECT_FALSE(At(picture, x, 9) == bar);
  }
}

TEST_F(Samples, ScaledByThemselvesFillHalfTheHeightEachWay) {
  Start();
  Waveform wave;
  wave.bits = 15;
  wave.width = 2;
  wave.height = 41;
  wave.autoScale = true;
  // The loudest column reaches half of 41 rows from the centre, the other a tenth of that.
  const PictureRef picture = Render(BlockOf<int16_t>({300, -30}), wave);
  const Rgb bar{0x27, 0x4C, 0x5A};
  for (int32_t y = 0; y < 41; ++y) {
    EXPECT_EQ(At(picture, 0, y) == bar, y >= 20 && y <= 40) << y;
    EXPECT_EQ(At(picture, 1, y) == bar, y >= 17 && y <= 20) << y;
  }
}

TEST_F(Samples, OfSilenceScaledByThemselvesAreEmptyColumns) {
  Start();
  for (const int32_t bits : kAllBits) {
    Waveform wave;
    wave.bits = bits;
    wave.width = 3;
    wave.height = 10;
    wave.sampleCount = 4;
    wave.autoScale = true;
    Block silence(32, bits == 8 ? 128 : 0);
    if (bits == 16) {
      for (size_t i = 1; i < silence.size(); i += 2) silence[i] = 128;
    }
    EXPECT_TRUE(IsNewPicture(Render(silence, wave), 3, 10, false, [](int32_t, int32_t y) {
      return y == 5 ? Rgb{0x27, 0x4C, 0x5A} : Rgb{0x88, 0xB5, 0xC4};
    }));
  }
}

TEST_F(Samples, SmoothedByOneOrByLessThanNothingStayAsTheyAre) {
  Random random(713);
  Start();
  Waveform plain;
  plain.width = 50;
  plain.height = 60;
  plain.sampleCount = 700;
  plain.smooth = -2;
  const Block bytes = RandomSamples(8, 700, random, false);
  const std::vector<uint8_t> expected = Bytes(Render(bytes, plain));
  for (const int32_t smooth : {1, -1, -3, kLeast}) {
    Waveform wave = plain;
    wave.smooth = smooth;
    EXPECT_TRUE(Bytes(Render(bytes, wave)) == expected) << smooth;
  }
  Waveform wave = plain;
  wave.smooth = 3;
  EXPECT_FALSE(Bytes(Render(bytes, wave)) == expected);
}

// Columns of 0.5, 0, 0 and 1 become 0.5, 0.25, 0.125 and 0.5625 with 3, which halves; with 0 each
// is twice itself less the one before: 0.5, -0.5, 0.5, 1.5.
TEST_F(Samples, SmoothedTakeHalfOfTheColumnBeforeOrOvershoot) {
  Start();
  Waveform wave;
  wave.bits = -32;
  wave.width = 4;
  wave.height = 80;
  wave.sampleCount = 4;
  const Block bytes = BlockOf<float>({0.25F, 0, 0, 0.5F});
  const Rgb bar{0x27, 0x4C, 0x5A};
  const auto expectEnds = [&](const std::vector<std::pair<int32_t, int32_t>>& ends) {
    const PictureRef picture = Render(bytes, wave);
    for (int32_t x = 0; x < 4; ++x) {
      const auto [first, last] = ends[static_cast<size_t>(x)];
      for (int32_t y = 0; y < 80; ++y) {
        EXPECT_EQ(At(picture, x, y) == bar, y >= first && y <= last) << x << " " << y;
      }
    }
  };
  wave.smooth = 3;
  expectEnds({{40, 79}, {40, 60}, {40, 50}, {40, 79}});
  wave.smooth = 0;
  expectEnds({{40, 79}, {0, 40}, {40, 79}, {40, 79}});
}

// The line falls two rows in one column: the pixels beside it are the background with green and
// blue exchanged, mixed half and half with the outline.
TEST_F(Samples, OutlinesExchangeGreenAndBlueBesideTheLine) {
  Start();
  Waveform wave;
  wave.bits = -64;
  wave.width = 3;
  wave.height = 9;
  wave.sampleCount = 3;
  wave.outlineWidth = 1;
  wave.backColour = 0x0A64C8;
  wave.foreColour = 0x0A64C8;
  wave.outlineColour = 0x102030;
  // Rows 4, 4 and 6.
  const PictureRef picture = Render(BlockOf<double>({0, 0, 2.0 / 18 + 0.001}), wave);
  EXPECT_EQ(At(picture, 0, 4), (Rgb{0x10, 0x20, 0x30}));
  EXPECT_EQ(At(picture, 2, 6), (Rgb{0x10, 0x20, 0x30}));
  // Weights 128 on the left and 127 on the right, of (10, 100, 200) and (16, 32, 48).
  EXPECT_EQ(At(picture, 1, 5), (Rgb{(10 * 128 + 16 * 127) / 255, (200 * 128 + 32 * 127) / 255,
                                    (100 * 128 + 48 * 127) / 255}));
  EXPECT_EQ(At(picture, 2, 5), (Rgb{(10 * 127 + 16 * 128) / 255, (200 * 127 + 32 * 128) / 255,
                                    (100 * 127 + 48 * 128) / 255}));
  EXPECT_EQ(At(picture, 0, 5), (Rgb{0x0A, 0x64, 0xC8}));
}

TEST_F(Samples, OutlineTallPicturesWithLinesOfSixteenBits) {
  Start();
  Waveform wave;
  wave.bits = 7;
  wave.width = 2;
  wave.height = 26300;  // 127 reaches row 65750, which is 214 in 16 bits
  wave.sampleCount = 2;
  wave.outlineWidth = 1;
  for (const Block& bytes : {Block{127, 64}, Block{0x80, 127}}) ExpectWaveform(bytes, wave);
}

}  // namespace
}  // namespace waveform
