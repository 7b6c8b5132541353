// ExtractColorRectangleMaskKRT followed to the letter of its description: two grids of cells, and
// rectangles that grow by one row or column at a time.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "tests/support/fixture.h"

namespace rectangle_mask {

using namespace support;

inline constexpr Rgb kBlack{0, 0, 0};
inline constexpr Rgb kWhite{255, 255, 255};
inline constexpr Rgb kGrey{120, 120, 120};
inline constexpr Rgb kRed{200, 10, 10};

struct Request {
  int32_t left, top, width, height;
};
inline constexpr Request kWhole{0, 0, -1, -1};

// A picture's cells, 0 or 1, with a border of zeros around them.
class Cells {
 public:
  Cells(int32_t cellsWidth, int32_t cellsHeight)
      : width(cellsWidth),
        height(cellsHeight),
        cells((static_cast<size_t>(width) + 2) * (static_cast<size_t>(height) + 2)) {}
  uint8_t& At(int32_t x, int32_t y) {
    const size_t row = static_cast<size_t>(y + 1) * (static_cast<size_t>(width) + 2);
    return cells.at(row + static_cast<size_t>(x + 1));
  }

  const int32_t width;
  const int32_t height;

 private:
  std::vector<uint8_t> cells;
};

// The cells that the rectangles cover, given the coloured ones.
inline Cells GrowRectangles(Cells coloured) {
  Cells covered(coloured.width, coloured.height);
  for (int32_t firstRow = 0;;) {
    // The first that is left. Those of earlier rows are gone, so that it isn't before the last.
    int32_t left = -1;
    int32_t top = firstRow;
    for (; top < coloured.height && left < 0; ++top) {
      for (int32_t x = 0; x < coloured.width && left < 0; ++x) {
        if (coloured.At(x, top) == 1) left = x;
      }
    }
    if (left < 0) return covered;
    firstRow = --top;
    int32_t right = left;
    int32_t bottom = top;

    const auto rowHasAny = [&](int32_t y) {
      for (int32_t x = left; x <= right; ++x) {
        if (coloured.At(x, y) == 1) return true;
      }
      return false;
    };
    const auto columnHasAny = [&](int32_t x) {
      for (int32_t y = top; y <= bottom; ++y) {
        if (coloured.At(x, y) == 1) return true;
      }
      return false;
    };
    for (bool changed = true; changed;) {
      changed = false;
      if (rowHasAny(top - 1)) --top, changed = true;
      if (rowHasAny(bottom + 1)) ++bottom, changed = true;
      if (columnHasAny(left - 1)) --left, changed = true;
      if (columnHasAny(right + 1)) ++right, changed = true;
    }

    for (int32_t y = top; y <= bottom; ++y) {
      for (int32_t x = left; x <= right; ++x) {
        covered.At(x, y) = 1;
        coloured.At(x, y) = 0;
      }
    }
  }
}

// Which cells are coloured: those of the rectangle, each by the picture's pixel in its column, the
// rectangle's first row by the picture's first.
inline Cells ColouredCells(const PictureRef& picture, const Request& request) {
  const int64_t width = picture->Width();
  const int64_t height = picture->Height();
  const int64_t x0 = std::max(request.left, 0);
  const int64_t y0 = std::max(request.top, 0);
  const int64_t x1 = std::min(request.left + (request.width < 0 ? width : request.width), width);
  const int64_t y1 = std::min(request.top + (request.height < 0 ? height : request.height), height);
  Cells coloured(picture->Width(), picture->Height());
  for (int64_t y = y0; y < y1; ++y) {
    for (int64_t x = x0; x < x1; ++x) {
      const Rgb p = At(picture, static_cast<int32_t>(x), static_cast<int32_t>(y - y0));
      const bool grey = p.red == p.green && p.green == p.blue;
      coloured.At(static_cast<int32_t>(x), static_cast<int32_t>(y)) = grey ? 0 : 1;
    }
  }
  return coloured;
}

class RectangleMask : public PluginTest {
 protected:
  // A picture of one character a pixel: '#' is red, everything else grey.
  PictureRef Draw(const std::vector<std::string_view>& rows) {
    const auto width = static_cast<int32_t>(rows.at(0).size());
    const auto height = static_cast<int32_t>(rows.size());
    PictureRef picture = Host().NewPicture(width, height);
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        const bool red = rows[static_cast<size_t>(y)].at(static_cast<size_t>(x)) == '#';
        Put(picture, x, y, red ? kRed : kGrey);
      }
    }
    return picture;
  }

  PictureRef Extract(const PictureRef& picture, const Request& request) {
    return Call<PictureRef>("ExtractColorRectangleMaskKRT", picture, request.left, request.top,
                            request.width, request.height);
  }

  // '#' where the mask is black, '.' where it is white, '?' for anything else.
  static std::vector<std::string> Show(const PictureRef& mask) {
    std::vector<std::string> rows;
    for (int32_t y = 0; mask && y < mask->Height(); ++y) {
      std::string row;
      for (int32_t x = 0; x < mask->Width(); ++x) {
        const Rgb p = At(mask, x, y);
        row += p == kBlack ? '#' : p == kWhite ? '.' : '?';
      }
      rows.push_back(row);
    }
    return rows;
  }
  std::vector<std::string> Mask(const std::vector<std::string_view>& rows,
                                const Request& request = kWhole) {
    return Show(Extract(Draw(rows), request));
  }
  using Rows = std::vector<std::string>;

  // Every byte of the mask is as the description has it, and the source is as it was.
  void ExpectDescribed(const PictureRef& picture, const Request& request) {
    SCOPED_TRACE(::testing::Message()
                 << "(" << request.left << ", " << request.top << ", " << request.width << ", "
                 << request.height << ") of " << picture->Width() << " x " << picture->Height());
    const std::vector<uint8_t> before = Bytes(picture);
    const PictureRef mask = Extract(picture, request);
    Cells covered = GrowRectangles(ColouredCells(picture, request));
    EXPECT_TRUE(
        IsNewPicture(mask, picture->Width(), picture->Height(), false, [&](int32_t x, int32_t y) {
          return std::optional<Rgb>(covered.At(x, y) == 1 ? kBlack : kWhite);
        }));
    EXPECT_EQ(Bytes(picture), before) << "the source was changed";
  }

  // Greys, and where `coloured` says so a colour that one channel alone may make.
  template <class Coloured>
  PictureRef Paint(int32_t width, int32_t height, const host::PictureLayout& layout, Random& random,
                   const Coloured& coloured) {
    PictureRef picture = Host().NewPicture(width, height, layout);
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        const int32_t level = random.Byte();
        Rgb colour{level, level, level};
        if (coloured(x, y)) {
          const int32_t channel = random.Between(0, 2);
          const int32_t bit = 1 << random.Between(0, 7);
          (channel == 0 ? colour.red : channel == 1 ? colour.green : colour.blue) ^= bit;
        }
        Put(picture, x, y, colour, random.Byte());
      }
    }
    return picture;
  }
  template <class Coloured>
  PictureRef Paint(int32_t width, int32_t height, Random& random, const Coloured& coloured) {
    return Paint(width, height, host::PictureLayout::BitmapContext(6), random, coloured);
  }
};

}  // namespace rectangle_mask
