// Pictures for tests: made in every layout, filled with noise, compared byte by byte.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/host.h"
#include "tests/support/random.h"

namespace support {

using PictureRef = host::Ref<host::Picture>;

// The settings of a test that needs no others: hosts are as old as their locks (--locks=NAME) need
// them to be.
host::Settings AnySettings();

struct Rgb {
  int red = 0, green = 0, blue = 0;
  friend bool operator==(const Rgb&, const Rgb&) = default;
};
std::ostream& operator<<(std::ostream& out, const Rgb& colour);

// What a host is set to and how a source lies in it, so that an operation reads one layout and
// writes another.
struct LayoutPair {
  std::string name;  // "desktop 1 -> 4", "desktop alpha 2 -> 1", "console 8 -> 8"
  host::Settings settings;
  host::PictureLayout source;
};

// Every pair of source and output layout that one call can meet: the six bitmap layouts with each
// other, the two alpha layouts with each other, row tables on console and web hosts. Rows are
// padded and begin at odd addresses in some of them.
const std::vector<LayoutPair>& AllLayoutPairs();

// One pair for each source layout, for tests whose output doesn't depend on it.
const std::vector<LayoutPair>& AllSourceLayouts();

// The word that an opaque pixel is written as in a picture of this layout.
uint32_t OpaqueWord(const host::PictureLayout& layout, Rgb colour);

// The channels of the pixel as they stand in its word.
Rgb At(const PictureRef& picture, int32_t x, int32_t y);
// Writes the channels and, into the fourth byte, `fourth`.
void Put(const PictureRef& picture, int32_t x, int32_t y, Rgb colour, uint8_t fourth = 255);
// The whole picture in one colour.
void Fill(const PictureRef& picture, Rgb colour, uint8_t fourth = 255);
// Every bit of every word at random, the fourth byte too. With `levels` each channel takes one of
// so many values only, so that equal colours and greys turn up.
void FillWithNoise(const PictureRef& picture, Random& random, int32_t levels = 256);

// Every byte of pixels and row padding, top to bottom.
std::vector<uint8_t> Bytes(const PictureRef& picture);

// What a pixel is expected to be; nothing where it keeps what it had.
using Expected = std::function<std::optional<Rgb>(int32_t x, int32_t y)>;

// Compares every byte of `actual`, padding included, with a picture that was as `before` says and
// then got the opaque pixels of `expected`. `before` has actual's size and layout: for a result
// that is a new picture it is a fresh one of the host (`Fresh`).
::testing::AssertionResult PixelsAre(const PictureRef& actual, const std::vector<uint8_t>& before,
                                     const Expected& expected);
// The bytes of a picture that the host makes now, in the layout of a result whose source has or
// hasn't an alpha channel.
std::vector<uint8_t> FreshBytes(int32_t width, int32_t height, bool alpha);

// A result that is a new picture: size as given, every byte as a fresh picture with `expected`
// written into it, its cached rendering not stale.
::testing::AssertionResult IsNewPicture(const PictureRef& actual, int32_t width, int32_t height,
                                        bool alpha, const Expected& expected);

// Whether the picture's layout has an alpha channel that "HasAlphaChannel" tells of.
bool HasAlpha(const host::PictureLayout& layout);

}  // namespace support
