// Searches worked out by hand.
#include <gtest/gtest.h>

#include "tests/colour/picture_search_fixture.h"
#include "tests/support/memory_end.h"

namespace picture_search {
namespace {

TEST_F(PictureSearch, ANeedleHigherThanTheHaystackIsNotFound) {
  EXPECT_EQ(Find({"AA", "AA"}, {"A", "A", "A"}), kNowhere);
}

TEST_F(PictureSearch, ANeedleWiderThanTheHaystackIsNotFound) {
  EXPECT_EQ(Find({"AA", "AA"}, {"AAA"}), kNowhere);
}

TEST_F(PictureSearch, APictureFindsItsLikeAndItself) {
  const PictureRef picture = Draw({"ABC", "DEF", "GHI"});
  EXPECT_EQ(Find(picture, Draw({"ABC", "DEF", "GHI"})), (Place{true, 0, 0}));
  EXPECT_EQ(Find(picture, picture), (Place{true, 0, 0}));
}

TEST_F(PictureSearch, OnePixelIsFoundWhereItStandsFirst) {
  EXPECT_EQ(Find({"AAA", "AAB", "BAA"}, {"B"}), (Place{true, 2, 1}));
  EXPECT_EQ(Find({"AAA", "AAB", "BAA"}, {"C"}), kNowhere);
}

TEST_F(PictureSearch, OfTwoCopiesTheUpperOneIsFoundThenTheLeftOne) {
  EXPECT_EQ(Find({"....AB", "....CD", "AB....", "CD...."}, {"AB", "CD"}), (Place{true, 4, 0}));
  EXPECT_EQ(Find({".....", ".ABAB", ".CDCD"}, {"AB", "CD"}), (Place{true, 1, 1}));
}

TEST_F(PictureSearch, ACopyInTheLastCornerIsFound) {
  EXPECT_EQ(Find({"....", "..AB", "..CD"}, {"AB", "CD"}), (Place{true, 2, 1}));
}

TEST_F(PictureSearch, WhatXAndYHeldBeforeMakesNoDifference) {
  const PictureRef haystack = Draw({"AB", "CD"});
  EXPECT_EQ(Find(haystack, Draw({"A"}), 5, 5), (Place{true, 0, 0}));
  EXPECT_EQ(Find(haystack, Draw({"D"}), -7, 99), (Place{true, 1, 1}));
  EXPECT_EQ(Find(haystack, Draw({"E"}), 5, 5), kNowhere);
}

TEST_F(PictureSearch, AlphaMakesNoDifference) {
  PictureRef haystack = Host().NewPicture(2, 1, PictureLayout::WithAlpha());
  PictureRef needle = Host().NewPicture(1, 1, PictureLayout::WithAlpha());
  Put(haystack, 0, 0, {1, 2, 3}, 0);
  Put(haystack, 1, 0, {4, 5, 6}, 0);
  Put(needle, 0, 0, {4, 5, 6}, 200);
  EXPECT_EQ(Find(haystack, needle), (Place{true, 1, 0}));
}

TEST_F(PictureSearch, EachChannelMakesADifference) {
  for (const Rgb other : {Rgb{11, 20, 30}, Rgb{10, 21, 30}, Rgb{10, 20, 31}}) {
    PictureRef haystack = Host().NewPicture(3, 1);
    PictureRef needle = Host().NewPicture(2, 1, PictureLayout::BitmapContext(1));
    Fill(haystack, {10, 20, 30});
    Fill(needle, {10, 20, 30});
    EXPECT_EQ(Find(haystack, needle), (Place{true, 0, 0}));
    Put(needle, 1, 0, other);
    EXPECT_EQ(Find(haystack, needle), kNowhere);
    Put(haystack, 2, 0, other);
    EXPECT_EQ(Find(haystack, needle), (Place{true, 1, 0}));
  }
}

// A candidate that fails within the needle's first row steps no cursor.
TEST_F(PictureSearch, AFailureInTheFirstRowMovesNothing) {
  EXPECT_EQ(Find({"AA.A.", ".AB..", ".CD.."}, {"AB", "CD"}), (Place{true, 1, 1}));
}

// A row of 30 equal pixels is all but the needle's row, whose last pixel stands where it should.
// What comes after the pixel that differs begins anew: there are 30 equal pixels again, and not 31.
TEST_F(PictureSearch, AfterAFailureInARepetitiveRowNothingIsTakenAsMatched) {
  const std::string run(30, 'A');
  EXPECT_EQ(Find({run + "CB" + run + "B"}, {run + "AB"}), kNowhere);
  EXPECT_EQ(Find({run + "CB" + run + "AB"}, {run + "AB"}), (Place{true, 32, 0}));
}

// A row AB AB ... of 40 pixels in which C stands for A from column 20 on. Its copy, shifted by two
// columns, differs in column 20 alone.
constexpr std::string_view kBreakingRow = "ABABABABABABABABABABCBCBCBCBCBCBCBCBCBCB";

// What fails is as near to the needle as can be: it takes most of a comparison to see it.
TEST_F(PictureSearch, TheSameIsFoundWithoutMemory) {
  const Internals* internals = LoadInternals(StartWithoutPlugin());
  const std::string run(30, 'A');
  const std::string breaking(kBreakingRow);
  const struct {
    std::string haystack;
    std::string needle;
    Place place;
  } searches[] = {
      {run + "CB" + run + "AB", run + "AB", {true, 32, 0}},
      {run + "CB" + run + "B", run + "AB", kNowhere},
      {"AB" + breaking, breaking, {true, 2, 0}},
      {"ABAB" + breaking, breaking, {true, 4, 0}},
      {"AB" + breaking.substr(0, 39) + "C", breaking, kNowhere},
  };
  for (const auto& search : searches) {
    const PictureRef haystack = Draw({search.haystack});
    const PictureRef needle = Draw({search.needle});
    MemoryCallsOf(internals).FailNth(1);
    EXPECT_EQ(Find(haystack, needle), search.place) << search.needle << " in " << search.haystack;
    EXPECT_GE(MemoryCallsOf(internals).made, 1);
    MemoryCallsOf(internals).FailNth(0);
  }
}

// The answer is known before anything is prepared.
TEST_F(PictureSearch, NoMemoryIsAskedForWhereTheNeedleDoesntFit) {
  const Internals* internals = LoadInternals(StartWithoutPlugin());
  const PictureRef haystack = Draw({"AA", "AA"});
  const PictureRef tooWide = Draw({"AAA"});
  const PictureRef tooHigh = Draw({"A", "A", "A"});
  const PictureRef fits = Draw({"AA", "AA"});
  const auto memoryCalls = [&](const PictureRef& needle) {
    MemoryCallsOf(internals).FailNth(0);
    Find(haystack, needle);
    return MemoryCallsOf(internals).made;
  };
  EXPECT_EQ(memoryCalls(tooWide), 0);
  EXPECT_EQ(memoryCalls(tooHigh), 0);
  EXPECT_GE(memoryCalls(fits), 1);
}

// The haystack ends where memory does: a search that goes on behind it ends the process.
TEST_F(PictureSearch, NothingIsReadBehindTheHaystack) {
  const auto atMemoryEnd = [&](const std::string& row) {
    const auto width = static_cast<int32_t>(row.size());
    const PictureRef drawn = Draw({row});
    const PictureRef picture =
        NewPictureAtMemoryEnd(Host(), width, 1, PictureLayout::BitmapContext(6));
    for (int32_t x = 0; x < width; ++x) Put(picture, x, 0, At(drawn, x, 0), noise.Byte());
    return picture;
  };
  for (const int32_t width : {1, 2, 31, 32, 33, 40, 63, 64, 65, 66, 96, 100, 128, 129, 130}) {
    SCOPED_TRACE(width);
    const PictureRef haystack = atMemoryEnd(std::string(static_cast<size_t>(width), '.'));
    EXPECT_EQ(Find(haystack, Draw({"A"})), kNowhere);
    EXPECT_EQ(Find(haystack, Draw({".A"})), kNowhere);
    EXPECT_EQ(Find(haystack, Draw({"A."})), kNowhere);
  }
  // Of the needle's 40 pixels, 39 match in the column after the last one at which it can begin.
  const std::string shifted = "AB" + std::string(kBreakingRow.substr(0, 39));
  EXPECT_EQ(Find(atMemoryEnd(shifted), Draw({kBreakingRow})), kNowhere);
}

// From here on, candidates whose first row matches and whose second doesn't.

// Column 0: row 1 of the haystack doesn't have the needle's second row. Column 1 goes on from
// there: both cursors pass the last row, and the white first rows are compared once more.
TEST_F(PictureSearch, WhatIsntThereIsFoundOnceBothCursorsHavePassedTheEnd) {
  EXPECT_EQ(Find({"WWW", "WWW"}, {"WW", "WB"}), (Place{true, 1, 0}));
}

// Row 0 matches, row 1 doesn't, and the cursors stay on 1. The next row that is tried, as row 1, is
// row 2: it matches, the needle's cursor passes its end and gives row 0 again, which row 3 doesn't
// match. Row 4 is tried as row 2. The haystack's cursor then passes its end: row 0 is tried as row
// 3, and matches, as everything comes from row 0 now.
TEST_F(PictureSearch, TheRowThatIsStoredCountsTheRowsTried) {
  EXPECT_EQ(Find({"A", "X", "A", "B", "C"}, {"A", "B"}), (Place{true, 0, 3}));
}

// Row 1 fails on row 2. Row 3, tried as row 2, is where the copy begins; but the needle's second
// row is its first by now. Row 0, tried as row 3, is nothing.
TEST_F(PictureSearch, ACopyAfterAFailureIsMissed) {
  EXPECT_EQ(Find({"X", "A", "X", "A", "B"}, {"A", "B"}), kNowhere);
}

// Column 0 fails on row 1. Column 1, where the copy is, is compared with row 2.
TEST_F(PictureSearch, ACopyInTheRowOfAFailureIsMissed) {
  EXPECT_EQ(Find({"AA", "XB", "ZZ"}, {"A", "B"}), (Place{true, 0, 1}));
  EXPECT_EQ(Find({"QAA", "QXB", "QZZ", "QZZ"}, {"A", "B"}), (Place{true, 1, 2}));
}

// A needle of three rows: the first candidate fails on its third row, two steps on. The next takes
// the needle's rows 0 and 0 for its second and third, the haystack's 3 and 4.
TEST_F(PictureSearch, AFailureFurtherDownMovesTheCursorsAsFar) {
  EXPECT_EQ(Find({"AA", "BZ", "XZ", "ZA", "ZA"}, {"A", "B", "C"}), (Place{true, 1, 0}));
  EXPECT_EQ(Find({"AA", "BZ", "XZ", "ZA", "ZB"}, {"A", "B", "C"}), (Place{true, 0, 1}));
}

}  // namespace
}  // namespace picture_search
