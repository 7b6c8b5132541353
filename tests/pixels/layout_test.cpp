#include "pixels/layout.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

static bool operator==(Pixel a, Pixel b) {
  return a.red == b.red && a.green == b.green && a.blue == b.blue;
}

namespace {

// Memory bytes of the opaque pixel (1, 2, 3).
struct KnownLayout {
  int32_t format;
  std::array<uint8_t, 4> bytes;
};

constexpr KnownLayout kLayouts[] = {
    {1, {1, 2, 3, 255}}, {3, {1, 2, 3, 255}}, {5, {1, 2, 3, 255}}, {2, {255, 1, 2, 3}},
    {4, {255, 1, 2, 3}}, {6, {255, 1, 2, 3}}, {8, {3, 2, 1, 0}},
};

TEST(Layout, WritesOpaquePixelsInTheOrderOfTheFormat) {
  for (const KnownLayout& layout : kLayouts) {
    uint32_t word = 0x77777777;
    WritePixel(&word, layout.format, {1, 2, 3});
    EXPECT_EQ(std::memcmp(&word, layout.bytes.data(), 4), 0) << "format " << layout.format;
  }
}

TEST(Layout, NeverReadsTheFourthByte) {
  for (const KnownLayout& layout : kLayouts) {
    for (const int fourth : {0, 1, 128, 255}) {
      std::array<uint8_t, 4> bytes = layout.bytes;
      bytes[layout.format == 2 || layout.format == 4 || layout.format == 6 ? 0 : 3] =
          static_cast<uint8_t>(fourth);
      uint32_t word = 0;
      std::memcpy(&word, bytes.data(), 4);
      EXPECT_EQ(ReadPixel(&word, layout.format), (Pixel{1, 2, 3})) << "format " << layout.format;
    }
  }
}

TEST(Layout, AnUnknownFormatReadsAsBlackAndWritesNothing) {
  for (const int32_t format : {-1, 0, 7, 9, 255}) {
    uint32_t word = 0x12345678;
    EXPECT_EQ(ReadPixel(&word, format), (Pixel{0, 0, 0}));
    WritePixel(&word, format, {1, 2, 3});
    EXPECT_EQ(word, 0x12345678U);
  }
}

TEST(Layout, AColourOfTheHostIgnoresItsTopByte) {
  EXPECT_EQ(PixelOfColour(0x00123456), (Pixel{0x12, 0x34, 0x56}));
  EXPECT_EQ(PixelOfColour(0xFF123456), (Pixel{0x12, 0x34, 0x56}));
}

}  // namespace
