// Searches beside their description, and pictures that can't be searched.
#include <gtest/gtest.h>

#include "tests/colour/picture_search_fixture.h"

namespace picture_search {
namespace {

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
  const PictureRef shallow = RefusedPicture(1, 1);
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
}  // namespace picture_search
