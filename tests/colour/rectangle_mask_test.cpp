// ExtractColorRectangleMaskKRT beside its description followed to the letter: two grids of cells,
// and rectangles that grow by one row or column at a time.
#include <algorithm>
#include <string>
#include <string_view>

#include "tests/support/fixture.h"

namespace {

using namespace support;

constexpr Rgb kBlack{0, 0, 0};
constexpr Rgb kWhite{255, 255, 255};
constexpr Rgb kGrey{120, 120, 120};
constexpr Rgb kRed{200, 10, 10};

struct Request {
  int32_t left, top, width, height;
};
constexpr Request kWhole{0, 0, -1, -1};

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
Cells GrowRectangles(Cells coloured) {
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
Cells ColouredCells(const PictureRef& picture, const Request& request) {
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

TEST_F(RectangleMask, AGreyPictureGivesAWhiteMask) {
  EXPECT_EQ(Mask({"....", "....", "...."}), (Rows{"....", "....", "...."}));
}

TEST_F(RectangleMask, EachChannelAloneMakesAPixelColoured) {
  PictureRef picture = Host().NewPicture(5, 1);
  Put(picture, 0, 0, {1, 0, 0});
  Put(picture, 1, 0, {7, 7, 7}, 3);
  Put(picture, 2, 0, {255, 254, 255});
  Put(picture, 3, 0, {9, 9, 9});
  Put(picture, 4, 0, {128, 128, 0});
  EXPECT_EQ(Show(Extract(picture, kWhole)), (Rows{"#.#.#"}));
}

TEST_F(RectangleMask, OnePixelGivesOneBlackPixel) {
  EXPECT_EQ(Mask({"....", ".#..", "...."}), (Rows{"....", ".#..", "...."}));
  EXPECT_EQ(Mask({"#"}), (Rows{"#"}));
  EXPECT_EQ(Mask({"..", ".#"}), (Rows{"..", ".#"}));
}

TEST_F(RectangleMask, DiagonalNeighboursStayApart) {
  EXPECT_EQ(Mask({"#..", ".#.", "..."}), (Rows{"#..", ".#.", "..."}));
  EXPECT_EQ(Mask({"..#", ".#.", "#.."}), (Rows{"..#", ".#.", "#.."}));
}

TEST_F(RectangleMask, PixelsSideBySideAreOneRectangle) {
  EXPECT_EQ(Mask({"##.", "..."}), (Rows{"##.", "..."}));
  EXPECT_EQ(Mask({"#.", "#."}), (Rows{"#.", "#."}));
}

TEST_F(RectangleMask, AnLGivesItsWholeBox) {
  EXPECT_EQ(Mask({"#....", "#....", "###..", "....."}), (Rows{"###..", "###..", "###..", "....."}));
  EXPECT_EQ(Mask({"...#", "...#", ".###"}), (Rows{".###", ".###", ".###"}));
}

// The box of the ring is full, so that it takes what lies inside it too, and what lies directly
// beside the box though nowhere beside the ring.
TEST_F(RectangleMask, ABoxGrowsByWhatLiesBesideIt) {
  EXPECT_EQ(Mask({"####..", "#..#..", "#.#.#.", "#.....", "##...."}),
            (Rows{"#####.", "#####.", "#####.", "#####.", "#####."}));
  EXPECT_EQ(Mask({".#...", ".#...", ".###.", "....#"}), (Rows{".###.", ".###.", ".###.", "....#"}));
}

// The second rectangle starts in the first row, goes around the first below and ends up over half
// of it. What the first has taken makes the second no larger.
TEST_F(RectangleMask, ALaterRectangleOverAnEarlierOneIsNotMergedWithIt) {
  EXPECT_EQ(Mask({"##..#.", "##..#.", "....#.", ".####.", "......"}),
            (Rows{"#####.", "#####.", ".####.", ".####.", "......"}));
}

TEST_F(RectangleMask, ColouredPixelsOutsideTheRectangleDontCount) {
  const std::vector<std::string_view> rows{"#....", "#...#", "#...."};
  EXPECT_EQ(Mask(rows, {1, 0, 3, -1}), (Rows{".....", ".....", "....."}));
  EXPECT_EQ(Mask(rows, {1, 0, -1, -1}), (Rows{".....", "....#", "....."}));
  EXPECT_EQ(Mask(rows, {0, 0, 4, 2}), (Rows{"#....", "#....", "....."}));
}

TEST_F(RectangleMask, NoWidthOrHeightGivesAWhiteMask) {
  EXPECT_EQ(Mask({"##", "##"}, {0, 0, 0, -1}), (Rows{"..", ".."}));
  EXPECT_EQ(Mask({"##", "##"}, {0, 0, -1, 0}), (Rows{"..", ".."}));
  EXPECT_EQ(Mask({"##", "##"}, {0, 0, 0, 0}), (Rows{"..", ".."}));
  EXPECT_EQ(Mask({"##", "##"}, {2, 0, -1, -1}), (Rows{"..", ".."}));
  EXPECT_EQ(Mask({"##", "##"}, {0, 2, -1, -1}), (Rows{"..", ".."}));
}

TEST_F(RectangleMask, TheEndIsCountedFromANegativeStart) {
  EXPECT_EQ(Mask({"####", "####"}, {-1, 0, 3, -1}), (Rows{"##..", "##.."}));
  EXPECT_EQ(Mask({"####", "####", "####"}, {0, -2, -1, 3}), (Rows{"####", "....", "...."}));
  EXPECT_EQ(Mask({"####", "####"}, {-1, -1, -1, -1}), (Rows{"###.", "...."}));
}

TEST_F(RectangleMask, RowsOfTheRectangleAreThoseFromThePicturesTop) {
  EXPECT_EQ(Mask({"#....", "..#..", "....."}, {0, 1, -1, -1}), (Rows{".....", "#....", "..#.."}));
  EXPECT_EQ(Mask({"#....", "..#..", "....#"}, {0, 2, -1, -1}), (Rows{".....", ".....", "#...."}));
  // Of one row, wherever it stands, the picture's first is looked at.
  EXPECT_EQ(Mask({"#...", "....", "..##", "...#"}, {0, 2, -1, 1}),
            (Rows{"....", "....", "#...", "...."}));
}

TEST_F(RectangleMask, WithTopTenTheFirstRowShowsInRowTen) {
  PictureRef picture = Host().NewPicture(20, 30);
  Fill(picture, kGrey);
  Put(picture, 7, 0, kRed);
  Put(picture, 3, 29, kRed);  // the last row isn't seen
  const PictureRef mask = Extract(picture, {0, 10, -1, -1});
  EXPECT_TRUE(IsNewPicture(mask, 20, 30, false, [](int32_t x, int32_t y) {
    return std::optional<Rgb>(x == 7 && y == 10 ? kBlack : kWhite);
  }));
}

TEST_F(RectangleMask, ANegativeTopMovesNothing) {
  EXPECT_EQ(Mask({"#..", "...", "..#"}, {0, -5, -1, 8}), (Rows{"#..", "...", "..#"}));
}

TEST_F(RectangleMask, WithoutARectangleThePictureIsTheRectangle) {
  Random random(1);
  const PictureRef picture =
      Paint(40, 30, random, [&](int32_t, int32_t) { return random.OneIn(9); });
  const PictureRef mask = Call<PictureRef>("ExtractColorRectangleMaskKRT", picture);
  Cells covered = GrowRectangles(ColouredCells(picture, kWhole));
  EXPECT_TRUE(IsNewPicture(mask, 40, 30, false, [&](int32_t x, int32_t y) {
    return std::optional<Rgb>(covered.At(x, y) == 1 ? kBlack : kWhite);
  }));
}

TEST_F(RectangleMask, FollowsItsDescriptionInEveryLayout) {
  for (const LayoutPair& pair : AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    Random random(2);
    for (int i = 0; i < 60; ++i) {
      const int32_t width = random.OneIn(3) ? random.Between(1, 100) : random.Between(1, 12);
      const int32_t height = random.Between(1, 12);
      const int32_t rarity = random.Between(1, 30);
      const PictureRef picture = Paint(width, height, pair.source, random,
                                       [&](int32_t, int32_t) { return random.OneIn(rarity); });
      const auto bound = [&](int32_t first, int32_t last) {
        const int32_t extremes[] = {std::numeric_limits<int32_t>::min(), -1, 0,
                                    std::numeric_limits<int32_t>::max()};
        return random.OneIn(10) ? extremes[random.Between(0, 3)] : random.Between(first, last);
      };
      ExpectDescribed(picture, kWhole);
      ExpectDescribed(picture, {bound(-3, width + 1), bound(-3, height + 1), bound(-1, width + 3),
                                bound(-1, height + 3)});
      if (HasFailure()) return;
    }
  }
}

// Widths about a multiple of 32, for those who keep the cells in words.
TEST_F(RectangleMask, FollowsItsDescriptionAtEveryWidth) {
  Random random(3);
  for (const int32_t width : {31, 32, 33, 63, 64, 65, 95, 96, 97, 128, 160, 161}) {
    for (int i = 0; i < 24; ++i) {
      const int32_t height = random.Between(1, 40);
      const int32_t rarity = random.Between(1, 60);
      ExpectDescribed(
          Paint(width, height, random, [&](int32_t, int32_t) { return random.OneIn(rarity); }),
          kWhole);
      if (HasFailure()) return;
    }
  }
}

// Lines of random length between random places, which make rectangles that overlap, contain and
// grow around each other.
TEST_F(RectangleMask, FollowsItsDescriptionOnLinesAndFrames) {
  Random random(4);
  for (int i = 0; i < 400; ++i) {
    const int32_t width = random.Between(20, 110);
    const int32_t height = random.Between(20, 60);
    Cells lines(width, height);
    for (int32_t n = random.Between(1, 40); n > 0; --n) {
      int32_t x = random.Between(0, width - 1);
      int32_t y = random.Between(0, height - 1);
      // Up to three pieces, each a turn to the right or left of the one before.
      bool across = random.OneIn(2);
      for (int32_t piece = random.Between(1, 3); piece > 0; --piece, across = !across) {
        const int32_t step = random.OneIn(2) ? 1 : -1;
        for (int32_t length = random.Between(1, across ? width : height); length > 0; --length) {
          lines.At(x, y) = 1;
          const int32_t nextX = across ? x + step : x;
          const int32_t nextY = across ? y : y + step;
          if (nextX < 0 || nextX >= width || nextY < 0 || nextY >= height) break;
          x = nextX;
          y = nextY;
        }
      }
    }
    ExpectDescribed(
        Paint(width, height, random, [&](int32_t x, int32_t y) { return lines.At(x, y) == 1; }),
        kWhole);
    if (HasFailure()) return;
  }
}

TEST_F(RectangleMask, FollowsItsDescriptionOnPatterns) {
  Random random(5);
  using Pattern = bool (*)(int32_t, int32_t);
  const Pattern patterns[] = {
      [](int32_t, int32_t) { return true; },
      [](int32_t x, int32_t y) { return (x + y) % 2 == 0; },
      [](int32_t x, int32_t y) { return x % 3 == 0 && y % 2 == 0; },
      [](int32_t x, int32_t) { return x % 2 == 0; },
      [](int32_t, int32_t y) { return y % 2 == 1; },
      [](int32_t x, int32_t y) { return x % 3 != 2 && y % 3 != 2; },
      [](int32_t x, int32_t y) { return x == y || x == y + 1; },
      [](int32_t x, int32_t y) { return x + y == 149 || x + y == 150; },
      [](int32_t x, int32_t y) { return std::max(x, y) % 2 == 0; },  // corners within corners
      [](int32_t x, int32_t y) { return std::min(x, y) % 2 == 0; },
      [](int32_t x, int32_t y) { return std::max(std::abs(x - 75), std::abs(y - 50)) % 4 == 0; },
      [](int32_t x, int32_t y) {
        const int32_t squared = (x - 75) * (x - 75) + (y - 50) * (y - 50);
        return squared > 40 * 40 && squared < 45 * 45;
      },
  };
  for (const Pattern pattern : patterns) ExpectDescribed(Paint(150, 100, random, pattern), kWhole);
}

TEST_F(RectangleMask, OneRowAndOneColumn) {
  Random random(6);
  for (int i = 0; i < 20; ++i) {
    const auto some = [&](int32_t, int32_t) { return !random.OneIn(4); };
    ExpectDescribed(Paint(500, 1, random, some), kWhole);
    ExpectDescribed(Paint(1, 500, random, some), kWhole);
  }
}

TEST_F(RectangleMask, ADrawingIsLookedAtAsItIsDrawn) {
  const PictureRef drawing = Host().NewVectorPicture(9, 5, [](int32_t x, int32_t y) {
    return std::optional<uint32_t>(x > 5 && y == 2 ? 0x10FF10 : 0x808080);
  });
  EXPECT_EQ(Show(Extract(drawing, kWhole)),
            (Rows{".........", ".........", "......###", ".........", "........."}));
}

TEST_F(RectangleMask, AnAlphaPictureGivesAMaskWithoutAlpha) {
  host::Host& host = Host();
  PictureRef picture = host.NewPicture(3, 2, host::PictureLayout::WithAlpha());
  Fill(picture, kGrey, 0);
  Put(picture, 1, 1, kRed, 0);
  const PictureRef mask = Extract(picture, kWhole);
  EXPECT_TRUE(IsNewPicture(mask, 3, 2, false, [](int32_t x, int32_t y) {
    return std::optional<Rgb>(x == 1 && y == 1 ? kBlack : kWhite);
  }));
}

TEST_F(RectangleMask, SizesBeyond32767GiveNil) {
  host::Host& host = Host();
  const PictureRef widest = host.NewPicture(32767, 1, host::PictureLayout::WithAlpha());
  const PictureRef highest = host.NewPicture(1, 32767, host::PictureLayout::WithAlpha());
  const PictureRef tooWide = host.NewPicture(32768, 1, host::PictureLayout::WithAlpha());
  const PictureRef tooHigh = host.NewPicture(1, 32768, host::PictureLayout::WithAlpha());
  Put(widest, 32766, 0, kRed);
  Put(highest, 0, 32766, kRed);
  const PictureRef wideMask = Extract(widest, kWhole);
  const PictureRef highMask = Extract(highest, kWhole);
  ASSERT_TRUE(wideMask);
  ASSERT_TRUE(highMask);
  EXPECT_EQ(At(wideMask, 32766, 0), kBlack);
  EXPECT_EQ(At(highMask, 0, 32766), kBlack);
  EXPECT_FALSE(Extract(tooWide, kWhole));
  EXPECT_FALSE(Extract(tooHigh, kWhole));
}

TEST_F(RectangleMask, WhatCantBeOpenedGivesNil) {
  EXPECT_FALSE(Extract(nullptr, kWhole));
  EXPECT_FALSE(Call<PictureRef>("ExtractColorRectangleMaskKRT", PictureRef()));
  const auto shallow = host::PictureLayout::BitmapContext(host::kAlphaNoneSkipFirst, 0, 16);
  EXPECT_FALSE(Extract(Host().NewPicture(4, 4, shallow), kWhole));
}

TEST_F(RectangleMask, AMaskThatCantBeMadeGivesNil) {
  const PictureRef picture = Draw({"#.", ".#"});
  Host().faults.FailCall("newPicture");
  EXPECT_FALSE(Extract(picture, kWhole));
  EXPECT_TRUE(Extract(picture, kWhole));
  Host().faults.FailCall("REALLockPictureDescription", 2);  // the mask's
  EXPECT_FALSE(Extract(picture, kWhole));
}

TEST_F(RectangleMask, AHostWithoutNewPictureGivesNil) {
  host::Host& host = StartWithoutPlugin();
  host.faults.Hide("newPicture");
  LoadPluginUnderTest(host);
  const PictureRef picture = host.NewPicture(4, 4);
  EXPECT_FALSE(Extract(picture, kWhole));
}

}  // namespace
