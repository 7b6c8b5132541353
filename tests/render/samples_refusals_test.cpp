// Samples that are missing, too short, too many or of no known kind, and hosts that can't.
#include <gtest/gtest.h>

#include "tests/render/samples_fixture.h"

namespace waveform {
namespace {

TEST_F(Samples, OfUnsupportedBitsAreNil) {
  Start();
  for (const int32_t bits : {24, 32, 0, 1, -1, -7, -8, -16, 9, 64, -31, kLeast, kMost}) {
    for (const int32_t count : {0, 4}) {
      Waveform wave;
      wave.width = 4;
      wave.height = 4;
      wave.bits = bits;
      wave.sampleCount = count;
      EXPECT_FALSE(Render(Block(400, 1), wave)) << bits;
    }
  }
}

TEST_F(Samples, ThatAreNilRaiseAnException) {
  Start();
  Waveform wave;
  wave.width = 4;
  wave.bits = 24;
  EXPECT_FALSE(Render(BlockRef(), wave));
  EXPECT_EQ(TakeException(), "NilObjectException: memoryblock is nil");
}

TEST_F(Samples, MoreThanTheBlockHoldsAreNil) {
  Start();
  for (const int32_t bits : kAllBits) {
    Waveform wave;
    wave.width = 4;
    wave.height = 4;
    wave.bits = bits;
    wave.sampleCount = 8;
    const size_t size = static_cast<size_t>(8 * BytesOfSample(bits));
    EXPECT_TRUE(Render(Block(size, 0), wave)) << bits;
    EXPECT_FALSE(Render(Block(size - 1, 0), wave)) << bits;
    wave.sampleCount = kMost;
    EXPECT_FALSE(Render(Block(size, 0), wave)) << bits;
    wave.sampleCount = 1 << 29;
    EXPECT_FALSE(Render(Block(size, 0), wave)) << bits;
  }
}

TEST_F(Samples, OfABlockOfUnknownSizeAreBelieved) {
  Random random(714);
  Start();
  const Block bytes = RandomSamples(15, 10, random, false);
  const BlockRef block = Host().NewMemoryBlock(bytes);
  block->HideSize();
  Waveform wave;
  wave.width = 5;
  wave.height = 20;
  wave.bits = 15;
  wave.sampleCount = 10;
  Canvas canvas = Draw(bytes, wave);
  const auto expected = [&](int32_t x, int32_t y) { return canvas.At(x, y); };
  EXPECT_TRUE(IsNewPicture(Render(block, wave), 5, 20, false, expected));
  // How many there are can't be said, so there are none.
  wave.sampleCount = 0;
  EXPECT_TRUE(IsNewPicture(Render(block, wave), 5, 20, false, [](int32_t, int32_t y) {
    return y == 10 ? Rgb{0x27, 0x4C, 0x5A} : Rgb{0x88, 0xB5, 0xC4};
  }));
  wave.width = 0;
  EXPECT_FALSE(Render(block, wave));
}

TEST_F(Samples, OnAHostThatCannotTellSizesAreBelieved) {
  StartWithoutPlugin();
  Host().faults.Hide("memoryBlockGetSize");
  LoadPluginUnderTest(Host());
  const Block bytes = {1, 2, 3, 250, 251, 252};
  Waveform wave;
  wave.width = 3;
  wave.height = 20;
  wave.sampleCount = 6;
  ExpectWaveform(bytes, wave);
  wave.sampleCount = 0;
  wave.width = 0;
  EXPECT_FALSE(Render(bytes, wave));
}

TEST_F(Samples, WithoutBytesAreNil) {
  Start();
  Waveform wave;
  wave.width = 3;
  wave.height = 20;
  wave.sampleCount = 2;
  BlockRef block = Host().NewMemoryBlock(Block{1, 2});
  block->HidePointer();
  EXPECT_FALSE(Render(block, wave));
  block = nullptr;

  StartWithoutPlugin();
  Host().faults.Hide("memoryBlockGetPtr");
  LoadPluginUnderTest(Host());
  EXPECT_FALSE(Render(Block{1, 2}, wave));
}

TEST_F(Samples, PicturesOfUpTo32767AreDrawnAndLargerOnesAreNil) {
  Start();
  Waveform wave;
  wave.height = 1;
  wave.sampleCount = 4;
  wave.width = 32767;
  EXPECT_TRUE(Render(Block(4, 9), wave));
  for (const int32_t width : {32768, 1 << 28, kMost}) {
    wave.width = width;
    EXPECT_FALSE(Render(Block(4, 9), wave)) << width;
  }
  wave.width = 1;
  wave.height = 32767;
  EXPECT_TRUE(Render(Block(4, 9), wave));
  for (const int32_t height : {32768, kMost}) {
    wave.height = height;
    EXPECT_FALSE(Render(Block(4, 9), wave)) << height;
  }
  // A column for each sample, and too many of them.
  wave.height = 4;
  wave.width = 0;
  wave.sampleCount = 0;
  EXPECT_FALSE(Render(Block(32768, 9), wave));
  EXPECT_TRUE(Render(Block(32767, 9), wave));
}

TEST_F(Samples, WithoutANewPictureAreNil) {
  Start();
  Waveform wave;
  wave.width = 3;
  wave.height = 3;
  for (const int32_t outline : {0, 1, 2}) {
    wave.outlineWidth = outline;
    Host().faults.FailCall("newPicture");
    EXPECT_FALSE(Render(Block(9, 9), wave));
    Host().faults.FailCall("REALLockPictureDescription");
    EXPECT_FALSE(Render(Block(9, 9), wave));
  }
}

TEST_F(Samples, ThickOutlinesNeedTheHostsGraphics) {
  Start();
  Waveform wave;
  wave.width = 9;
  wave.height = 9;
  wave.sampleCount = 9;
  Waveform thick = wave;
  thick.outlineWidth = 3;
  const Block bytes = {0, 255, 9, 12, 128, 128, 200, 130, 40};
  const std::vector<uint8_t> plain = Bytes(Render(bytes, wave));
  EXPECT_FALSE(Bytes(Render(bytes, thick)) == plain);
  Host().faults.FailCall("pluginPictureGraphicsGetter");
  EXPECT_TRUE(Bytes(Render(bytes, thick)) == plain);

  StartWithoutPlugin();
  Host().faults.Hide("RuntimeGraphicsDrawLine");
  LoadPluginUnderTest(Host());
  EXPECT_TRUE(Bytes(Render(bytes, thick)) == plain);
}

TEST_F(Samples, OutlinesTakeTheColourOfTheirOwnCall) {
  Start();
  Waveform wave;
  wave.width = 3;
  wave.height = 5;
  wave.outlineWidth = 1;
  for (const uint32_t colour : {0xFF0000U, 0x00FF00U, 0xFF0000FFU}) {
    wave.outlineColour = colour;
    EXPECT_EQ(At(Render(Block(9, 128), wave), 1, 2), Channels(colour));
  }
}

}  // namespace
}  // namespace waveform
