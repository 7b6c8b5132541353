// What description locks give.

#include "tests/host/picture_fixture.h"

namespace host {
namespace {

class LockTest : public PictureTest {
 protected:
  // What the three locks give: without a wish, 8 and 10; 0 where refused.
  std::vector<int32_t> Given(const Ref<Picture>& picture) {
    std::vector<int32_t> given;
    for (const uint32_t wanted : {0u, 8u, 10u}) {
      REALpictureDescription description{};
      const bool locked = wanted == 0 ? LockDescription(picture, description)
                                      : LockDescription(picture, description, wanted);
      given.push_back(locked ? description.pictureType : 0);
      if (locked) UnlockDescription(picture);
    }
    EXPECT_EQ(picture->DescriptionLocks(), 0);
    return given;
  }
};

TEST_F(LockTest, EachKindGivesItsOwnType) {
  using Types = std::vector<int32_t>;
  EXPECT_EQ(Given(host.NewPicture(2, 2)), (Types{8, 8, 0}));
  EXPECT_EQ(Given(host.NewPicture(2, 2, PictureLayout::RowTable())), (Types{10, 0, 10}));
  EXPECT_EQ(Given(host.NewPicture(2, 2, PictureLayout::GraphicsWorld())), (Types{4, 0, 0}));
  const Ref<Picture> picture = host.NewPicture(2, 2);
  picture->SetLocking(Locking::kBoth);
  EXPECT_EQ(Given(picture), (Types{8, 8, 10}));
  picture->SetLocking(Locking::kRowTable);
  EXPECT_EQ(Given(picture), (Types{10, 0, 10}));
  picture->SetLocking(Locking::kRefused);
  EXPECT_EQ(Given(picture), (Types{0, 0, 0}));
}

TEST_F(LockTest, ABitmapContextAnswersWhatItIs) {
  const Ref<Picture> picture = host.NewPicture(7, 5, PictureLayout::BitmapContext(5, 12, 32));
  REALpictureDescription description{};
  ASSERT_TRUE(LockDescription(picture, description, kPictureBitmapContext));
  EXPECT_EQ(description.width, 7);
  EXPECT_EQ(description.height, 5);
  EXPECT_EQ(description.depth, 32);
  EXPECT_FALSE(description.transparent);
  void* context = description.pictureData;
  EXPECT_EQ(Find<void*(void*)>("CGBitmapContextGetData")(context), picture->Row(0));
  EXPECT_EQ(Find<size_t(void*)>("CGBitmapContextGetBitsPerPixel")(context), 32u);
  EXPECT_EQ(Find<size_t(void*)>("CGBitmapContextGetWidth")(context), 7u);
  EXPECT_EQ(Find<size_t(void*)>("CGBitmapContextGetHeight")(context), 5u);
  EXPECT_EQ(Find<size_t(void*)>("CGBitmapContextGetBytesPerRow")(context), 40u);
  EXPECT_EQ(Find<uint32_t(void*)>("CGBitmapContextGetAlphaInfo")(context), 5u);
  UnlockDescription(picture);
  EXPECT_EQ(Find<size_t(void*)>("CGBitmapContextGetWidth")(context), 0u);
  EXPECT_TRUE(Contains(TakeErrors(), "CGBitmapContextGetWidth: the picture's description isn't"));
  EXPECT_EQ(Find<size_t(void*)>("CGBitmapContextGetWidth")(nullptr), 0u);
  EXPECT_TRUE(Contains(TakeErrors(), "the context isn't that of a live picture"));
}

TEST_F(LockTest, ARowTableHasItsRows) {
  const Ref<Picture> picture = host.NewPicture(7, 5, PictureLayout::RowTable(4));
  REALpictureDescription description{};
  ASSERT_TRUE(LockDescription(picture, description, kPictureRowTable));
  const auto* table = static_cast<const REALrowTablePicture*>(description.pictureData);
  EXPECT_EQ(table->zero, 0u);
  EXPECT_NE(table->second, nullptr);
  EXPECT_EQ(table->width, 7);
  EXPECT_EQ(table->height, 5);
  for (int32_t y = 0; y < 5; ++y) EXPECT_EQ(table->rows[y], picture->Row(y));
  UnlockDescription(picture);
}

TEST_F(LockTest, OldHostsCountARefusedLock) {
  const Ref<Picture> picture = host.NewPicture(2, 2, PictureLayout::RowTable());
  REALpictureDescription description{};
  host.settings.version = 2012.0;
  EXPECT_FALSE(LockDescription(picture, description, kPictureBitmapContext));
  EXPECT_EQ(picture->DescriptionLocks(), 0);
  host.settings.version = 2011.99;
  EXPECT_FALSE(LockDescription(picture, description, kPictureBitmapContext));
  EXPECT_EQ(picture->DescriptionLocks(), 1);
  UnlockDescription(picture);
  EXPECT_EQ(picture->DescriptionLocks(), 0);
}

TEST_F(LockTest, ASecondLockIsRefusedWhereTheHostSaysSo) {
  const Ref<Picture> picture = host.NewPicture(2, 2);
  REALpictureDescription description{};
  for (const LockManner manner : {LockManner::kSingle, LockManner::kUncounted}) {
    host.settings.lockManner = manner;
    ASSERT_TRUE(LockDescription(picture, description, kPictureBitmapContext));
    EXPECT_FALSE(LockDescription(picture, description, kPictureBitmapContext));
    EXPECT_FALSE(LockDescription(picture, description));
    EXPECT_EQ(picture->DescriptionLocks(), 1);
    UnlockDescription(picture);
    EXPECT_EQ(picture->DescriptionLocks(), 0);
    EXPECT_TRUE(LockDescription(picture, description, kPictureBitmapContext));
    UnlockDescription(picture);
  }
}

TEST_F(LockTest, AnOldHostMayCountTheSecondLockThatItRefusesOrNot) {
  const Ref<Picture> picture = host.NewPicture(2, 2);
  REALpictureDescription description{};
  host.settings.version = 2011.99;
  host.settings.lockManner = LockManner::kSingle;
  ASSERT_TRUE(LockDescription(picture, description, kPictureBitmapContext));
  EXPECT_FALSE(LockDescription(picture, description, kPictureBitmapContext));
  EXPECT_EQ(picture->DescriptionLocks(), 2);
  UnlockDescription(picture);
  UnlockDescription(picture);

  host.settings.lockManner = LockManner::kUncounted;
  ASSERT_TRUE(LockDescription(picture, description, kPictureBitmapContext));
  EXPECT_FALSE(LockDescription(picture, description, kPictureBitmapContext));
  EXPECT_EQ(picture->DescriptionLocks(), 1);
  UnlockDescription(picture);  // takes the first lock away
  EXPECT_EQ(picture->DescriptionLocks(), 0);
  UnlockDescription(picture);
  EXPECT_EQ(picture->DescriptionLocks(), 0);
  EXPECT_TRUE(TakeErrors().empty());
}

TEST_F(LockTest, ACopyIsWrittenBackAtItsUnlockTheLastFirst) {
  host.settings.lockManner = LockManner::kCopied;
  for (const PictureLayout& layout :
       {PictureLayout::BitmapContext(6, 4), PictureLayout::RowTable(4)}) {
    const bool table = layout.storage == Storage::kRowTable;
    const Ref<Picture> picture = host.NewPicture(3, 2, layout);
    picture->SetWord(0, 1, 1);
    const auto rowOne = [&](const REALpictureDescription& description) {
      if (table) return static_cast<const REALrowTablePicture*>(description.pictureData)->rows[1];
      void* context = description.pictureData;
      const auto rowBytes = Find<size_t(void*)>("CGBitmapContextGetBytesPerRow")(context);
      return static_cast<uint8_t*>(Find<void*(void*)>("CGBitmapContextGetData")(context)) +
             rowBytes;
    };
    const uint32_t wanted = table ? kPictureRowTable : kPictureBitmapContext;
    REALpictureDescription first{};
    REALpictureDescription second{};
    ASSERT_TRUE(LockDescription(picture, first, wanted));
    ASSERT_TRUE(LockDescription(picture, second, wanted));
    EXPECT_NE(rowOne(first), picture->Row(1));
    EXPECT_NE(rowOne(first), rowOne(second));
    EXPECT_EQ(rowOne(first)[0], 1);
    rowOne(first)[0] = 2;
    rowOne(second)[0] = 3;
    EXPECT_EQ(picture->Word(0, 1), 1U) << "nothing is written before the unlock";
    UnlockDescription(picture);
    EXPECT_EQ(picture->Word(0, 1), 3U);
    UnlockDescription(picture);
    EXPECT_EQ(picture->Word(0, 1), 2U);
    EXPECT_TRUE(picture->GuardsIntact());
  }
}

TEST_F(LockTest, ACopyThatWasWrittenBesideItsPixelsIsNoticed) {
#ifndef __SANITIZE_ADDRESS__  // which stops at the write itself
  host.settings.lockManner = LockManner::kCopied;
  const Ref<Picture> picture = host.NewPicture(2, 2);
  REALpictureDescription description{};
  ASSERT_TRUE(LockDescription(picture, description, kPictureBitmapContext));
  auto* pixels =
      static_cast<uint8_t*>(Find<void*(void*)>("CGBitmapContextGetData")(description.pictureData));
  pixels[-1] ^= 1;
  UnlockDescription(picture);
  EXPECT_TRUE(Contains(TakeErrors(), "locked copy was written beside its pixels"));
#endif
}

TEST_F(LockTest, AHookMaySpoilTheDescription) {
  const Ref<Picture> picture = host.NewPicture(2, 2);
  picture->SetDescriptionHook([](REALpictureDescription& description) {
    description.pictureData = nullptr;
    description.pictureType = 3;
  });
  REALpictureDescription description{};
  EXPECT_TRUE(LockDescription(picture, description, kPictureBitmapContext));
  EXPECT_EQ(description.pictureType, 3);
  EXPECT_EQ(description.pictureData, nullptr);
  UnlockDescription(picture);
}

}  // namespace
}  // namespace host
