// What the tests of pictures as strings share: headers and pixels written by hand.
#pragma once

#include <climits>

#include "tests/support/fixture.h"

namespace binary_string {

using host::PictureLayout;
using support::At;
using support::Bytes;
using support::FillWithNoise;
using support::IsNewPicture;
using support::LayoutPair;
using support::PictureRef;
using support::Random;
using support::Rgb;

using Result = host::Ref<host::Picture>;
using StringRef = host::Ref<host::String>;

inline constexpr uint32_t kAscii = 0x600;
inline constexpr uint32_t kUnknown = 0xFFFF;

inline std::string BigEndian(uint32_t value) {
  return {static_cast<char>(value >> 24), static_cast<char>(value >> 16),
          static_cast<char>(value >> 8), static_cast<char>(value)};
}

inline std::string Header(uint32_t size, int32_t width, int32_t height, uint32_t offset = 40) {
  return "PPIC" + BigEndian(size) + BigEndian(static_cast<uint32_t>(width)) +
         BigEndian(static_cast<uint32_t>(height)) + BigEndian(32) + BigEndian(offset) +
         std::string(16, '\0');
}

// The header of a string that this follows, and it.
inline std::string WithHeader(int32_t width, int32_t height, const std::string& pixels) {
  return Header(static_cast<uint32_t>(40 + pixels.size()), width, height) + pixels;
}

// What the writer makes of a picture.
inline std::string Written(const PictureRef& picture) {
  std::string pixels;
  for (int32_t y = 0; y < picture->Height(); ++y) {
    for (int32_t x = 0; x < picture->Width(); ++x) {
      const Rgb colour = At(picture, x, y);
      pixels += static_cast<char>(colour.red);
      pixels += static_cast<char>(colour.green);
      pixels += static_cast<char>(colour.blue);
    }
  }
  return WithHeader(picture->Width(), picture->Height(), pixels);
}

// Random bytes for a picture of this size.
inline std::string NoisePixels(int32_t width, int32_t height, Random& random) {
  std::string pixels(static_cast<size_t>(width) * static_cast<size_t>(height) * 3, '\0');
  for (char& byte : pixels) byte = static_cast<char>(random.Byte());
  return pixels;
}

class BinaryStringTest : public support::PluginTest {
 protected:
  PictureRef Noise(int32_t width, int32_t height, const PictureLayout& layout) {
    PictureRef picture = Host().NewPicture(width, height, layout);
    FillWithNoise(picture, random);
    return picture;
  }
  PictureRef Plain(int32_t width, int32_t height, Rgb colour) {
    PictureRef picture = Host().NewPicture(width, height);
    support::Fill(picture, colour);
    return picture;
  }

  StringRef Write(const PictureRef& picture) {
    return CallGlobal<StringRef>("PicturetoBinaryStringKRT", picture);
  }
  Result Read(const StringRef& data) {
    return CallGlobal<Result>("BinaryStringtoPictureKRT", data);
  }
  Result Read(const std::string& bytes) { return Read(Host().NewString(bytes, kUnknown)); }

  // A picture whose pixels are those that stand in `bytes` from `offset` on.
  static ::testing::AssertionResult IsPictureOf(const Result& actual, int32_t width, int32_t height,
                                                const std::string& bytes, size_t offset = 40) {
    return IsNewPicture(actual, width, height, false, [&](int32_t x, int32_t y) {
      const size_t place =
          offset +
          (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)) * 3;
      return Rgb{static_cast<uint8_t>(bytes[place]), static_cast<uint8_t>(bytes[place + 1]),
                 static_cast<uint8_t>(bytes[place + 2])};
    });
  }

  Random random{0xB1A5};
};

}  // namespace binary_string
