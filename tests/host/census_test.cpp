// The census sees what isn't returned and what is done wrong, and nothing crashes on it.

#include "host/runtime/host_state.h"
#include "tests/host/host_test.h"

namespace host {
namespace {

using CensusTest = HostTest;

TEST_F(CensusTest, BalancedIsEmpty) {
  const Ref<Picture> picture = host.NewPicture(3, 2);
  const Snapshot before = host.census.Take();
  Lock(picture.Get());
  Unlock(picture.Get());
  EXPECT_EQ(host.census.DifferenceText(before), "");
}

TEST_F(CensusTest, AReferenceNotReturnedHasItsObjectsName) {
  const Ref<Picture> picture = host.NewPicture(3, 2);
  const Snapshot before = host.census.Take();
  Lock(picture.Get());
  EXPECT_EQ(host.census.DifferenceText(before),
            "Picture #1 (3 x 2, bitmap context): 1 reference not returned\n");
  Unlock(picture.Get());
}

TEST_F(CensusTest, ANewObjectIsADifference) {
  const Snapshot before = host.census.Take();
  const REALmemoryBlock block = Find<REALmemoryBlock(int32_t)>("newMemoryBlock")(5);
  EXPECT_EQ(host.census.DifferenceText(before),
            "MemoryBlock #1 (5 bytes): 1 reference not returned\n");
  Unlock(block);
  EXPECT_EQ(host.census.DifferenceText(before), "");
}

TEST_F(CensusTest, AReferenceTooManyIsADifferenceAndTheProgramsOwnIsMissed) {
  {
    const Ref<Picture> picture = host.NewPicture(3, 2);
    const Snapshot before = host.census.Take();
    Unlock(picture.Get());
    EXPECT_EQ(host.census.DifferenceText(before),
              "Picture #1 (3 x 2, bitmap context): 1 reference returned too many\n");
  }
  EXPECT_EQ(
      TakeErrors(),
      "Picture #1 (3 x 2, bitmap context): somebody else gave back the program's reference\n");
}

TEST_F(CensusTest, UseAfterTheEndIsAnError) {
  const Ref<Picture> other = host.NewPicture(1, 1);
  const REALpicture picture = host.NewPicture(3, 2).Handle();  // ends with its Ref
  Lock(picture);
  EXPECT_EQ(TakeErrors(), "REALLockObject: Picture #2 (3 x 2, bitmap context) has ended\n");
  Find<void(REALpicture)>("unlockPictureDescription")(picture);
  EXPECT_EQ(TakeErrors(),
            "unlockPictureDescription: Picture #2 (3 x 2, bitmap context) has ended\n");
}

TEST_F(CensusTest, WhatIsForgottenWasNoObject) {
  const Ref<Picture> lives = host.NewPicture(1, 1);
  const REALpicture picture = host.NewPicture(3, 2).Handle();  // ends with its Ref
  host.State().objects.ForgetEnded();
  Lock(picture);
  EXPECT_EQ(TakeErrors(), "REALLockObject: the handle is no object's\n");
  Lock(lives.Get());
  EXPECT_EQ(lives->References(), 2);
  Unlock(lives.Get());
}

TEST_F(CensusTest, HandlesOfNothingAndOfOtherKindsAreErrors) {
  int something = 0;
  Unlock(&something);
  EXPECT_EQ(TakeErrors(), "REALUnlockObject: the handle is no object's\n");
  const Ref<MemoryBlock> block = host.NewMemoryBlock(4);
  Find<void(REALpicture)>("REALPictureClearCache")(reinterpret_cast<REALpicture>(block.Get()));
  EXPECT_EQ(TakeErrors(),
            "REALPictureClearCache: MemoryBlock #1 (4 bytes) isn't of the kind that it takes\n");
  Find<void(REALpicture)>("REALPictureClearCache")(nullptr);
  EXPECT_EQ(TakeErrors(), "REALPictureClearCache: the handle is nil\n");
}

TEST_F(CensusTest, StringsAndObjectsAreLockedByTheirOwnFunctions) {
  const Ref<String> string = host.NewString("a");
  Lock(string.Get());
  EXPECT_EQ(string->References(), 1);
  EXPECT_TRUE(Contains(TakeErrors(), "a string is locked with REALLockString"));
  const Ref<MemoryBlock> block = host.NewMemoryBlock(4);
  Find<void(REALstring)>("REALUnlockString")(reinterpret_cast<REALstring>(block.Get()));
  EXPECT_EQ(block->References(), 1);
  EXPECT_TRUE(Contains(TakeErrors(), "isn't of the kind"));
}

TEST_F(CensusTest, NilIsIgnoredWhereItMayBe) {
  Lock(nullptr);
  Unlock(nullptr);
  Find<void(REALstring)>("REALLockString")(nullptr);
  Find<void(REALstring)>("REALUnlockString")(nullptr);
}

TEST_F(CensusTest, LocksAreCountedAndUnlockingTooOftenIsAnError) {
  const Ref<Picture> picture = host.NewPicture(3, 2);
  const Snapshot before = host.census.Take();
  REALpictureDescription description{};
  ASSERT_TRUE(LockDescription(picture, description, kPictureBitmapContext));
  ASSERT_TRUE(LockDescription(picture, description, kPictureBitmapContext));
  EXPECT_EQ(host.census.DifferenceText(before),
            "Picture #1 (3 x 2, bitmap context): 2 description locks not returned\n");
  UnlockDescription(picture);
  UnlockDescription(picture);
  EXPECT_EQ(host.census.DifferenceText(before), "");
  UnlockDescription(picture);
  EXPECT_EQ(host.census.DifferenceText(before),
            "unlockPictureDescription: Picture #1 (3 x 2, bitmap context)'s description isn't "
            "locked\n");
  host.census.ClearErrors();
}

TEST_F(CensusTest, StringDataNotDisposedOfIsADifference) {
  const Ref<String> string = host.NewString("abc");
  const Snapshot before = host.census.Take();
  REALstringData data{};
  ASSERT_TRUE(Find<bool(REALstring, uint32_t, REALstringData*)>("PluginGetStringData")(
      string.Handle(), kEncodingUnknown, &data));
  EXPECT_EQ(host.census.DifferenceText(before),
            "string data #2 of String #1 (3 bytes): 1 reference not returned\n");
  auto* dispose = Find<void(REALstringData*)>("PluginDisposeStringData");
  dispose(&data);
  EXPECT_EQ(host.census.DifferenceText(before), "");
  dispose(&data);
  EXPECT_TRUE(Contains(TakeErrors(), "PluginDisposeStringData: the data aren't"));
}

TEST_F(CensusTest, APictureThatThePluginEndsWhileLockedIsAnError) {
  const REALpicture picture = Find<REALpicture(int32_t, int32_t, int32_t)>("newPicture")(2, 2, 32);
  REALpictureDescription description{};
  Find<bool(REALpicture, REALpictureDescription*)>("lockPictureDescription")(picture, &description);
  Unlock(picture);
  EXPECT_EQ(TakeErrors(),
            "REALUnlockObject: Picture #1 (2 x 2, bitmap context) ends while it is locked\n");
}

TEST_F(CensusTest, LiveCountsByKindAndListingNamesAll) {
  const Ref<Picture> picture = host.NewPicture(3, 2);
  const Ref<String> string = host.NewString("abc");
  EXPECT_EQ(host.census.Live(Kind::kPicture), 1);
  EXPECT_EQ(host.census.Live(Kind::kMemoryBlock), 0);
  EXPECT_EQ(host.census.Listing(),
            "Picture #1 (3 x 2, bitmap context): 1 reference\nString #2 (3 bytes): 1 reference\n");
}

#ifndef __SANITIZE_ADDRESS__  // which stops at the write itself
TEST_F(CensusTest, WritesBesidePixelsAndBlocksAreSeen) {
  const Ref<Picture> picture = host.NewPicture(3, 2);
  const Ref<MemoryBlock> block = host.NewMemoryBlock(5);
  const Snapshot before = host.census.Take();
  uint8_t* end = picture->Row(1) + 3 * 4;
  const uint8_t kept = *end;
  *end ^= 1;
  EXPECT_FALSE(picture->GuardsIntact());
  EXPECT_EQ(host.census.DifferenceText(before),
            "Picture #1 (3 x 2, bitmap context): written beside its memory\n");
  *end = kept;
  uint8_t* blockBegin = block->Bytes().data();
  blockBegin[-1] ^= 1;
  EXPECT_EQ(host.census.DifferenceText(before),
            "MemoryBlock #2 (5 bytes): written beside its memory\n");
  blockBegin[-1] ^= 1;
  picture->Row(0)[-1] ^= 1;
  EXPECT_FALSE(picture->GuardsIntact());
  picture->Row(0)[-1] ^= 1;
}
#endif

TEST(RefTest, OutlivesItsHostWithoutHarm) {
  Ref<Picture> left;
  {
    Host host;
    left = host.NewPicture(3, 2);
  }
  Host next;
  const Ref<Picture> other = next.NewPicture(3, 2);
  EXPECT_NE(other.Get(), left.Get());
  left = nullptr;
  EXPECT_EQ(other->References(), 1);
  EXPECT_TRUE(next.census.Errors().empty());
}

TEST(RefTest, CountsCopiesAndMoves) {
  Host host;
  Ref<Picture> first = host.NewPicture(3, 2);
  Ref<Picture> second = first;
  EXPECT_EQ(first->References(), 2);
  const Ref<Object> third = std::move(second);
  EXPECT_EQ(first->References(), 2);
  EXPECT_FALSE(second);
  const Ref<Picture>& same = first;
  first = same;
  EXPECT_EQ(first->References(), 2);
}

TEST(HostLifeTest, OnlyOneLivesAtATime) {
  EXPECT_EQ(ErrorOf([] { Host::Current(); }), "there is no host");
  Host host;
  EXPECT_EQ(&Host::Current(), &host);
  EXPECT_EQ(ErrorOf([] { const Host second; }), "a host lives already; end it first");
  EXPECT_EQ(&Host::Current(), &host);
}

}  // namespace
}  // namespace host
