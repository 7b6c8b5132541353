// How a pixel lies in a 32-bit word.
#pragma once

#include <cstdint>

#include "pixels/numeric.h"

// A pixel's word in its picture. Rows may begin at any byte.
using Word [[gnu::aligned(1), gnu::may_alias]] = uint32_t;

// The three ways in which red, green, blue and the fourth byte lie in memory. Bitmap contexts have
// the first two, whether or not their alpha is premultiplied or used; row-table pictures the third.
enum class Layout { rgba, argb, bgrx };

// Channel values, 0 to 255.
struct Pixel {
  int32_t red;
  int32_t green;
  int32_t blue;
};

// A colour of the host, 0x00RRGGBB; the top byte is ignored.
constexpr Pixel PixelOfColour(uint32_t colour) {
  return {static_cast<int32_t>(colour >> 16 & 255), static_cast<int32_t>(colour >> 8 & 255),
          static_cast<int32_t>(colour & 255)};
}

// Where red, green and blue begin in a word, in bits, and what the fourth byte is when written:
// every written pixel is opaque.
template <Layout kLayout>
struct LayoutBits;
template <>
struct LayoutBits<Layout::rgba> {
  static constexpr int kRed = 0, kGreen = 8, kBlue = 16;
  static constexpr uint32_t kOpaque = 0xFF000000;
};
template <>
struct LayoutBits<Layout::argb> {
  static constexpr int kRed = 8, kGreen = 16, kBlue = 24;
  static constexpr uint32_t kOpaque = 0x000000FF;
};
template <>
struct LayoutBits<Layout::bgrx> {
  static constexpr int kRed = 16, kGreen = 8, kBlue = 0;
  static constexpr uint32_t kOpaque = 0;
};

// The channels of a word; the fourth byte is never read.
template <Layout kLayout>
constexpr Pixel Unpack(uint32_t word) {
  using Bits = LayoutBits<kLayout>;
  return {static_cast<int32_t>(word >> Bits::kRed & 255),
          static_cast<int32_t>(word >> Bits::kGreen & 255),
          static_cast<int32_t>(word >> Bits::kBlue & 255)};
}

// The word of an opaque pixel. The channels are 0 to 255.
template <Layout kLayout>
constexpr uint32_t Pack(Pixel pixel) {
  using Bits = LayoutBits<kLayout>;
  return static_cast<uint32_t>(pixel.red) << Bits::kRed |
         static_cast<uint32_t>(pixel.green) << Bits::kGreen |
         static_cast<uint32_t>(pixel.blue) << Bits::kBlue | Bits::kOpaque;
}

// Calls `function.operator()<kLayout>()` for the layout that the format code `format` stands for:
// 1, 3, 5 rgba; 2, 4, 6 argb; 8 bgrx. Any other code calls nothing. False then.
template <class Function>
constexpr bool WithLayout(int32_t format, const Function& function) {
  switch (format) {
    case 1:
    case 3:
    case 5:
      function.template operator()<Layout::rgba>();
      return true;
    case 2:
    case 4:
    case 6:
      function.template operator()<Layout::argb>();
      return true;
    case 8:
      function.template operator()<Layout::bgrx>();
      return true;
    default:
      return false;
  }
}

// The pixel at `address` in a picture of format `format`; black for an unknown format. This and
// WritePixel are what the row loops mean; a loop for a pair of layouts must equal them.
constexpr Pixel ReadPixel(const Word* address, int32_t format) {
  Pixel pixel{};
  WithLayout(format, [&]<Layout kLayout>() { pixel = Unpack<kLayout>(*address); });
  return pixel;
}

// Writes an opaque pixel; nothing for an unknown format.
constexpr void WritePixel(Word* address, int32_t format, Pixel pixel) {
  WithLayout(format, [&]<Layout kLayout>() { *address = Pack<kLayout>(pixel); });
}
