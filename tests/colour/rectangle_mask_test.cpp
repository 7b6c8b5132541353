// Masks of coloured rectangles, worked out by hand.
#include <gtest/gtest.h>

#include "tests/colour/rectangle_mask_fixture.h"

namespace rectangle_mask {
namespace {

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

// The first rectangle is the column on the right. The second one goes around it: its last column is
// that column, and it ends there.
TEST_F(RectangleMask, ALaterRectangleEndsInTheColumnOfAnEarlierOne) {
  const std::string gap(39, '.');
  const std::string right = "." + gap + "#..";
  const std::string twoLines = "#" + gap + "#..";
  const std::string oneLine = "#" + gap + "...";
  const std::string line(41, '#');
  EXPECT_EQ(Mask({right, right, twoLines, twoLines, oneLine, line + ".."}),
            (Rows{right, right, line + "..", line + "..", line + "..", line + ".."}));
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
  const PictureRef corners = Draw({"#..#", "....", "#..#"});
  EXPECT_EQ(Show(Call<PictureRef>("ExtractColorRectangleMaskKRT", corners)),
            (Rows{"#..#", "....", "#..#"}));
  Random random(1);
  const PictureRef picture =
      Paint(40, 30, random, [&](int32_t, int32_t) { return random.OneIn(9); });
  const PictureRef mask = Call<PictureRef>("ExtractColorRectangleMaskKRT", picture);
  Cells covered = GrowRectangles(ColouredCells(picture, kWhole));
  EXPECT_TRUE(IsNewPicture(mask, 40, 30, false, [&](int32_t x, int32_t y) {
    return std::optional<Rgb>(covered.At(x, y) == 1 ? kBlack : kWhite);
  }));
}

}  // namespace
}  // namespace rectangle_mask
