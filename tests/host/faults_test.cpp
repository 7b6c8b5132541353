#include "tests/host/host_test.h"

namespace host {
namespace {

class FaultsTest : public HostTest {
 protected:
  bool MakesPicture() {
    const REALpicture made = Find<REALpicture(int32_t, int32_t, int32_t)>("newPicture")(2, 2, 32);
    if (made != nullptr) Unlock(made);
    return made != nullptr;
  }
};

TEST_F(FaultsTest, TheNthCallFromNowFails) {
  EXPECT_TRUE(MakesPicture());
  host.faults.FailCall("newPicture", 2);
  EXPECT_TRUE(MakesPicture());
  EXPECT_FALSE(MakesPicture());
  EXPECT_TRUE(MakesPicture());
}

TEST_F(FaultsTest, AlwaysMeansUntilCleared) {
  host.faults.FailAlways("newPicture");
  EXPECT_FALSE(MakesPicture());
  EXPECT_FALSE(MakesPicture());
  host.faults.Clear();
  EXPECT_TRUE(MakesPicture());
}

TEST_F(FaultsTest, AFailingCallDoesNotAct) {
  const Ref<Picture> picture = host.NewPicture(2, 2);
  host.faults.FailCall("REALLockObject");
  Lock(picture.Get());
  EXPECT_EQ(picture->References(), 1);
  REALpictureDescription description{};
  host.faults.FailCall("REALLockPictureDescription");
  EXPECT_FALSE(LockDescription(picture, description, kPictureBitmapContext));
  EXPECT_EQ(picture->DescriptionLocks(), 0);
  EXPECT_EQ(description.pictureData, nullptr);
}

TEST_F(FaultsTest, FailureIsAnErrorNumberWhereZeroMeansSuccess) {
  host.faults.FailCall("FSFindFolder");
  uint8_t ref[80] = {};
  EXPECT_EQ(
      Find<int16_t(int16_t, uint32_t, uint8_t, void*)>("FSFindFolder")(-32767, 0x6672616D, 1, ref),
      -43);
}

TEST_F(FaultsTest, TheNthOfAllFailsWhateverItIs) {
  host.faults.FailNthOfAll(3);
  EXPECT_TRUE(MakesPicture());  // calls 1 and 2
  EXPECT_FALSE(MakesPicture());
  EXPECT_TRUE(MakesPicture());
}

TEST_F(FaultsTest, TheRecordHasEveryCallInOrderFailingOnesToo) {
  host.faults.StartRecord();
  MakesPicture();
  host.faults.FailCall("newPicture");
  MakesPicture();
  EXPECT_EQ(host.faults.StopRecord(),
            (std::vector<std::string>{"newPicture", "REALUnlockObject", "newPicture"}));
  MakesPicture();
  EXPECT_TRUE(host.faults.StopRecord() == host.faults.StopRecord());
}

TEST_F(FaultsTest, CallsAreCounted) {
  EXPECT_EQ(host.faults.Calls("newPicture"), 0);
  MakesPicture();
  MakesPicture();
  EXPECT_EQ(host.faults.Calls("newPicture"), 2);
  EXPECT_EQ(host.faults.AllCalls(), 4);
}

TEST_F(FaultsTest, UnknownEntriesAreAnError) {
  EXPECT_EQ(ErrorOf([&] { host.faults.Hide("newPixture"); }), "the host has no entry newPixture");
  EXPECT_NE(ErrorOf([&] { host.faults.FailCall("newPicture", 0); }), "");
}

}  // namespace
}  // namespace host
