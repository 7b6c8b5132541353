// Opening pictures of every kind, and giving back what that took.
#include <gtest/gtest.h>

#include "tests/pixels/editor_fixture.h"

namespace editor {
namespace {

// Where the pixels lie can be compared only when the lock gives the picture's own.
#define SKIP_WHERE_PIXELS_ARE_COPIED()                           \
  if (support::LockMannerOfTests() == host::LockManner::kCopied) \
  GTEST_SKIP() << "a copy lies elsewhere"

TEST_F(EditorTest, AnEditorThatOpenedNothingHoldsNothing) {
  StartDesktop();
  const Reader reader = MakeReader();
  EXPECT_EQ(reader->picture, nullptr);
  EXPECT_EQ(reader->lockedPixels, nullptr);
  EXPECT_EQ(reader->buffer, nullptr);
  EXPECT_EQ(reader->rowTable, nullptr);
  EXPECT_EQ(reader->basePointer, nullptr);
  EXPECT_EQ(reader->rowPointer, nullptr);
  for (const int32_t number :
       {reader->rowBytes, reader->width, reader->height, reader->bytesPerPixel, reader->format,
        reader->cursorX, reader->cursorY}) {
    EXPECT_EQ(number, 0);
  }
  EXPECT_FALSE(reader->hasAlpha);
  EXPECT_FALSE(reader->alphaContext);
  EXPECT_FALSE(reader->rasterizeIfNeeded);
  EXPECT_FALSE(reader->modifies);
  EXPECT_FALSE(reader->descriptionLocked);
}

TEST_F(EditorTest, NilIsRefusedAndTheEditorStaysClosed) {
  StartDesktop();
  Reader reader = MakeReader();
  EXPECT_FALSE(Open(reader, nullptr));
  EXPECT_EQ(reader->picture, nullptr);
  EXPECT_FALSE(reader->descriptionLocked);
}

TEST_F(EditorTest, NilReleasesWhatWasOpen) {
  host::Host& host = StartDesktop();
  const PictureRef picture = host.NewPicture(3, 2);
  Reader reader = MakeReader();
  ASSERT_TRUE(Open(reader, picture));
  EXPECT_FALSE(Open(reader, nullptr));
  EXPECT_EQ(reader->picture, nullptr);
  EXPECT_EQ(picture->References(), 1);
}

TEST_F(EditorTest, ABitmapContextGivesItsPixels) {
  SKIP_WHERE_PIXELS_ARE_COPIED();
  for (uint32_t alphaInfo = 1; alphaInfo <= 6; ++alphaInfo) {
    SCOPED_TRACE(alphaInfo);
    host::Host& host = StartDesktop();
    const PictureRef picture = host.NewPicture(5, 3, PictureLayout::BitmapContext(alphaInfo, 12));
    support::Put(picture, 4, 2, {10, 20, 30}, 40);
    Reader reader = MakeReader();
    ASSERT_TRUE(Open(reader, picture));
    EXPECT_TRUE(*internals->isDesktop);
    EXPECT_EQ(reader->width, 5);
    EXPECT_EQ(reader->height, 3);
    EXPECT_EQ(reader->rowBytes, 32);
    EXPECT_EQ(reader->bytesPerPixel, 4);
    EXPECT_EQ(reader->format, static_cast<int32_t>(alphaInfo));
    EXPECT_EQ(reader->basePointer, picture->Row(0));
    EXPECT_EQ(reader->rowPointer, picture->Row(0));
    EXPECT_EQ(reader->RowStart(2), picture->Row(2));
    EXPECT_EQ(reader->rowTable, nullptr);
    EXPECT_FALSE(reader->hasAlpha);
    EXPECT_FALSE(reader->alphaContext);
    EXPECT_TRUE(reader->descriptionLocked);
    EXPECT_EQ(reader->picture, picture.Handle());
    EXPECT_EQ(picture->References(), 2);
    EXPECT_EQ(picture->DescriptionLocks(), 1);
    EXPECT_EQ(PixelOf(reader, 4, 2), (support::Rgb{10, 20, 30}));
    reader.reset();
    EXPECT_EQ(picture->References(), 1);
    EXPECT_EQ(picture->DescriptionLocks(), 0);
  }
}

TEST_F(EditorTest, ARowTableGivesItsRows) {
  SKIP_WHERE_PIXELS_ARE_COPIED();
  host::Host& host = StartConsole();
  const PictureRef picture = host.NewPicture(5, 3, PictureLayout::RowTable(8));
  support::Put(picture, 1, 2, {10, 20, 30}, 40);
  Reader reader = MakeReader();
  ASSERT_TRUE(Open(reader, picture));
  EXPECT_TRUE(*internals->isConsole);
  EXPECT_FALSE(*internals->isDesktop);
  EXPECT_EQ(reader->format, 8);
  EXPECT_EQ(reader->rowBytes, 20);
  EXPECT_EQ(reader->width, 5);
  EXPECT_EQ(reader->height, 3);
  EXPECT_EQ(reader->basePointer, picture->Row(0));
  EXPECT_EQ(reader->RowStart(1), picture->Row(1));
  EXPECT_EQ(reader->RowStart(2), picture->Row(2));
  EXPECT_EQ(PixelOf(reader, 1, 2), (support::Rgb{10, 20, 30}));
}

TEST_F(EditorTest, ReopeningReleasesTheFirstPictureBeforeTheSecondIsOpened) {
  host::Host& host = StartDesktop();
  const PictureRef first = host.NewPicture(2, 2);
  const PictureRef second = host.NewPicture(3, 3);
  Reader reader = MakeReader();
  ASSERT_TRUE(Open(reader, first, false, true));
  host.faults.StartRecord();
  ASSERT_TRUE(Open(reader, second, false, false));
  const std::vector<std::string> calls = host.faults.StopRecord();
  ASSERT_GE(calls.size(), 4U);
  EXPECT_EQ(calls[0], "unlockPictureDescription");
  EXPECT_EQ(calls[1], "REALPictureClearCache") << "the old flag decides about the old picture";
  EXPECT_EQ(calls[2], "REALUnlockObject");
  EXPECT_EQ(first->References(), 1);
  EXPECT_EQ(first->DescriptionLocks(), 0);
  EXPECT_EQ(second->References(), 2);
  EXPECT_EQ(reader->width, 3);
}

TEST_F(EditorTest, TheCacheIsClearedOnlyAfterModifying) {
  host::Host& host = StartDesktop();
  const PictureRef picture = host.NewPicture(2, 2);
  EXPECT_TRUE(Opens(picture, true, false));
  EXPECT_EQ(host.faults.Calls("REALPictureClearCache"), 0);
  EXPECT_TRUE(Opens(picture, true, true));
  EXPECT_EQ(host.faults.Calls("REALPictureClearCache"), 1);
}

TEST_F(EditorTest, NextRowOnTheLastRowGoesBackToRow0) {
  SKIP_WHERE_PIXELS_ARE_COPIED();
  for (const bool console : {false, true}) {
    host::Host& host = console ? StartConsole() : StartDesktop();
    const PictureRef picture = host.NewPicture(2, 3);
    Reader reader = MakeReader();
    ASSERT_TRUE(Open(reader, picture));
    reader->NextRow();
    EXPECT_EQ(reader->rowPointer, picture->Row(1));
    reader->NextRow();
    EXPECT_EQ(reader->rowPointer, picture->Row(2));
    reader->NextRow();
    EXPECT_EQ(reader->cursorY, 3);
    EXPECT_EQ(reader->rowPointer, picture->Row(0));
    reader->NextRow();
    EXPECT_EQ(reader->rowPointer, picture->Row(0));
  }
}

}  // namespace
}  // namespace editor
