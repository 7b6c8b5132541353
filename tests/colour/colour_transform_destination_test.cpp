#include <algorithm>
#include <string>

#include "tests/colour/colour_transform_fixture.h"

namespace colour_transform {
namespace {

TEST_F(ColourTransform, DestinationOfTheSizeOrLargerIsUsedInEveryPairOfLayouts) {
  Random random(425);
  for (const LayoutPair& pair : support::AllLayoutPairs()) {
    Start(pair.settings);
    const bool console = pair.source.storage == host::Storage::kRowTable;
    const PictureLayout& destLayout = console                          ? pair.settings.consoleLayout
                                      : support::HasAlpha(pair.source) ? pair.settings.alphaLayout
                                                                       : pair.settings.opaqueLayout;
    for (const auto& [moreColumns, moreRows] :
         {std::pair{0, 0}, std::pair{3, 0}, std::pair{0, 2}, std::pair{18, 5}}) {
      const PictureRef picture = NoisePicture(23, 3, pair.source, random);
      const PictureRef dest = NoisePicture(23 + moreColumns, 3 + moreRows, destLayout, random);
      const std::vector<uint8_t> sourceBefore = support::Bytes(picture);
      const std::vector<uint8_t> destBefore = support::Bytes(dest);
      const Table red = RandomTable(random);
      const Table green = RandomTable(random);
      const Table blue = RandomTable(random);
      const PictureRef result = Transform(picture, Block(red), Block(blue), Block(green), dest);
      EXPECT_EQ(result, dest) << pair.name;
      EXPECT_TRUE(support::PixelsAre(dest, destBefore,
                                     [&](int32_t x, int32_t y) -> std::optional<Rgb> {
                                       if (x >= 23 || y >= 3) return std::nullopt;
                                       return Mapped(support::At(picture, x, y), red, green, blue);
                                     }))
          << pair.name;
      EXPECT_TRUE(dest->RenderingIsCurrent()) << pair.name;
      EXPECT_TRUE(support::Bytes(picture) == sourceBefore) << pair.name;
      EXPECT_EQ(Host().faults.Calls("newPicture"), 0);
    }
  }
}

TEST_F(ColourTransform, DestinationOnePixelNarrowerOrShorterIsIgnored) {
  Random random(426);
  for (const auto& [width, height] :
       {std::pair{8, 6}, std::pair{9, 5}, std::pair{8, 60}, std::pair{90, 5}}) {
    const PictureRef picture = NoisePicture(9, 6, PictureLayout{}, random);
    const PictureRef dest = NoisePicture(width, height, PictureLayout{}, random);
    const std::vector<uint8_t> before = support::Bytes(dest);
    const BlockRef curve = Block(Inverted());
    const PictureRef result = Transform(picture, curve, curve, curve, dest);
    EXPECT_FALSE(result == dest);
    EXPECT_TRUE(support::IsNewPicture(result, 9, 6, false,
                                      [&](int32_t x, int32_t y) {
                                        const Rgb p = support::At(picture, x, y);
                                        return Rgb{255 - p.red, 255 - p.green, 255 - p.blue};
                                      }))
        << width << " x " << height;
    EXPECT_TRUE(support::Bytes(dest) == before);
  }
}

TEST_F(ColourTransform, PictureMayBeItsOwnDestination) {
  NEEDS_NESTED_LOCKS();
  Random random(427);
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    Start(pair.settings);
    const PictureRef picture = NoisePicture(37, 4, pair.source, random);
    const std::vector<uint8_t> before = support::Bytes(picture);
    std::vector<Rgb> colours;
    for (int32_t i = 0; i < 37 * 4; ++i) {
      colours.push_back(support::At(picture, i % 37, i / 37));
    }
    const Table red = RandomTable(random);
    const Table green = RandomTable(random);
    const Table blue = RandomTable(random);
    EXPECT_EQ(Transform(picture, Block(red), Block(blue), Block(green), picture), picture);
    EXPECT_TRUE(support::PixelsAre(picture, before, [&](int32_t x, int32_t y) {
      return Mapped(colours[static_cast<size_t>(y * 37 + x)], red, green, blue);
    })) << pair.name;
    EXPECT_TRUE(picture->RenderingIsCurrent()) << pair.name;
  }
}

TEST_F(ColourTransform, DestinationThatCannotBeOpenedIsIgnored) {
  Random random(428);
  const PictureRef picture = NoisePicture(4, 3, PictureLayout{}, random);
  const PictureRef vector = Host().NewVectorPicture(
      4, 3, [](int32_t, int32_t) -> std::optional<uint32_t> { return 0x123456; });
  for (const PictureRef& dest : {RefusedPicture(), vector}) {
    const BlockRef identity = IdentityBlock();
    const PictureRef result = Transform(picture, identity, identity, identity, dest);
    EXPECT_FALSE(result == dest);
    EXPECT_TRUE(support::IsNewPicture(
        result, 4, 3, false, [&](int32_t x, int32_t y) { return support::At(picture, x, y); }));
  }
}

TEST_F(ColourTransform, DestinationWhoseSizeCannotBeReadIsIgnored) {
  for (const auto& [width, height] : {std::pair{4, 3}, std::pair{1, 1}}) {
    for (int failing = 1; failing <= 2; ++failing) {
      Start();
      const PictureRef picture = Host().NewPicture(width, height);
      const PictureRef dest = Host().NewPicture(width, height);
      Host().faults.FailCall("REALGetPropValueInt", failing);
      const BlockRef identity = IdentityBlock();
      const PictureRef result = Transform(picture, identity, identity, identity, dest);
      EXPECT_TRUE(result);
      EXPECT_FALSE(result == dest) << width << " x " << height << ", call " << failing;
    }
  }
}

// A host may write the pixels back when they are unlocked: what it has drawn before is out of date
// only then.
TEST_F(ColourTransform, RenderingOfTheDestinationIsDiscardedOnceItsPixelsAreUnlocked) {
  const PictureRef dest = Host().NewPicture(4, 3);
  const BlockRef identity = IdentityBlock();
  const PictureRef picture = Host().NewPicture(4, 3);
  Host().faults.StartRecord();
  EXPECT_EQ(Transform(picture, identity, identity, identity, dest), dest);
  const std::vector<std::string> calls = Host().faults.StopRecord();
  const std::string unlocked[] = {"unlockPictureDescription", "REALPictureClearCache"};
  EXPECT_NE(std::search(calls.begin(), calls.end(), std::begin(unlocked), std::end(unlocked)),
            calls.end());
}

TEST_F(ColourTransform, PictureThatCannotBeOpenedGivesNilAndLeavesTheDestination) {
  Random random(429);
  const PictureRef dest = NoisePicture(8, 8, PictureLayout{}, random);
  const std::vector<uint8_t> before = support::Bytes(dest);
  const BlockRef identity = IdentityBlock();
  EXPECT_FALSE(Transform(RefusedPicture(), identity, identity, identity, dest));
  EXPECT_TRUE(support::Bytes(dest) == before);
}

TEST_F(ColourTransform, SizeLimitHoldsForANewPictureAndNotForADestination) {
  const PictureLayout layout = PictureLayout::WithAlpha();
  const BlockRef curve = Block(Inverted());
  for (const bool wide : {true, false}) {
    const auto make = [&](int32_t length) {
      PictureRef picture =
          wide ? Host().NewPicture(length, 1, layout) : Host().NewPicture(1, length, layout);
      support::Fill(picture, {1, 2, 3});
      return picture;
    };
    EXPECT_FALSE(Transform(make(32768), curve, curve, curve));
    EXPECT_TRUE(Transform(make(32767), curve, curve, curve));
    const PictureRef dest = make(32768);
    EXPECT_EQ(Transform(make(32768), curve, curve, curve, dest), dest);
    EXPECT_EQ(support::At(dest, wide ? 32767 : 0, wide ? 0 : 32767), (Rgb{254, 253, 252}));
  }
}

TEST_F(ColourTransform, PictureWithoutPixelsGivesNilOrTheDestinationAsItWas) {
  Random random(430);
  for (const auto& [width, height] : {std::pair{0, 3}, std::pair{4, 0}}) {
    const PictureRef picture = PictureThatOpensAs(width, height);
    const PictureRef dest = NoisePicture(5, 5, PictureLayout::RowTable(), random);
    const std::vector<uint8_t> before = support::Bytes(dest);
    const BlockRef curve = Block(Inverted());
    EXPECT_FALSE(Transform(picture, curve, curve, curve));
    EXPECT_EQ(Transform(picture, curve, curve, curve, dest), dest);
    EXPECT_TRUE(support::Bytes(dest) == before);
  }
}

// A destination may say more about its size than its pixels can hold.
TEST_F(ColourTransform, PixelsThatTheDestinationDoesNotHaveAreLeftOut) {
  Random random(434);
  host::Settings console;
  console.application = host::Application::kConsole;
  Start(console);
  const PictureRef picture = NoisePicture(6, 4, PictureLayout::RowTable(), random);
  const PictureRef dest = NoisePicture(6, 4, PictureLayout::RowTable(), random);
  dest->SetDescriptionHook([](REALpictureDescription& description) {
    description.width = 5;
    description.height = 2;
  });
  const std::vector<uint8_t> before = support::Bytes(dest);
  const BlockRef curve = Block(Inverted());
  EXPECT_EQ(Transform(picture, curve, curve, curve, dest), dest);
  EXPECT_TRUE(support::PixelsAre(dest, before, [&](int32_t x, int32_t y) -> std::optional<Rgb> {
    if (x >= 5 || y >= 2) return std::nullopt;
    const Rgb p = support::At(picture, x, y);
    return Rgb{255 - p.red, 255 - p.green, 255 - p.blue};
  }));
}

}  // namespace
}  // namespace colour_transform
