// FindPictureKRT beside its description followed to the letter, row cursors and all.
#include <algorithm>
#include <ostream>

#include "tests/support/fixture.h"

namespace {

using namespace support;
using host::PictureLayout;

struct Place {
  bool found = false;
  int32_t x = 0;
  int32_t y = 0;
  friend bool operator==(const Place&, const Place&) = default;
};
std::ostream& operator<<(std::ostream& out, const Place& place) {
  return place.found ? out << "at (" << place.x << ", " << place.y << ")" << std::flush
                     : out << "not found, (" << place.x << ", " << place.y << ")";
}
constexpr Place kNowhere{};

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

Place Described(Rows haystack, Rows needle) {
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
Place Copy(const Rows& haystack, const Rows& needle) {
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

TEST_F(PictureSearch, FollowsItsDescriptionInEveryPairOfLayouts) {
  int others = 0;  // searches that end elsewhere than at the first true copy
  const auto compare = [&](const PictureLayout& haystackLayout, const PictureLayout& needleLayout) {
    for (int i = 0; i < 60; ++i) {
      const int32_t width = noise.OneIn(4) ? noise.Between(1, 90) : noise.Between(1, 9);
      const int32_t height = noise.Between(1, 9);
      const int32_t rarity = noise.Between(1, 6);
      const auto colour = [&](int32_t, int32_t) {
        return noise.OneIn(rarity) ? noise.Between(0, 3) : 0;
      };
      const PictureRef haystack = Paint(width, height, haystackLayout, colour);
      const int32_t w = noise.Between(1, noise.OneIn(2) ? width : std::min(width, 3));
      const int32_t h = noise.Between(1, std::min(height, 4));
      const PictureRef needle =
          noise.OneIn(3) ? Paint(w, h, needleLayout, colour)
                         : Cut(haystack, noise.Between(0, width - w), noise.Between(0, height - h),
                               w, h, needleLayout, noise.OneIn(3));
      ExpectDescribed(haystack, needle);
      const Rows haystackRows(haystack);
      const Rows needleRows(needle);
      others += Described(haystackRows, needleRows) == Copy(haystackRows, needleRows) ? 0 : 1;
      if (HasFailure()) return;
    }
  };
  for (const LayoutPair& first : AllSourceLayouts()) {
    Start(first.settings);
    const bool desktop = first.settings.application == host::Application::kDesktop;
    for (const LayoutPair& second : AllSourceLayouts()) {
      const bool alsoDesktop = second.settings.application == host::Application::kDesktop;
      if (desktop != alsoDesktop) continue;
      SCOPED_TRACE(first.name + ", needle " + second.name);
      compare(first.source, second.source);
    }
  }
  EXPECT_GT(others, 100) << "too few of the searches show the cursors";
}

// Every column of rows about as long as the blocks in which a search may take them.
TEST_F(PictureSearch, EveryColumnIsFound) {
  for (const int32_t width : {1, 2, 31, 32, 33, 63, 64, 65, 127, 128, 129, 130, 200}) {
    const PictureRef haystack =
        Paint(width, 1, [&](int32_t, int32_t) { return noise.Between(0, 1); });
    for (int32_t x = 0; x < width; ++x) {
      const int32_t longest = width - x;
      const int32_t w = noise.Between(1, longest);
      PictureRef needle = Cut(haystack, x, 0, w, 1, PictureLayout::BitmapContext(1), false);
      const Rgb marked{1, 2, 3};
      const Rgb before = At(haystack, x, 0);
      Put(haystack, x, 0, marked);
      Put(needle, 0, 0, marked);
      EXPECT_EQ(Find(haystack, needle), (Place{true, x, 0})) << w << " in " << width;
      Put(haystack, x, 0, before);
      EXPECT_EQ(Find(haystack, needle), kNowhere) << w << " in " << width;
    }
  }
}

// Rows that repeat themselves, with a fault here and there: what has been compared once can be the
// beginning of a copy that starts later.
TEST_F(PictureSearch, FollowsItsDescriptionOnRowsThatRepeat) {
  for (int i = 0; i < 600; ++i) {
    const int32_t period = noise.Between(1, 5);
    std::vector<int32_t> pattern;
    for (int32_t n = 0; n < period; ++n) pattern.push_back(noise.Between(0, 1));
    const int32_t rarity = noise.Between(5, 100);
    const auto colour = [&](int32_t x, int32_t) {
      const int32_t regular = pattern[static_cast<size_t>(x % period)];
      return noise.OneIn(rarity) ? 1 - regular : regular;
    };
    const int32_t width = noise.Between(20, 300);
    const int32_t height = noise.Between(1, 3);
    const PictureRef haystack = Paint(width, height, colour);
    const int32_t w = noise.Between(2, width);
    const int32_t h = noise.Between(1, height);
    const PictureRef needle =
        noise.OneIn(2) ? Paint(w, h, colour)
                       : Cut(haystack, noise.Between(0, width - w), noise.Between(0, height - h), w,
                             h, PictureLayout::BitmapContext(1), noise.OneIn(2));
    ExpectDescribed(haystack, needle);
    if (HasFailure()) return;
  }
}

TEST_F(PictureSearch, FollowsItsDescriptionOnOneColour) {
  const auto one = [](int32_t, int32_t) { return 0; };
  const PictureRef haystack = Paint(150, 20, one);
  for (const int32_t height : {1, 2, 5, 20}) {
    for (const int32_t width : {1, 2, 70, 150}) {
      PictureRef needle = Paint(width, height, one);
      ExpectDescribed(haystack, needle);
      Put(needle, width - 1, height - 1, {0, 0, 0});  // differs in its last pixel
      ExpectDescribed(haystack, needle);
      Put(needle, width - 1, 0, {0, 0, 0});
      ExpectDescribed(haystack, needle);
    }
  }
}

// Runs that are one pixel shorter than the needle, in which each place is nearly a copy.
TEST_F(PictureSearch, RunsThatAreTooShortHoldNothing) {
  const PictureRef haystack =
      Paint(400, 3, [](int32_t x, int32_t) { return x % 50 == 49 ? 1 : 0; });
  const auto one = [](int32_t, int32_t) { return 0; };
  EXPECT_EQ(Find(haystack, Paint(50, 1, one)), kNowhere);
  EXPECT_EQ(Find(haystack, Paint(49, 1, one)), (Place{true, 0, 0}));
}

TEST_F(PictureSearch, ADrawingIsSearchedAndLookedForAsItIsDrawn) {
  host::Host& host = Host();
  const auto paint = [](int32_t x, int32_t y) {
    return std::optional<uint32_t>(x == 3 && y == 2 ? 0x112233 : 0xFFFFFF);
  };
  const PictureRef drawing = host.NewVectorPicture(6, 5, paint);
  const PictureRef dot = host.NewVectorPicture(
      1, 1, [](int32_t, int32_t) { return std::optional<uint32_t>(0x112233); });
  EXPECT_EQ(Find(drawing, dot), (Place{true, 3, 2}));
}

TEST_F(PictureSearch, NilIsNotFoundAndHoldsNothing) {
  const PictureRef picture = Draw({"A"});
  EXPECT_EQ(Find(nullptr, picture), kNowhere);
  EXPECT_EQ(Find(picture, nullptr), kNowhere);
  EXPECT_EQ(Find(nullptr, nullptr), kNowhere);
}

TEST_F(PictureSearch, WhatCantBeOpenedIsNotFoundAndHoldsNothing) {
  const PictureRef picture = Draw({"A"});
  const PictureRef shallow =
      Host().NewPicture(1, 1, PictureLayout::BitmapContext(host::kAlphaNoneSkipFirst, 0, 16));
  EXPECT_EQ(Find(shallow, picture), kNowhere);
  EXPECT_EQ(Find(picture, shallow), kNowhere);
}

TEST_F(PictureSearch, TheHaystackIsOpenedFirst) {
  const PictureRef picture = Draw({"A"});
  Host().faults.StartRecord();
  EXPECT_EQ(Find(nullptr, picture), kNowhere);
  EXPECT_TRUE(Host().faults.StopRecord().empty());
  Host().faults.StartRecord();
  EXPECT_EQ(Find(picture, nullptr), kNowhere);
  const std::vector<std::string> calls = Host().faults.StopRecord();
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "REALLockPictureDescription"), 1);
}

TEST_F(PictureSearch, ANeedleWithoutPixelsIsNotFound) {
  host::Settings settings;
  settings.application = host::Application::kConsole;
  host::Host& host = Start(settings);
  const PictureRef haystack = host.NewPicture(4, 4);
  for (const bool narrow : {true, false}) {
    const PictureRef needle = host.NewPicture(1, 1);
    needle->SetDescriptionHook([narrow](REALpictureDescription& description) {
      (narrow ? description.width : description.height) = 0;
    });
    EXPECT_EQ(Find(haystack, needle), kNowhere);
    EXPECT_EQ(Find(needle, haystack), kNowhere);
    EXPECT_EQ(Find(needle, needle), kNowhere);
  }
}

}  // namespace
