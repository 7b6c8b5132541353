// Pictures written to strings and read back.
#include <gtest/gtest.h>

#include "tests/compose/binary_string_fixture.h"

namespace binary_string {
namespace {

TEST_F(BinaryStringTest, OnePixelIs43BytesAsWorkedOut) {
  const StringRef string = Write(Plain(1, 1, {0xC8, 0x02, 0x7F}));
  const unsigned char expected[] = {
      0x50, 0x50, 0x49, 0x43, 0, 0, 0, 0x2B, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0,    0x20, 0,   0,
      0,    0x28, 0,    0,    0, 0, 0, 0,    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xC8, 2,    0x7F};
  ASSERT_TRUE(string);
  EXPECT_EQ(string->Bytes(), std::string(reinterpret_cast<const char*>(expected), 43));
}

// 40 + 3 * 2400 * 2400 is 0x0107AC28.
TEST_F(BinaryStringTest, TheSizeTakesFourBytes) {
  const StringRef string = Write(Plain(2400, 2400, {1, 2, 3}));
  ASSERT_TRUE(string);
  EXPECT_EQ(string->Bytes().size(), 0x0107AC28U);
  EXPECT_EQ(string->Bytes().substr(4, 4), "\x01\x07\xAC\x28");
  const Result back = Read(string);
  ASSERT_TRUE(back);
  EXPECT_EQ(back->Width(), 2400);
  EXPECT_EQ(back->Height(), 2400);
}

TEST_F(BinaryStringTest, EveryLayoutIsWrittenByTheTable) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (int32_t round = 0; round < 20; ++round) {
      const int32_t width = random.OneIn(3) ? random.Between(1, 4) : random.Between(5, 67);
      const PictureRef picture = Noise(width, random.Between(1, 5), pair.source);
      const std::vector<uint8_t> before = Bytes(picture);
      const StringRef string = Write(picture);
      ASSERT_TRUE(string);
      EXPECT_EQ(string->Bytes(), Written(picture)) << "seed " << support::Seed();
      EXPECT_EQ(Bytes(picture), before);
      ASSERT_FALSE(HasFailure());
    }
  }
}

TEST_F(BinaryStringTest, EveryLayoutIsReadByTheTable) {
  for (const LayoutPair& pair : support::AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (int32_t round = 0; round < 8; ++round) {
      const int32_t width = random.OneIn(3) ? random.Between(1, 4) : random.Between(5, 67);
      const int32_t height = random.Between(1, 5);
      const std::string bytes = WithHeader(width, height, NoisePixels(width, height, random));
      EXPECT_TRUE(IsPictureOf(Read(bytes), width, height, bytes));
      ASSERT_FALSE(HasFailure());
    }
  }
}

TEST_F(BinaryStringTest, ARoundTripLosesAlphaAndMaskOnly) {
  for (const LayoutPair& pair : support::AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef picture = Noise(23, 3, pair.source);
    picture->SetMask(Noise(23, 3, pair.source));
    const Result back = Read(Write(picture));
    EXPECT_TRUE(
        IsNewPicture(back, 23, 3, false, [&](int32_t x, int32_t y) { return At(picture, x, y); }));
    EXPECT_FALSE(back->Mask());
  }
}

TEST_F(BinaryStringTest, TheEncodingIsAsciiWhereEveryByteIsBelow128) {
  const StringRef low = Write(Plain(2, 2, {0, 64, 127}));
  EXPECT_EQ(low->Encoding(), kAscii);
  for (const Rgb& colour : {Rgb{128, 0, 0}, Rgb{0, 128, 0}, Rgb{0, 0, 128}}) {
    EXPECT_EQ(Write(Plain(2, 2, colour))->Encoding(), kUnknown);
  }
  // 40 + 3 x 30 is 130: the length field itself has a byte above 127.
  EXPECT_EQ(Write(Plain(29, 1, {}))->Encoding(), kAscii);
  EXPECT_EQ(Write(Plain(30, 1, {}))->Encoding(), kUnknown);
}

TEST_F(BinaryStringTest, OneHighByteAnywhereMakesTheEncodingUnknown) {
  // 40 + 3 x 64 x 67 is 0x3268, so that the header has no byte above 127.
  const PictureRef picture = Plain(64, 67, {0, 0, 0});
  EXPECT_EQ(Write(picture)->Encoding(), kAscii);
  // The first and the last pixel, and those on either side of byte 4096.
  for (const auto& [x, y] :
       {std::pair{0, 0}, std::pair{7, 21}, std::pair{8, 21}, std::pair{63, 66}}) {
    for (const Rgb& colour : {Rgb{128, 0, 0}, Rgb{0, 0, 128}}) {
      support::Put(picture, x, y, colour);
      EXPECT_EQ(Write(picture)->Encoding(), kUnknown) << x << ", " << y;
    }
    support::Put(picture, x, y, {127, 127, 127});
    EXPECT_EQ(Write(picture)->Encoding(), kAscii) << x << ", " << y;
    support::Put(picture, x, y, {0, 0, 0});
  }
}

TEST_F(BinaryStringTest, DepthAndReservedBytesAreIgnored) {
  std::string bytes = WithHeader(2, 2, NoisePixels(2, 2, random));
  for (const size_t place : {16U, 17U, 18U, 19U, 24U, 30U, 39U}) bytes[place] = '\x99';
  EXPECT_TRUE(IsPictureOf(Read(bytes), 2, 2, bytes));
}

TEST_F(BinaryStringTest, PixelsAreReadFromTheOffset) {
  const std::string pixels = NoisePixels(3, 2, random);
  for (const uint32_t offset : {41U, 60U, 1000U}) {
    const auto size = static_cast<uint32_t>(offset + pixels.size());
    const std::string bytes =
        Header(size, 3, 2, offset) + std::string(offset - 40, '\x77') + pixels;
    EXPECT_TRUE(IsPictureOf(Read(bytes), 3, 2, bytes, offset)) << offset;
  }
  // An offset into the header is as good as any other.
  const std::string inside = Header(58, 3, 2, 20) + pixels;
  EXPECT_TRUE(IsPictureOf(Read(inside), 3, 2, inside, 20));
}

TEST_F(BinaryStringTest, BytesBehindThePixelsAreIgnored) {
  const std::string bytes = WithHeader(2, 2, NoisePixels(2, 3, random));
  EXPECT_TRUE(IsPictureOf(Read(bytes), 2, 2, bytes));
}

TEST_F(BinaryStringTest, AnyEncodingIsReadAsStored) {
  const std::string bytes = WithHeader(3, 2, NoisePixels(3, 2, random));
  for (const uint32_t encoding : {kAscii, kUnknown, 0x08000100U, 0x100U, 0U}) {
    EXPECT_TRUE(IsPictureOf(Read(Host().NewString(bytes, encoding)), 3, 2, bytes)) << encoding;
  }
}

}  // namespace
}  // namespace binary_string
