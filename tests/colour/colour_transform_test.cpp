#include "tests/colour/colour_transform_fixture.h"

namespace colour_transform {
namespace {

TEST_F(ColourTransform, EveryPairOfLayoutsGivesThePlainResult) {
  Random random(421);
  for (const LayoutPair& pair : support::AllLayoutPairs()) {
    Start(pair.settings);
    for (const auto& [width, height] : kSizes) {
      const PictureRef picture = NoisePicture(width, height, pair.source, random);
      const std::vector<uint8_t> before = support::Bytes(picture);
      const Table red = RandomTable(random);
      const Table green = RandomTable(random);
      const Table blue = RandomTable(random);
      EXPECT_TRUE(support::IsNewPicture(
          Transform(picture, Block(red), Block(blue), Block(green)), width, height, false,
          [&](int32_t x, int32_t y) {
            return Mapped(support::At(picture, x, y), red, green, blue);
          }))
          << pair.name;
      EXPECT_TRUE(support::Bytes(picture) == before) << pair.name << ": the source was changed";
    }
  }
}

TEST_F(ColourTransform, EveryValueOfEveryChannelIsLookedUp) {
  Random random(422);
  const PictureRef picture = Host().NewPicture(256, 1);
  for (int32_t x = 0; x < 256; ++x) support::Put(picture, x, 0, {x, 255 - x, x ^ 85});
  const Table red = RandomTable(random);
  const Table green = RandomTable(random);
  const Table blue = RandomTable(random);
  EXPECT_TRUE(support::IsNewPicture(Transform(picture, Block(red), Block(blue), Block(green)), 256,
                                    1, false, [&](int32_t x, int32_t) {
                                      return Mapped({x, 255 - x, x ^ 85}, red, green, blue);
                                    }));
}

TEST_F(ColourTransform, IdentityTablesReproduceTheColoursOpaque) {
  Random random(423);
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    Start(pair.settings);
    const PictureRef picture = NoisePicture(11, 4, pair.source, random);
    const BlockRef identity = IdentityBlock();
    EXPECT_TRUE(
        support::IsNewPicture(Transform(picture, identity, identity, identity), 11, 4, false,
                              [&](int32_t x, int32_t y) { return support::At(picture, x, y); }))
        << pair.name;
  }
}

TEST_F(ColourTransform, OneBlockForAllThreeAppliesOneCurve) {
  Random random(424);
  const PictureRef picture = NoisePicture(6, 5, PictureLayout{}, random);
  const BlockRef curve = Block(Inverted());
  EXPECT_TRUE(support::IsNewPicture(Transform(picture, curve, curve, curve), 6, 5, false,
                                    [&](int32_t x, int32_t y) {
                                      const Rgb p = support::At(picture, x, y);
                                      return Rgb{255 - p.red, 255 - p.green, 255 - p.blue};
                                    }));
}

TEST_F(ColourTransform, SecondTableMapsBlueAndTheThirdGreen) {
  const PictureRef picture = Host().NewPicture(1, 1);
  support::Put(picture, 0, 0, {10, 20, 30});
  const BlockRef zero = Block(Constant(0));
  const PictureRef withoutBlue = Transform(picture, IdentityBlock(), zero, IdentityBlock());
  ASSERT_TRUE(withoutBlue);
  EXPECT_EQ(support::At(withoutBlue, 0, 0), (Rgb{10, 20, 0}));
  const PictureRef withoutGreen = Transform(picture, IdentityBlock(), IdentityBlock(), zero);
  ASSERT_TRUE(withoutGreen);
  EXPECT_EQ(support::At(withoutGreen, 0, 0), (Rgb{10, 0, 30}));
}

TEST_F(ColourTransform, NilArgumentsRaiseInTheOrderPictureRedGreenBlue) {
  const PictureRef picture = Host().NewPicture(4, 3);
  const BlockRef block = IdentityBlock();
  const PictureRef nilPicture;
  const BlockRef nil;
  const auto raised = [&](const PictureRef& self, const BlockRef& red, const BlockRef& blue,
                          const BlockRef& green) {
    EXPECT_FALSE(CallStoring<PictureRef>("TransformColorsKRT", self, red, blue, green, picture));
    return TakeException();
  };
  EXPECT_EQ(raised(nilPicture, block, block, block), "NilObjectException: picture is nil");
  EXPECT_EQ(raised(nilPicture, nil, nil, nil), "NilObjectException: picture is nil");
  EXPECT_EQ(raised(picture, nil, block, block), "NilObjectException: red memoryblock is nil");
  EXPECT_EQ(raised(picture, nil, nil, nil), "NilObjectException: red memoryblock is nil");
  EXPECT_EQ(raised(picture, block, block, nil), "NilObjectException: green memoryblock is nil");
  EXPECT_EQ(raised(picture, block, nil, nil), "NilObjectException: green memoryblock is nil");
  EXPECT_EQ(raised(picture, block, nil, block), "NilObjectException: blue memoryblock is nil");
  EXPECT_EQ(Host().faults.Calls("memoryBlockGetPtr"), 0);
  EXPECT_EQ(Host().faults.Calls("REALLockPictureDescription"), 0);
}

TEST_F(ColourTransform, EntriesThatAShortTableLacksAreIdentity) {
  const PictureRef picture = Host().NewPicture(256, 1);
  for (int32_t x = 0; x < 256; ++x) support::Put(picture, x, 0, {x, x, x});
  for (const size_t size : {0, 1, 2, 100, 254, 255, 256, 257, 1000}) {
    const BlockRef shorter = Host().NewMemoryBlock(std::vector<uint8_t>(size, 42));
    const auto expected = [&](int32_t x) { return static_cast<size_t>(x) < size ? 42 : x; };
    const BlockRef full = IdentityBlock();
    EXPECT_TRUE(support::IsNewPicture(Transform(picture, shorter, full, full), 256, 1, false,
                                      [&](int32_t x, int32_t) {
                                        return Rgb{expected(x), x, x};
                                      }))
        << "red of " << size << " bytes";
    EXPECT_TRUE(support::IsNewPicture(Transform(picture, full, shorter, full), 256, 1, false,
                                      [&](int32_t x, int32_t) {
                                        return Rgb{x, x, expected(x)};
                                      }))
        << "blue of " << size << " bytes";
    EXPECT_TRUE(support::IsNewPicture(Transform(picture, full, full, shorter), 256, 1, false,
                                      [&](int32_t x, int32_t) {
                                        return Rgb{x, expected(x), x};
                                      }))
        << "green of " << size << " bytes";
  }
}

TEST_F(ColourTransform, TableWhoseSizeNobodyKnowsIsTrusted) {
  for (const bool entryMissing : {false, true}) {
    StartWithoutPlugin();
    if (entryMissing) Host().faults.Hide("memoryBlockGetSize");
    support::LoadPluginUnderTest(Host());
    const PictureRef picture = Host().NewPicture(1, 1);
    support::Put(picture, 0, 0, {255, 254, 253});
    const BlockRef table = Block(Inverted());
    if (!entryMissing) table->HideSize();
    const PictureRef result = Transform(picture, table, table, table);
    ASSERT_TRUE(result);
    EXPECT_EQ(support::At(result, 0, 0), (Rgb{0, 1, 2}));
  }
}

TEST_F(ColourTransform, TableWithoutBytesGivesNilAndNoException) {
  const PictureRef picture = Host().NewPicture(4, 3);
  for (int which = 0; which < 3; ++which) {
    BlockRef blocks[] = {IdentityBlock(), IdentityBlock(), IdentityBlock()};
    blocks[which]->HidePointer();
    EXPECT_FALSE(Transform(picture, blocks[0], blocks[1], blocks[2], picture)) << which;
  }
  EXPECT_EQ(Host().faults.Calls("REALLockPictureDescription"), 0);
}

TEST_F(ColourTransform, TablesAreLockedMeasuredAndOnlyThenRead) {
  const PictureRef picture = Host().NewPicture(4, 3);
  const BlockRef block = IdentityBlock();
  Host().faults.StartRecord();
  const PictureRef result = Transform(picture, block, block, block);
  const std::vector<std::string> calls = Host().faults.StopRecord();
  ASSERT_TRUE(result);
  ASSERT_GT(calls.size(), 12U);
  for (size_t i = 0; i < 9; i += 3) {
    EXPECT_EQ(calls[i], "REALLockObject");
    EXPECT_EQ(calls[i + 1], "memoryBlockGetSize");
    EXPECT_EQ(calls[i + 2], "memoryBlockGetPtr");
  }
  for (size_t i = calls.size() - 3; i < calls.size(); ++i) EXPECT_EQ(calls[i], "REALUnlockObject");
}

TEST_F(ColourTransform, HostThatCannotMakeThePictureGivesNil) {
  const PictureRef picture = Host().NewPicture(4, 3);
  const BlockRef identity = IdentityBlock();
  Host().faults.FailCall("newPicture");
  EXPECT_FALSE(Transform(picture, identity, identity, identity));
  Host().settings.opaqueLayout = PictureLayout::BitmapContext(host::kAlphaNoneSkipFirst, 0, 16);
  EXPECT_FALSE(Transform(picture, identity, identity, identity));
  EXPECT_EQ(Host().faults.Calls("newPicture"), 2);
}

TEST_F(ColourTransform, HostWithoutAnEntryThatIsNeededGivesNil) {
  for (const char* entry : {"memoryBlockGetPtr", "newPicture", "REALLockPictureDescription"}) {
    StartWithoutPlugin().faults.Hide(entry);
    support::LoadPluginUnderTest(Host());
    const BlockRef identity = IdentityBlock();
    EXPECT_FALSE(Transform(Host().NewPicture(4, 3), identity, identity, identity)) << entry;
  }
}

TEST_F(ColourTransform, VectorPictureIsDrawnAndMapped) {
  const PictureRef picture = Host().NewVectorPicture(
      3, 2, [](int32_t x, int32_t) -> std::optional<uint32_t> { return x == 1 ? 0x102030 : 0; });
  const BlockRef curve = Block(Inverted());
  EXPECT_TRUE(support::IsNewPicture(Transform(picture, curve, curve, curve), 3, 2, false,
                                    [](int32_t x, int32_t) {
                                      return x == 1 ? Rgb{0xEF, 0xDF, 0xCF} : Rgb{255, 255, 255};
                                    }));
}

}  // namespace
}  // namespace colour_transform
