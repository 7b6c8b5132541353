// RenderSamplesKRT beside its description, and what its defaults stand for.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/render/samples_fixture.h"

namespace waveform {
namespace {

TEST_F(Samples, AreDrawnAsDescribedInEveryLayout) {
  Random random(710);
  for (const host::Settings& settings : EveryOutput()) {
    Start(settings);
    for (const int32_t bits : kAllBits) {
      for (const int32_t outline : {-1, 0, 1, 2, 5}) {
        Waveform wave;
        wave.bits = bits;
        wave.outlineWidth = outline;
        wave.width = random.Between(1, 70);
        wave.height = random.Between(1, 40);
        wave.sampleCount = random.Between(1, 500);
        wave.smooth = random.Between(-2, 4);
        wave.autoScale = random.OneIn(2);
        ExpectWaveform(RandomSamples(bits, wave.sampleCount, random, false), wave);
      }
    }
  }
}

TEST_F(Samples, AreDrawnAsDescribedForAnyArguments) {
  Random random(711);
  Start();
  for (int i = 0; i < 150; ++i) {
    Waveform wave;
    wave.bits = kAllBits[random.Between(0, 5)];
    wave.outlineWidth = random.Between(0, 3);
    if (random.OneIn(20)) wave.outlineWidth = random.OneIn(2) ? kMost : kLeast;
    wave.width = random.Between(1, random.OneIn(8) ? 150 : 20);
    wave.height = random.Between(1, random.OneIn(8) ? 150 : 20);
    wave.sampleCount = random.Between(1, random.OneIn(2) ? 30 : 3000);
    wave.smooth = random.Between(-3, 12);
    if (random.OneIn(10)) wave.smooth = random.OneIn(2) ? kMost : kLeast;
    wave.autoScale = random.OneIn(2);
    wave.backColour = random.Bits();
    wave.foreColour = random.Bits();
    wave.outlineColour = random.Bits();
    const int32_t held = wave.sampleCount + random.Between(0, 3);
    ExpectWaveform(RandomSamples(wave.bits, held, random, true), wave);
  }
}

TEST_F(Samples, OfSilenceAreALineInTheMiddle) {
  Start();
  for (const auto& [height, middle] : {std::pair{9, 4}, {8, 4}, {1, 0}}) {
    for (const int32_t outline : {0, 1}) {
      Waveform wave;
      wave.bits = 15;
      wave.width = 6;
      wave.height = height;
      wave.outlineWidth = outline;
      const PictureRef picture = Render(Block(60, 0), wave);
      const Rgb line = outline == 1 ? Rgb{0x20, 0x3F, 0x4E} : Rgb{0x27, 0x4C, 0x5A};
      EXPECT_TRUE(IsNewPicture(picture, 6, height, false, [=, m = middle](int32_t, int32_t y) {
        return y == m ? line : Rgb{0x88, 0xB5, 0xC4};
      }));
    }
  }
}

TEST_F(Samples, OfUnsignedBytesAreSilentAt128AndLoudAboveTheCentreWhenSigned) {
  Start();
  const Block bytes(40, 128);
  Waveform wave;
  wave.width = 4;
  wave.height = 20;
  const auto barsAt = [&](int32_t first, int32_t last) {
    return [=](int32_t, int32_t y) {
      return y >= first && y <= last ? Rgb{0x27, 0x4C, 0x5A} : Rgb{0x88, 0xB5, 0xC4};
    };
  };
  wave.bits = 8;
  EXPECT_TRUE(IsNewPicture(Render(bytes, wave), 4, 20, false, barsAt(10, 10)));
  wave.bits = 7;  // -128, twice that in full: beyond the top
  EXPECT_TRUE(IsNewPicture(Render(bytes, wave), 4, 20, false, barsAt(0, 10)));
}

// Two samples of 63.5 / 2 in full scale reach a quarter of the height, below the centre.
TEST_F(Samples, ThatArePositiveReachBelowTheCentreByTwiceTheirMean) {
  Start();
  Waveform wave;
  wave.bits = -64;
  wave.width = 2;
  wave.height = 40;
  wave.sampleCount = 4;
  const PictureRef picture = Render(BlockOf<double>({0.25, 0.0, -0.25, 0.125}), wave);
  const Rgb bar{0x27, 0x4C, 0x5A};
  for (int32_t y = 0; y < 40; ++y) {
    // 0.25 in two samples: 0.25 of 40 rows. -0.25 and 0.125 in two: -10 and 5 rows.
    EXPECT_EQ(At(picture, 0, y) == bar, y >= 20 && y <= 30) << y;
    EXPECT_EQ(At(picture, 1, y) == bar, y >= 10 && y <= 25) << y;
  }
}

// The greatest sample among seven silent ones makes 32767 / 4, which is a quarter of the full
// scale.
TEST_F(Samples, OfSixteenBitsAreScaledBy32767) {
  Start();
  Waveform wave;
  wave.width = 1;
  wave.height = 40;
  wave.sampleCount = 8;
  const Rgb bar{0x27, 0x4C, 0x5A};
  for (const int32_t bits : {15, 16}) {
    wave.bits = bits;
    const PictureRef picture =
        bits == 15
            ? Render(BlockOf<int16_t>({32767, 0, 0, 0, 0, 0, 0, 0}), wave)
            : Render(BlockOf<uint16_t>({65535, 32768, 32768, 32768, 32768, 32768, 32768, 32768}),
                     wave);
    for (int32_t y = 0; y < 40; ++y) {
      EXPECT_EQ(At(picture, 0, y) == bar, y >= 20 && y <= 30) << bits << " bits, row " << y;
    }
  }
}

// An eighth of the samples of a column is loud, at its beginning, in its middle or at its end:
// twice the mean is a quarter of the full scale.
TEST_F(Samples, OfALongColumnAllCount) {
  Start();
  Waveform wave;
  wave.bits = 8;
  wave.width = 1;
  wave.height = 40;
  wave.sampleCount = 160000;
  const Rgb bar{0x27, 0x4C, 0x5A};
  for (const ptrdiff_t first : {0, 60000, 120000}) {
    Block samples(160000, 128);
    std::fill_n(samples.begin() + first, 20000, uint8_t{1});
    const PictureRef picture = Render(samples, wave);
    for (int32_t y = 0; y < 40; ++y) {
      EXPECT_EQ(At(picture, 0, y) == bar, y >= 10 && y <= 20)
          << "from sample " << first << ", row " << y;
    }
  }
}

TEST_F(Samples, WithoutAHeightAre500Rows) {
  Start();
  for (const int32_t height : {0, -1, kLeast}) {
    Waveform wave;
    wave.width = 3;
    wave.height = 500;
    wave.sampleCount = 7;
    Waveform asked = wave;
    asked.height = height;
    ExpectWaveform({1, 2, 3, 250, 251, 252, 253}, wave, asked);
  }
}

TEST_F(Samples, WithoutAWidthAreAColumnEach) {
  Start();
  for (const int32_t width : {0, -1, kLeast}) {
    Waveform wave;
    wave.width = 5;
    wave.height = 30;
    wave.sampleCount = 5;
    Waveform asked = wave;
    asked.width = width;
    ExpectWaveform({1, 200, 3, 250, 251, 252, 253}, wave, asked);
  }
}

TEST_F(Samples, WithoutACountAreTheWholeBlock) {
  Random random(712);
  Start();
  for (const int32_t bits : {7, 8, 15, 16}) {
    for (const int32_t count : {0, -1, kLeast}) {
      Waveform wave;
      wave.bits = bits;
      wave.width = 4;
      wave.height = 30;
      wave.sampleCount = 21 / BytesOfSample(bits);
      Waveform asked = wave;
      asked.sampleCount = count;
      const Block bytes = RandomSamples(7, 21, random, false);
      ExpectWaveform(bytes, wave, asked);
      wave.width = wave.sampleCount;
      asked.width = 0;
      ExpectWaveform(bytes, wave, asked);
    }
  }
}

// The number of bits is negative, and so is the count that it is divided by.
TEST_F(Samples, OfFloatingPointWithoutACountAreEmptyColumns) {
  Start();
  const Block loud(80, 0x3F);
  for (const int32_t bits : {-32, -64}) {
    Waveform wave;
    wave.bits = bits;
    wave.width = 4;
    wave.height = 30;
    wave.sampleCount = 1;
    Waveform asked = wave;
    asked.sampleCount = 0;
    const PictureRef picture = Render(loud, asked);
    EXPECT_TRUE(IsNewPicture(picture, 4, 30, false, [](int32_t, int32_t y) {
      return y == 15 ? Rgb{0x27, 0x4C, 0x5A} : Rgb{0x88, 0xB5, 0xC4};
    }));
    asked.width = 0;
    EXPECT_FALSE(Render(loud, asked));
  }
}

}  // namespace
}  // namespace waveform
