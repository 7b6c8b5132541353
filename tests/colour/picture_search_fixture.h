// FindPictureKRT followed to the letter of its description, row cursors and all.
#pragma once

#include <algorithm>
#include <ostream>

#include "tests/support/fixture.h"

namespace picture_search {

using namespace support;
using host::PictureLayout;

struct Place {
  bool found = false;
  int32_t x = 0;
  int32_t y = 0;
  friend bool operator==(const Place&, const Place&) = default;
};
inline std::ostream& operator<<(std::ostream& out, const Place& place) {
  return place.found ? out << "at (" << place.x << ", " << place.y << ")" << std::flush
                     : out << "not found, (" << place.x << ", " << place.y << ")";
}
inline constexpr Place kNowhere{};

// A picture's channels, and the cursor that steps through its rows.
class Rows {
 public:
  explicit Rows(const PictureRef& picture) : width(picture->Width()), height(picture->Height()) {
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) pixels.push_back(support::At(picture, x, y));
    }
  }
  // The pixel in a column of the row that the row pointer points at.
  const Rgb& Pixel(int32_t column) const { return At(column, rowPointer); }
  const Rgb& At(int32_t x, int32_t y) const {
    return pixels.at(static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x));
  }
  void NextRow() {
    cursor += 1;
    rowPointer = cursor < height ? cursor : 0;
  }

  const int32_t width;
  const int32_t height;
  int32_t rowPointer = 0;

 private:
  int32_t cursor = 0;
  std::vector<Rgb> pixels;
};

inline Place Described(Rows haystack, Rows needle) {
  const int32_t rowsToTry = haystack.height + 1 - needle.height;
  const int32_t columnsToTry = haystack.width + 1 - needle.width;
  const Rgb first = needle.At(0, 0);
  for (int32_t yy = 0; yy < rowsToTry; ++yy) {
    const int32_t rowStart = haystack.rowPointer;
    for (int32_t xx = 0; xx < columnsToTry; ++xx) {
      if (!(haystack.Pixel(xx) == first)) continue;
      const auto rowMatches = [&] {
        for (int32_t i = 0; i < needle.width; ++i) {
          if (!(needle.Pixel(i) == haystack.Pixel(xx + i))) return false;
        }
        return true;
      };
      bool matches = rowMatches();
      for (int32_t row = 1; matches && row < needle.height; ++row) {
        haystack.NextRow();
        needle.NextRow();
        matches = rowMatches();
      }
      if (matches) return {true, xx, yy};
      haystack.rowPointer = rowStart;
      needle.rowPointer = 0;
    }
    haystack.NextRow();
  }
  return kNowhere;
}

// Where the first true copy is.
inline Place Copy(const Rows& haystack, const Rows& needle) {
  for (int32_t y = 0; y + needle.height <= haystack.height; ++y) {
    for (int32_t x = 0; x + needle.width <= haystack.width; ++x) {
      bool same = true;
      for (int32_t j = 0; j < needle.height; ++j) {
        for (int32_t i = 0; i < needle.width; ++i) {
          same = same && needle.At(i, j) == haystack.At(x + i, y + j);
        }
      }
      if (same) return {true, x, y};
    }
  }
  return kNowhere;
}

class PictureSearch : public PluginTest {
 protected:
  // A picture of one character a pixel, each a colour of its own. The fourth bytes are noise.
  PictureRef Draw(const std::vector<std::string_view>& rows,
                  const PictureLayout& layout = PictureLayout::BitmapContext(6)) {
    const auto width = static_cast<int32_t>(rows.at(0).size());
    const auto height = static_cast<int32_t>(rows.size());
    PictureRef picture = Host().NewPicture(width, height, layout);
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        const int32_t code = rows[static_cast<size_t>(y)].at(static_cast<size_t>(x));
        Put(picture, x, y, {code, 255 - code, code / 2}, noise.Byte());
      }
    }
    return picture;
  }

  Place Find(const PictureRef& haystack, const PictureRef& needle, int32_t x = 5, int32_t y = 5) {
    const bool found = Call<bool>("FindPictureKRT", haystack, needle, &x, &y);
    return {found, x, y};
  }
  Place Find(const std::vector<std::string_view>& haystack,
             const std::vector<std::string_view>& needle) {
    return Find(Draw(haystack), Draw(needle));
  }

  void ExpectDescribed(const PictureRef& haystack, const PictureRef& needle) {
    const std::vector<uint8_t> haystackBefore = Bytes(haystack);
    const std::vector<uint8_t> needleBefore = Bytes(needle);
    EXPECT_EQ(Find(haystack, needle), Described(Rows(haystack), Rows(needle)))
        << needle->Width() << " x " << needle->Height() << " in " << haystack->Width() << " x "
        << haystack->Height();
    EXPECT_EQ(Bytes(haystack), haystackBefore) << "the haystack was changed";
    EXPECT_EQ(Bytes(needle), needleBefore) << "the needle was changed";
  }

  // A picture whose pixels `colourAt` numbers; the colours of numbers differ in one channel alone.
  template <class ColourAt>
  PictureRef Paint(int32_t width, int32_t height, const PictureLayout& layout,
                   const ColourAt& colourAt) {
    static constexpr Rgb kColours[] = {{90, 90, 90}, {91, 90, 90}, {90, 91, 90}, {90, 90, 91}};
    PictureRef picture = Host().NewPicture(width, height, layout);
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x)
        Put(picture, x, y, kColours[colourAt(x, y)], noise.Byte());
    }
    return picture;
  }
  template <class ColourAt>
  PictureRef Paint(int32_t width, int32_t height, const ColourAt& colourAt) {
    return Paint(width, height, PictureLayout::BitmapContext(6), colourAt);
  }

  // A piece of a picture, some of its pixels changed.
  PictureRef Cut(const PictureRef& picture, int32_t left, int32_t top, int32_t width,
                 int32_t height, const PictureLayout& layout, bool spoil) {
    PictureRef piece = Host().NewPicture(width, height, layout);
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        Put(piece, x, y, At(picture, left + x, top + y), noise.Byte());
      }
    }
    if (spoil) {
      const Rgb other = At(picture, noise.Between(0, picture->Width() - 1),
                           noise.Between(0, picture->Height() - 1));
      Put(piece, noise.Between(0, width - 1), noise.Between(0, height - 1), other, noise.Byte());
    }
    return piece;
  }

  Random noise{99};
};

}  // namespace picture_search
