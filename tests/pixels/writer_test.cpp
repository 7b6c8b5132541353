// Output pictures: made, handed over, dropped.
#include <gtest/gtest.h>

#include "tests/support/internals_fixture.h"

namespace {

using support::InternalsTest;
using support::PictureRef;

class WriterTest : public InternalsTest {
 protected:
  bool New(const Writer& writer, int32_t width, int32_t height, bool alpha) const {
    return internals->newPictureWriter(writer.get(), width, height, alpha);
  }
  // Makes a picture and drops it.
  bool CanMake(int32_t width, int32_t height, bool alpha) {
    const Writer writer = MakeWriter();
    return New(writer, width, height, alpha);
  }
};

TEST_F(WriterTest, AnOpaquePictureIsWrittenAndHandedOver) {
  StartInternals();
  Writer writer = MakeWriter();
  ASSERT_TRUE(New(writer, 5, 4, false));
  EXPECT_EQ(writer->width, 5);
  EXPECT_EQ(writer->height, 4);
  EXPECT_TRUE(writer->modifies);
  EXPECT_FALSE(writer->hasAlpha);
  *writer->PixelAt(4, 3) = 0x11223344;
  const PictureRef result = host::AdoptHandle<host::Picture>(internals->render(writer.get()));
  ASSERT_TRUE(result);
  EXPECT_EQ(writer->picture, nullptr);
  writer.reset();
  EXPECT_EQ(result->References(), 1) << "the caller's, and the writer is gone";
  EXPECT_EQ(result->DescriptionLocks(), 0);
  EXPECT_EQ(result->Word(4, 3), 0x11223344U);
  EXPECT_TRUE(result->RenderingIsCurrent());
}

TEST_F(WriterTest, AnAlphaPictureHasAnAlphaChannel) {
  host::Host& host = StartInternals();
  Writer writer = MakeWriter();
  ASSERT_TRUE(New(writer, 5, 4, true));
  EXPECT_TRUE(writer->hasAlpha);
  EXPECT_TRUE(writer->alphaContext);
  EXPECT_EQ(host.faults.Calls("newPicture"), 0);
  EXPECT_EQ(host.faults.Calls("Picture.Constructor"), 1);
}

TEST_F(WriterTest, WithoutRenderingThePictureIsDropped) {
  host::Host& host = StartInternals();
  EXPECT_TRUE(CanMake(5, 4, false));
  EXPECT_TRUE(CanMake(5, 4, true));
  EXPECT_EQ(host.census.Live(host::Kind::kPicture), 0);
}

TEST_F(WriterTest, SizesOutsideTheRangeAreRefusedWithoutAskingTheHost) {
  host::Host& host = StartInternals();
  for (const auto& [width, height] :
       {std::pair{0, 5}, {5, 0}, {-1, 5}, {5, -1}, {32768, 1}, {1, 32768}}) {
    EXPECT_FALSE(CanMake(width, height, false)) << width << " x " << height;
  }
  EXPECT_EQ(host.faults.Calls("newPicture"), 0);
  for (const auto& [width, height] : {std::pair{0, 5}, {5, 0}, {-1, 5}, {5, -1}}) {
    EXPECT_FALSE(CanMake(width, height, true)) << width << " x " << height;
  }
  EXPECT_EQ(host.faults.Calls("PluginNewInstance"), 0);
}

TEST_F(WriterTest, TheLargestOpaquePictureIsAttempted) {
  host::Host& host = StartInternals();
  host.faults.FailAlways("newPicture");
  EXPECT_FALSE(CanMake(32767, 32767, false));
  EXPECT_EQ(host.faults.Calls("newPicture"), 1);
}

TEST_F(WriterTest, AnAlphaPictureHasNoUpperLimit) {
  StartInternals();
  EXPECT_TRUE(CanMake(32768, 1, true));
}

TEST_F(WriterTest, AlphaPicturesNeedVersion201104) {
  host::Settings settings;
  settings.version = 2011.03;
  StartInternals(settings);
  EXPECT_FALSE(CanMake(5, 4, true));
  EXPECT_TRUE(CanMake(5, 4, false));
  settings.version = 2011.04;
  StartInternals(settings);
  EXPECT_TRUE(CanMake(5, 4, true));
}

TEST_F(WriterTest, AHostThatFailsGivesFalse) {
  StartInternals({}, {"newPicture"});
  EXPECT_FALSE(CanMake(5, 4, false));
  StartInternals({}, {"PluginNewInstance"});
  EXPECT_FALSE(CanMake(5, 4, true));
  StartInternals({}, {"REALLockPictureDescription"});
  EXPECT_FALSE(CanMake(5, 4, false));
  EXPECT_FALSE(CanMake(5, 4, true));
}

TEST_F(WriterTest, WhereNoPictureIsMadeNothingIsGivenBack) {
  host::Host& host = StartInternals();
  host.faults.FailAlways("newPicture");
  EXPECT_FALSE(CanMake(5, 4, false));
  EXPECT_EQ(host.faults.Calls("REALUnlockObject"), 0);
}

TEST_F(WriterTest, AnInstanceThatCannotBeConstructedIsKept) {
  StartInternals({}, {"Picture.Constructor"});
  EXPECT_FALSE(CanMake(5, 4, true));
  ExpectLeft(1);
}

TEST_F(WriterTest, RenderingNothingGivesNothing) {
  const host::Host& host = StartInternals();
  const Writer writer = MakeWriter();
  EXPECT_EQ(internals->render(writer.get()), nullptr);
  EXPECT_EQ(host.faults.Calls("REALBuildPictureFromBuffer"), 0);
}

TEST_F(WriterTest, HandingOverDiscardsTheRenderingOfAPictureThatWasOnlyReadToo) {
  host::Host& host = StartInternals();
  const PictureRef picture = host.NewPicture(2, 2);
  const Writer writer = MakeWriter();
  ASSERT_TRUE(internals->open(writer.get(), picture.Handle(), false, false));
  const PictureRef result = host::AdoptHandle<host::Picture>(internals->render(writer.get()));
  EXPECT_EQ(result, picture);
  EXPECT_EQ(host.faults.Calls("REALPictureClearCache"), 1);
}

TEST_F(WriterTest, ABufferBecomesAPicture) {
  host::Host& host = StartInternals();
  uint8_t pixels[4 * 2 * 3] = {};
  const Writer writer = MakeWriter();
  writer->buffer = pixels;
  writer->width = 2;
  writer->height = 3;
  writer->rowBytes = 8;
  const PictureRef result = host::AdoptHandle<host::Picture>(internals->render(writer.get()));
  ASSERT_TRUE(result);
  EXPECT_EQ(result->Width(), 2);
  EXPECT_EQ(result->Height(), 3);
  EXPECT_EQ(host.faults.Calls("REALBuildPictureFromBuffer"), 1);
}

TEST_F(WriterTest, ABufferWithoutAHostFunctionGivesNothing) {
  StartInternals({}, {"REALBuildPictureFromBuffer"});
  uint8_t pixels[4] = {};
  const Writer writer = MakeWriter();
  writer->buffer = pixels;
  writer->width = writer->height = 1;
  writer->rowBytes = 4;
  EXPECT_EQ(internals->render(writer.get()), nullptr);
}

TEST_F(WriterTest, APixelHandleIsUnlockedOnceAtRelease) {
  host::Host& host = StartInternals();
  int handle = 0;
  Writer writer = MakeWriter();
  ASSERT_TRUE(New(writer, 2, 2, false));
  writer->lockedPixels = &handle;
  host.faults.StartRecord();
  const PictureRef result = host::AdoptHandle<host::Picture>(internals->render(writer.get()));
  writer.reset();
  int unlocked = 0;
  for (const std::string& call : host.faults.StopRecord()) unlocked += call == "UnlockPixels";
  EXPECT_EQ(unlocked, 1);
  host.census.ClearErrors();  // the host never gave that handle out
}

TEST_F(WriterTest, APixelHandleIsForgottenWhereTheFrameworkIsMissing) {
  StartInternals({}, {"FSFindFolder"});
  int handle = 0;
  Writer writer = MakeWriter();
  ASSERT_TRUE(New(writer, 2, 2, false));
  writer->lockedPixels = &handle;
  writer.reset();
}

}  // namespace
