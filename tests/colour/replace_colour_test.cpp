#include <utility>
#include <vector>

#include "tests/support/fixture.h"

namespace {

using host::PictureLayout;
using support::LayoutPair;
using support::PictureRef;
using support::Random;
using support::Rgb;

constexpr std::pair<int32_t, int32_t> kReplacedSizes[] = {{1, 1}, {2, 3},  {5, 1},
                                                          {1, 9}, {19, 3}, {67, 2}};

uint32_t Argument(Rgb colour, uint32_t topByte = 0) {
  return topByte << 24 | static_cast<uint32_t>(colour.red) << 16 |
         static_cast<uint32_t>(colour.green) << 8 | static_cast<uint32_t>(colour.blue);
}

class ReplaceColour : public support::PluginTest {
 protected:
  PictureRef Replace(const PictureRef& picture, uint32_t search, uint32_t replacement) {
    return Call<PictureRef>("ReplaceColorKRT", picture, search, replacement);
  }
  PictureRef Extract(const PictureRef& picture, uint32_t search, uint32_t replacement,
                     uint32_t background) {
    return Call<PictureRef>("ExtractColorKRT", picture, search, replacement, background);
  }

  // A picture of noise in a few colours, so that every colour turns up often.
  PictureRef NoisePicture(int32_t width, int32_t height, const PictureLayout& layout,
                          Random& random, int32_t levels = 2) {
    PictureRef picture = Host().NewPicture(width, height, layout);
    support::FillWithNoise(picture, random, levels);
    return picture;
  }
};

TEST_F(ReplaceColour, EveryPairOfLayoutsGivesThePlainResult) {
  Random random(431);
  for (const LayoutPair& pair : support::AllLayoutPairs()) {
    Start(pair.settings);
    const bool alpha = support::HasAlpha(pair.source);
    for (const auto& [width, height] : kReplacedSizes) {
      const PictureRef picture = NoisePicture(width, height, pair.source, random);
      const std::vector<uint8_t> before = support::Bytes(picture);
      const Rgb search = support::At(picture, random.Between(0, width - 1), height / 2);
      const Rgb replacement{random.Byte(), random.Byte(), random.Byte()};
      const Rgb background{random.Byte(), random.Byte(), random.Byte()};

      EXPECT_TRUE(support::IsNewPicture(
          Replace(picture, Argument(search, random.Byte()), Argument(replacement, random.Byte())),
          width, height, alpha,
          [&](int32_t x, int32_t y) {
            const Rgb own = support::At(picture, x, y);
            return own == search ? replacement : own;
          }))
          << pair.name << ", replace " << search << " with " << replacement;
      EXPECT_TRUE(support::IsNewPicture(
          Extract(picture, Argument(search, random.Byte()), Argument(replacement, random.Byte()),
                  Argument(background, random.Byte())),
          width, height, false,
          [&](int32_t x, int32_t y) {
            return support::At(picture, x, y) == search ? replacement : background;
          }))
          << pair.name << ", extract " << search << " as " << replacement << " on " << background;
      EXPECT_TRUE(support::Bytes(picture) == before) << pair.name << ": the source was changed";
    }
  }
}

TEST_F(ReplaceColour, ColourThatOccursNowhereGivesACopyAndABackground) {
  Random random(432);
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    Start(pair.settings);
    const PictureRef picture = NoisePicture(9, 4, pair.source, random);
    EXPECT_TRUE(support::IsNewPicture(
        Replace(picture, 0x010203, 0xFFFFFF), 9, 4, support::HasAlpha(pair.source),
        [&](int32_t x, int32_t y) { return support::At(picture, x, y); }))
        << pair.name;
    EXPECT_TRUE(support::IsNewPicture(Extract(picture, 0x010203, 0xFFFFFF, 0x405060), 9, 4, false,
                                      [](int32_t, int32_t) {
                                        return Rgb{0x40, 0x50, 0x60};
                                      }))
        << pair.name;
  }
}

TEST_F(ReplaceColour, ExtractionOntoItsOwnColourIsUniform) {
  Random random(433);
  const PictureRef picture = NoisePicture(12, 5, host::PictureLayout{}, random, 256);
  EXPECT_TRUE(support::IsNewPicture(
      Extract(picture, Argument(support::At(picture, 3, 3)), 0x0A0B0C, 0x0A0B0C), 12, 5, false,
      [](int32_t, int32_t) {
        return Rgb{10, 11, 12};
      }));
}

TEST_F(ReplaceColour, TopBytesOfTheColoursAreIgnored) {
  const PictureRef picture = Host().NewPicture(2, 1);
  support::Put(picture, 0, 0, {1, 2, 3});
  support::Put(picture, 1, 0, {4, 5, 6});
  const auto replaced = [](int32_t x, int32_t) { return x == 0 ? Rgb{7, 8, 9} : Rgb{4, 5, 6}; };
  const auto extracted = [](int32_t x, int32_t) { return x == 0 ? Rgb{7, 8, 9} : Rgb{0, 0, 1}; };
  for (const uint32_t top : {0x00000000U, 0x01000000U, 0x80000000U, 0xFF000000U}) {
    EXPECT_TRUE(support::IsNewPicture(Replace(picture, top | 0x010203, top | 0x070809), 2, 1, false,
                                      replaced));
    EXPECT_TRUE(support::IsNewPicture(
        Extract(picture, top | 0x010203, top | 0x070809, top | 0x000001), 2, 1, false, extracted));
  }
}

TEST_F(ReplaceColour, PartlyTransparentPixelMatchesAndBecomesOpaque) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    Start(pair.settings);
    const PictureRef picture = Host().NewPicture(16, 16, pair.source);
    for (int32_t i = 0; i < 256; ++i) {
      support::Put(picture, i % 16, i / 16, {9, 8, 7}, static_cast<uint8_t>(i));
    }
    const auto expected = [](int32_t, int32_t) { return Rgb{1, 2, 3}; };
    EXPECT_TRUE(support::IsNewPicture(Replace(picture, 0x090807, 0x010203), 16, 16,
                                      support::HasAlpha(pair.source), expected))
        << pair.name;
    EXPECT_TRUE(
        support::IsNewPicture(Extract(picture, 0x090807, 0x010203, 0), 16, 16, false, expected))
        << pair.name;
  }
}

TEST_F(ReplaceColour, PixelThatDiffersByOneInAChannelDoesNotMatch) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    Start(pair.settings);
    const Rgb row[] = {{100, 100, 100}, {101, 100, 100}, {99, 100, 100}, {100, 101, 100},
                       {100, 99, 100},  {100, 100, 101}, {100, 100, 99}};
    const PictureRef picture = Host().NewPicture(7, 1, pair.source);
    for (int32_t x = 0; x < 7; ++x) support::Put(picture, x, 0, row[x], 100);
    EXPECT_TRUE(support::IsNewPicture(Replace(picture, 0x646464, 0), 7, 1,
                                      support::HasAlpha(pair.source),
                                      [&](int32_t x, int32_t) {
                                        return x == 0 ? Rgb{0, 0, 0} : row[x];
                                      }))
        << pair.name;
    EXPECT_TRUE(support::IsNewPicture(Extract(picture, 0x646464, 0, 0xFFFFFF), 7, 1, false,
                                      [](int32_t x, int32_t) {
                                        return x == 0 ? Rgb{0, 0, 0} : Rgb{255, 255, 255};
                                      }))
        << pair.name;
  }
}

TEST_F(ReplaceColour, VectorPictureIsDrawnAndSearched) {
  const PictureRef picture = Host().NewVectorPicture(
      6, 4,
      [](int32_t x, int32_t) -> std::optional<uint32_t> { return x < 2 ? 0x204060 : 0x000001; });
  EXPECT_TRUE(support::IsNewPicture(Extract(picture, 0x204060, 0xFF0000, 0x00FF00), 6, 4, false,
                                    [](int32_t x, int32_t) {
                                      return x < 2 ? Rgb{255, 0, 0} : Rgb{0, 255, 0};
                                    }));
}

TEST_F(ReplaceColour, PictureThatCannotBeOpenedGivesNil) {
  for (const PictureRef& picture : {PictureRef(), RefusedPicture()}) {
    EXPECT_FALSE(Replace(picture, 0, 1));
    EXPECT_FALSE(Extract(picture, 0, 1, 2));
  }
  EXPECT_EQ(Host().faults.Calls("newPicture"), 0);
}

TEST_F(ReplaceColour, PictureWithoutPixelsGivesNil) {
  for (const auto& [width, height] : {std::pair{0, 3}, std::pair{4, 0}}) {
    const PictureRef picture = PictureThatOpensAs(width, height);
    EXPECT_FALSE(Replace(picture, 0, 1));
    EXPECT_FALSE(Extract(picture, 0, 1, 2));
    EXPECT_EQ(Host().faults.Calls("newPicture"), 0);
  }
}

TEST_F(ReplaceColour, ExtractionHasTheSizeLimitOfPicturesWithoutAlpha) {
  const PictureLayout layout = PictureLayout::WithAlpha();
  for (const bool wide : {true, false}) {
    const auto extract = [&](int32_t length) {
      const PictureRef picture =
          wide ? Host().NewPicture(length, 1, layout) : Host().NewPicture(1, length, layout);
      support::Fill(picture, {1, 2, 3});
      return Extract(picture, 0x010203, 0xFFFFFF, 0);
    };
    EXPECT_FALSE(extract(32768));
    const PictureRef largest = extract(32767);
    ASSERT_TRUE(largest);
    EXPECT_EQ(support::At(largest, wide ? 32766 : 0, wide ? 0 : 32766), (Rgb{255, 255, 255}));
  }
}

TEST_F(ReplaceColour, ReplacementInAPictureWithAlphaHasNoUpperSizeLimit) {
  const PictureRef picture = Host().NewPicture(32768, 1, PictureLayout::WithAlpha());
  support::Fill(picture, {1, 2, 3}, 17);
  EXPECT_TRUE(support::IsNewPicture(Replace(picture, 0x010203, 0x040506), 32768, 1, true,
                                    [](int32_t, int32_t) {
                                      return Rgb{4, 5, 6};
                                    }));
}

TEST_F(ReplaceColour, HostThatFailsToMakeThePictureGivesNil) {
  const PictureRef picture = Host().NewPicture(5, 3);
  Host().faults.FailAlways("newPicture");
  EXPECT_FALSE(Replace(picture, 0, 1));
  EXPECT_FALSE(Extract(picture, 0, 1, 2));
}

TEST_F(ReplaceColour, HostWithoutAnEntryThatIsNeededGivesNil) {
  for (const char* entry : {"newPicture", "REALLockPictureDescription"}) {
    StartWithoutPlugin().faults.Hide(entry);
    support::LoadPluginUnderTest(Host());
    const PictureRef picture = Host().NewPicture(5, 3);
    EXPECT_FALSE(Replace(picture, 0, 1)) << entry;
    EXPECT_FALSE(Extract(picture, 0, 1, 2)) << entry;
  }
}

TEST_F(ReplaceColour, NewPictureThatCannotBeOpenedGivesNilAndIsDropped) {
  const PictureRef picture = Host().NewPicture(5, 3);
  Host().settings.opaqueLayout = PictureLayout::BitmapContext(host::kAlphaNoneSkipFirst, 0, 16);
  EXPECT_FALSE(Replace(picture, 0, 1));
  EXPECT_FALSE(Extract(picture, 0, 1, 2));
  EXPECT_EQ(Host().faults.Calls("newPicture"), 2);
}

TEST_F(ReplaceColour, AlphaPictureOnAHostTooOldForItGivesNilAndItsExtractionWorks) {
  host::Settings old;
  old.version = 2011.03;
  Start(old);
  const PictureRef picture = Host().NewPicture(5, 3, PictureLayout::WithAlpha());
  support::Fill(picture, {1, 2, 3}, 0);
  EXPECT_FALSE(Replace(picture, 0x010203, 0));
  EXPECT_TRUE(support::IsNewPicture(Extract(picture, 0x010203, 0x112233, 0), 5, 3, false,
                                    [](int32_t, int32_t) {
                                      return Rgb{0x11, 0x22, 0x33};
                                    }));
}

}  // namespace
