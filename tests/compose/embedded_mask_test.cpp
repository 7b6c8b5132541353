#include <algorithm>

#include "tests/support/fixture.h"

namespace {

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

bool AlphaComesFirst(const PictureLayout& layout) {
  return layout.storage == host::Storage::kBitmapContext && layout.alphaInfo % 2 == 0;
}

// The grey that reading gives for a pixel of these four bytes in memory.
int GreyOf(const PictureLayout& layout, const uint8_t* bytes) {
  if (layout.storage != host::Storage::kRowTable) return bytes[AlphaComesFirst(layout) ? 0 : 3];
  const int top = bytes[3];
  return (top % 128 * 2) | (top % 2);
}

// A bitmap of another layout, or another row table.
PictureLayout AnotherLayout(const PictureLayout& layout, Random& random) {
  const int32_t padding = random.Between(0, 3) * 4;
  if (layout.storage == host::Storage::kRowTable) return PictureLayout::RowTable(padding);
  return PictureLayout::BitmapContext(static_cast<uint32_t>(random.Between(1, 6)), padding);
}

class EmbeddedMaskTest : public support::PluginTest {
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

  bool HasMask(const PictureRef& picture) { return Call<bool>("HasMaskKRT as boolean", picture); }
  Result Get(const PictureRef& picture, bool swap) {
    return Call<Result>("EmbeddedMaskKRT", picture, swap);
  }
  void Set(const PictureRef& picture, bool swap, const PictureRef& mask) {
    const host::Snapshot before = Host().census.Take();
    Assign(Find("Picture", "EmbeddedMaskKRT", 1), picture, swap, mask);
    EXPECT_EQ(Host().census.DifferenceText(before), "");
  }

  // The target's bytes after an assignment: the mask's red, or what is left of 255, in the first
  // byte of each pixel that both pictures have.
  std::vector<uint8_t> Assigned(const PictureRef& target, bool swap, const PictureRef& mask) {
    std::vector<uint8_t> bytes = Bytes(target);
    const size_t rowBytes = bytes.size() / static_cast<size_t>(target->Height());
    for (int32_t y = 0; y < std::min(target->Height(), mask->Height()); ++y) {
      for (int32_t x = 0; x < std::min(target->Width(), mask->Width()); ++x) {
        const int red = At(mask, x, y).red;
        bytes[static_cast<size_t>(y) * rowBytes + static_cast<size_t>(x) * 4] =
            static_cast<uint8_t>(swap ? 255 - red : red);
      }
    }
    return bytes;
  }

  Random random{0xE3BED};
};

TEST_F(EmbeddedMaskTest, NilHasNoMask) { EXPECT_FALSE(HasMask(nullptr)); }

TEST_F(EmbeddedMaskTest, AskingForAMaskMakesNone) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    Start(pair.settings);
    const PictureRef picture = Noise(3, 2, pair.source);
    EXPECT_FALSE(HasMask(picture));
    EXPECT_FALSE(picture->Mask());
    picture->SetMask(Noise(3, 2, pair.source));
    EXPECT_TRUE(HasMask(picture));
    picture->SetMask(nullptr);
    EXPECT_FALSE(HasMask(picture));
  }
}

TEST_F(EmbeddedMaskTest, WithoutTheHostsFunctionThereIsNoMask) {
  StartWithoutPlugin().faults.Hide("REALGetPictureMask");
  support::LoadPluginUnderTest(Host());
  const PictureRef picture = Plain(3, 2, {});
  picture->SetMask(Plain(3, 2, {}));
  EXPECT_FALSE(HasMask(picture));
}

TEST_F(EmbeddedMaskTest, AnOpaquePictureIsWhiteAndSwappedBlack) {
  const PictureRef picture = Host().NewPicture(5, 4, PictureLayout::WithAlpha(2));
  support::Fill(picture, {1, 2, 3}, 255);
  EXPECT_TRUE(IsNewPicture(Get(picture, false), 5, 4, false, [](int32_t, int32_t) {
    return Rgb{255, 255, 255};
  }));
  EXPECT_TRUE(IsNewPicture(Get(picture, true), 5, 4, false, [](int32_t, int32_t) {
    return Rgb{0, 0, 0};
  }));
}

TEST_F(EmbeddedMaskTest, APictureWithoutAlphaGivesItsFourthBytes) {
  const PictureRef picture = Host().NewPicture(2, 1, PictureLayout::BitmapContext(5));
  support::Put(picture, 0, 0, {1, 2, 3}, 77);
  support::Put(picture, 1, 0, {1, 2, 3}, 255);
  EXPECT_TRUE(IsNewPicture(Get(picture, false), 2, 1, false, [](int32_t x, int32_t) {
    return x == 0 ? Rgb{77, 77, 77} : Rgb{255, 255, 255};
  }));
}

TEST_F(EmbeddedMaskTest, TheTopByteOfARowTableIsStretched) {
  host::Settings settings;
  settings.application = host::Application::kConsole;
  Start(settings);
  const PictureRef picture = Host().NewPicture(256, 1, PictureLayout::RowTable());
  for (int32_t x = 0; x < 256; ++x) support::Put(picture, x, 0, {9, 9, 9}, static_cast<uint8_t>(x));
  const Result mask = Get(picture, false);
  const auto grey = [&](int32_t top) { return At(mask, top, 0).red; };
  EXPECT_EQ(grey(127), 255);
  EXPECT_EQ(grey(64), 128);
  EXPECT_EQ(grey(128), 0);
  EXPECT_EQ(grey(0), 0);
  EXPECT_EQ(grey(1), 3);
  EXPECT_EQ(grey(2), 4);
  EXPECT_EQ(grey(255), 255);
  EXPECT_TRUE(IsNewPicture(mask, 256, 1, false, [](int32_t x, int32_t) {
    const int level = (x % 128) * 2 + x % 2;
    return Rgb{level, level, level};
  }));
}

TEST_F(EmbeddedMaskTest, ReadingFollowsTheRuleInEveryPairOfLayouts) {
  for (const LayoutPair& pair : support::AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (int32_t round = 0; round < 12; ++round) {
      const int32_t width = random.OneIn(3) ? random.Between(1, 4) : random.Between(5, 67);
      const int32_t height = random.Between(1, 4);
      const bool swap = random.OneIn(2);
      const PictureRef picture = Noise(width, height, pair.source);
      const std::vector<uint8_t> before = Bytes(picture);
      EXPECT_TRUE(IsNewPicture(Get(picture, swap), width, height, false, [&](int32_t x, int32_t y) {
        const int grey = GreyOf(pair.source, picture->Row(y) + static_cast<ptrdiff_t>(x) * 4);
        const int level = swap ? 255 - grey : grey;
        return Rgb{level, level, level};
      }));
      EXPECT_EQ(Bytes(picture), before);
      ASSERT_FALSE(HasFailure());
    }
  }
}

TEST_F(EmbeddedMaskTest, AWhiteMaskSetsTheFirstByteAndSwappedClearsIt) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef picture = Noise(5, 4, pair.source);
    const PictureRef white = Plain(5, 4, {255, 255, 255});
    const std::vector<uint8_t> before = Bytes(picture);
    for (const bool swap : {false, true}) {
      Set(picture, swap, white);
      for (int32_t y = 0; y < 4; ++y) {
        for (int32_t x = 0; x < 5; ++x) EXPECT_EQ(picture->Row(y)[x * 4], swap ? 0 : 255);
      }
    }
    std::vector<uint8_t> after = Bytes(picture);
    for (size_t row = 0; row < 4; ++row) {
      for (size_t x = 0; x < 5; ++x) {
        const size_t place = row * (after.size() / 4) + x * 4;
        after[place] = before[place];
      }
    }
    EXPECT_EQ(after, before) << "another byte was touched";
  }
}

TEST_F(EmbeddedMaskTest, OnlyRedOfTheMaskCounts) {
  const PictureRef picture = Host().NewPicture(1, 1, PictureLayout::WithAlpha(2));
  Set(picture, false, Plain(1, 1, {12, 200, 201}));
  EXPECT_EQ(picture->Row(0)[0], 12);
}

TEST_F(EmbeddedMaskTest, AssigningFollowsTheRuleInEveryMixtureOfLayoutsAndSizes) {
  for (const LayoutPair& pair : support::AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (int32_t round = 0; round < 16; ++round) {
      const int32_t width = random.OneIn(3) ? random.Between(1, 4) : random.Between(5, 67);
      const int32_t height = random.Between(1, 5);
      const bool swap = random.OneIn(2);
      const PictureRef picture = Noise(width, height, pair.source);
      const PictureRef mask =
          Noise(std::max(1, width + random.Between(-3, 3)),
                std::max(1, height + random.Between(-3, 3)), AnotherLayout(pair.source, random));
      const std::vector<uint8_t> expected = Assigned(picture, swap, mask);
      const std::vector<uint8_t> maskBefore = Bytes(mask);
      Set(picture, swap, mask);
      EXPECT_EQ(Bytes(picture), expected)
          << width << " x " << height << " from " << mask->Width() << " x " << mask->Height()
          << ", seed " << support::Seed();
      EXPECT_EQ(Bytes(mask), maskBefore);
      ASSERT_FALSE(HasFailure());
    }
  }
}

TEST_F(EmbeddedMaskTest, AssigningStopsAtTheEdgesOfASmallerMask) {
  const PictureRef picture = Host().NewPicture(4, 4, PictureLayout::WithAlpha(2));
  support::Fill(picture, {0, 0, 0}, 100);
  Set(picture, false, Plain(2, 3, {7, 7, 7}));
  for (int32_t y = 0; y < 4; ++y) {
    for (int32_t x = 0; x < 4; ++x) {
      EXPECT_EQ(picture->Row(y)[x * 4], x < 2 && y < 3 ? 7 : 100) << x << ", " << y;
    }
  }
}

TEST_F(EmbeddedMaskTest, APictureCanBeItsOwnMask) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef picture = Noise(37, 4, pair.source);
    const std::vector<uint8_t> expected = Assigned(picture, true, picture);
    Set(picture, true, picture);
    EXPECT_EQ(Bytes(picture), expected);
  }
}

TEST_F(EmbeddedMaskTest, WhatWasReadPutsTheSameAlphaBack) {
  for (const uint32_t alphaInfo : {2U, 4U, 6U}) {
    for (const bool swap : {false, true}) {
      const PictureLayout layout =
          alphaInfo == 2 ? PictureLayout::WithAlpha(2) : PictureLayout::BitmapContext(alphaInfo);
      const PictureRef picture = Noise(9, 3, layout);
      const std::vector<uint8_t> before = Bytes(picture);
      const Result mask = Get(picture, swap);
      for (int32_t y = 0; y < 3; ++y) {
        for (int32_t x = 0; x < 9; ++x) picture->Row(y)[x * 4] ^= 0x5A;
      }
      Set(picture, swap, mask);
      EXPECT_EQ(Bytes(picture), before);
    }
  }
}

TEST_F(EmbeddedMaskTest, AssigningLeavesTheCachedRendering) {
  const PictureRef picture = Host().NewPicture(3, 2, PictureLayout::WithAlpha(2));
  picture->Fill({0, 0, 0, 255});
  picture->Rendering();
  Set(picture, false, Plain(3, 2, {7, 7, 7}));
  EXPECT_EQ(picture->Row(0)[0], 7);
  EXPECT_FALSE(picture->RenderingIsCurrent());
}

TEST_F(EmbeddedMaskTest, AVectorTargetIsLeftAlone) {
  const PictureRef vector =
      Host().NewVectorPicture(3, 2, [](int32_t, int32_t) { return 0x123456U; });
  const std::vector<uint8_t> before = vector->ToRgba();
  Set(vector, false, Plain(3, 2, {7, 7, 7}));
  EXPECT_EQ(vector->ToRgba(), before);
}

TEST_F(EmbeddedMaskTest, AVectorMaskIsDrawnAndThenRead) {
  const PictureRef picture = Host().NewPicture(3, 2, PictureLayout::WithAlpha(2));
  const PictureRef vector = Host().NewVectorPicture(
      3, 2, [](int32_t x, int32_t y) { return static_cast<uint32_t>((10 * y + x) * 0x10000); });
  Set(picture, false, vector);
  EXPECT_EQ(picture->Row(1)[2 * 4], 12);
}

TEST_F(EmbeddedMaskTest, NilAndRefusedPicturesChangeNothing) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef picture = Noise(3, 2, pair.source);
    const PictureRef refused = Noise(3, 2, pair.source);
    refused->SetLocking(host::Locking::kRefused);
    Host().faults.FailAlways("REALGetPropValueInt");
    const std::vector<uint8_t> before = Bytes(picture);
    const std::vector<uint8_t> refusedBefore = Bytes(refused);
    Set(picture, false, nullptr);
    Set(nullptr, false, picture);
    Set(nullptr, false, nullptr);
    Set(picture, true, refused);
    Set(refused, true, picture);
    EXPECT_EQ(Bytes(picture), before);
    EXPECT_EQ(Bytes(refused), refusedBefore);
    EXPECT_FALSE(Get(nullptr, false));
    EXPECT_FALSE(Get(refused, false));
  }
}

TEST_F(EmbeddedMaskTest, WithoutANewPictureReadingGivesNil) {
  const PictureRef picture = Plain(3, 2, {});
  Host().faults.FailAlways("newPicture");
  EXPECT_FALSE(Get(picture, false));
  Host().faults.Clear();
  const PictureRef wide = Host().NewPicture(32768, 1, PictureLayout::BitmapContext(6));
  EXPECT_FALSE(Get(wide, false));
}

}  // namespace
