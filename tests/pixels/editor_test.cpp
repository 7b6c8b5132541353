// Opening pictures of every kind, and giving back what that took.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/internals_fixture.h"

namespace {

using host::PictureLayout;
using support::InternalsTest;
using support::PictureRef;

constexpr char kDrawPicture[] = "Graphics.DrawPicture";

class EditorTest : public InternalsTest {
 protected:
  host::Host& StartKind(host::Application application, double version = 2013.03,
                        const std::vector<std::string>& hidden = {}) {
    host::Settings settings;
    settings.application = application;
    settings.version = version;
    return StartInternals(settings, hidden);
  }
  host::Host& StartDesktop(double version = 2013.03, const std::vector<std::string>& hidden = {}) {
    return StartKind(host::Application::kDesktop, version, hidden);
  }
  host::Host& StartConsole(double version = 2013.03, const std::vector<std::string>& hidden = {}) {
    return StartKind(host::Application::kConsole, version, hidden);
  }

  // Opens `picture` and closes it again; the picture must be left as it was.
  bool Opens(const PictureRef& picture, bool rasterizeIfNeeded = true, bool modifies = false) {
    const host::Snapshot before = Host().census.Take();
    Reader reader = MakeReader();
    const bool opened = Open(reader, picture, rasterizeIfNeeded, modifies);
    EXPECT_EQ(reader->picture != nullptr, opened);
    reader.reset();
    EXPECT_EQ(Host().census.DifferenceText(before), "");
    return opened;
  }

  // A vector picture: red left of x = 3, else blue.
  PictureRef MakeVector(int32_t width = 6, int32_t height = 4) {
    return Host().NewVectorPicture(width, height, [](int32_t x, int32_t) {
      return std::optional<uint32_t>(x < 3 ? 0xFF0000 : 0x0000FF);
    });
  }

  static support::Rgb PixelOf(const Reader& reader, int32_t x, int32_t y) {
    const Pixel pixel = ReadPixel(reader->PixelAt(x, y), reader->format);
    return {pixel.red, pixel.green, pixel.blue};
  }
};

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

TEST_F(EditorTest, AnAlphaChannelMustBePremultiplied) {
  for (uint32_t alphaInfo = 0; alphaInfo <= 7; ++alphaInfo) {
    SCOPED_TRACE(alphaInfo);
    host::Host& host = StartDesktop();
    const PictureRef picture = host.NewPicture(2, 2, PictureLayout::WithAlpha(alphaInfo));
    Reader reader = MakeReader();
    const bool accepted = alphaInfo == 1 || alphaInfo == 2;
    EXPECT_EQ(Open(reader, picture), accepted);
    EXPECT_EQ(reader->picture != nullptr, accepted);
    EXPECT_TRUE(reader->hasAlpha);
    EXPECT_EQ(reader->alphaContext, accepted);
    reader.reset();
    EXPECT_EQ(picture->DescriptionLocks(), accepted ? 0 : 1) << "a refused layout stays locked";
    ExpectLeft(0);  // the picture itself is gone at the end, and its lock with it
    if (!accepted) host.census.ClearErrors();
  }
}

TEST_F(EditorTest, WithoutAnAlphaChannelAlphaInfo0And7AreRefusedAndStayLocked) {
  for (const uint32_t alphaInfo : {0U, 7U}) {
    SCOPED_TRACE(alphaInfo);
    host::Host& host = StartDesktop();
    const PictureRef picture = host.NewPicture(2, 2, PictureLayout::BitmapContext(alphaInfo));
    Reader reader = MakeReader();
    EXPECT_FALSE(Open(reader, picture));
    reader.reset();
    EXPECT_EQ(picture->References(), 1);
    EXPECT_EQ(picture->DescriptionLocks(), 1);
    host.census.ClearErrors();
  }
}

TEST_F(EditorTest, OtherDepthsThan32BitsAreRefusedAndUnlocked) {
  host::Host& host = StartDesktop();
  for (const int32_t bits : {8, 16, 24, 64}) {
    SCOPED_TRACE(bits);
    EXPECT_FALSE(Opens(host.NewPicture(4, 4, PictureLayout::BitmapContext(6, 0, bits))));
  }
}

TEST_F(EditorTest, AlphaIsJudgedBeforeTheDepth) {
  host::Host& host = StartDesktop();
  const PictureRef picture = host.NewPicture(4, 4, PictureLayout::BitmapContext(0, 0, 16));
  Reader reader = MakeReader();
  EXPECT_FALSE(Open(reader, picture));
  EXPECT_EQ(picture->DescriptionLocks(), 1);
  host.census.ClearErrors();
}

TEST_F(EditorTest, ABitmapDescriptionThatIsNotWhatWasWantedIsRefusedAndUnlocked) {
  host::Host& desktop = StartDesktop();
  const PictureRef bitmap = desktop.NewPicture(2, 2);
  bitmap->SetDescriptionHook(
      [](REALpictureDescription& description) { description.pictureType = 4; });
  EXPECT_FALSE(Opens(bitmap));
  bitmap->SetDescriptionHook(
      [](REALpictureDescription& description) { description.pictureData = nullptr; });
  EXPECT_FALSE(Opens(bitmap));
}

TEST_F(EditorTest, ARowTableThatIsNotWhatWasWantedIsRefusedAndUnlocked) {
  host::Host& console = StartConsole();
  const PictureRef rows = console.NewPicture(2, 2);
  const auto spoil = [&](auto change) {
    REALrowTablePicture table{};
    rows->SetDescriptionHook([&](REALpictureDescription& description) {
      std::memcpy(&table, description.pictureData, sizeof(table));
      change(description, table);
      if (description.pictureData != nullptr) description.pictureData = &table;
    });
    EXPECT_FALSE(Opens(rows));
  };
  spoil([](REALpictureDescription& description, REALrowTablePicture&) {
    description.pictureType = 8;
  });
  spoil([](REALpictureDescription& description, REALrowTablePicture&) {
    description.pictureData = nullptr;
  });
  spoil([](REALpictureDescription&, REALrowTablePicture& table) { table.zero = 1; });
  spoil([](REALpictureDescription&, REALrowTablePicture& table) { table.rows = nullptr; });
  spoil([](REALpictureDescription&, REALrowTablePicture& table) { table.second = nullptr; });
}

TEST_F(EditorTest, ARefusedLockIsRefusedAndOnOldHostsUndone) {
  for (const double version : {2011.99, 2012.0}) {
    SCOPED_TRACE(version);
    {
      host::Host& desktop = StartDesktop(version);
      const PictureRef bitmap = desktop.NewPicture(2, 2);
      bitmap->SetLocking(host::Locking::kRefused);
      const int64_t before = desktop.faults.Calls("unlockPictureDescription");
      EXPECT_FALSE(Opens(bitmap, false, true));
      EXPECT_EQ(desktop.faults.Calls("unlockPictureDescription") - before, version < 2012 ? 1 : 0);
    }
    host::Host& console = StartConsole(version);
    const PictureRef rows = console.NewPicture(2, 2);
    rows->SetLocking(host::Locking::kRefused);
    EXPECT_FALSE(Opens(rows, false, true));
  }
}

TEST_F(EditorTest, OnAConsoleHostTheBitmapLockIsNeverTried) {
  host::Host& host = StartConsole();
  const PictureRef first = host.NewPicture(2, 2);
  EXPECT_TRUE(Opens(first));
  EXPECT_TRUE(*internals->isConsole);
  EXPECT_TRUE(Opens(host.NewPicture(2, 2)));
  EXPECT_EQ(host.faults.Calls("REALLockPictureDescription"), 2) << "one lock for each open";
  EXPECT_EQ(host.faults.Calls("pluginObjectType"), 3) << "the kind is looked up once";
}

TEST_F(EditorTest, OnADesktopHostARowTableIsRefused) {
  host::Host& host = StartDesktop();
  EXPECT_FALSE(Opens(host.NewPicture(2, 2, PictureLayout::RowTable()), false));
}

TEST_F(EditorTest, AWebHostIsLikeAConsole) {
  host::Host& host = StartKind(host::Application::kWeb);
  EXPECT_TRUE(Opens(host.NewPicture(2, 2)));
  EXPECT_TRUE(*internals->isConsole);
}

TEST_F(EditorTest, AnUnknownKindOfApplicationBecomesWhatOpensFirst) {
  host::Host& desktop = StartDesktop(2013.03, {"pluginObjectType"});
  EXPECT_TRUE(Opens(desktop.NewPicture(2, 2)));
  EXPECT_TRUE(*internals->isDesktop);
  EXPECT_FALSE(*internals->isConsole);

  host::Host& console = StartConsole(2013.03, {"pluginObjectType"});
  EXPECT_TRUE(Opens(console.NewPicture(2, 2)));
  EXPECT_FALSE(*internals->isDesktop);
  EXPECT_TRUE(*internals->isConsole);
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

TEST_F(EditorTest, AVectorPictureIsDrawnIntoABitmap) {
  host::Host& host = StartDesktop();
  const PictureRef vector = MakeVector();
  Reader reader = MakeReader();
  ASSERT_TRUE(Open(reader, vector));
  EXPECT_NE(reader->picture, vector.Handle());
  EXPECT_EQ(reader->width, 6);
  EXPECT_EQ(reader->height, 4);
  EXPECT_EQ(PixelOf(reader, 2, 3), (support::Rgb{255, 0, 0}));
  EXPECT_EQ(PixelOf(reader, 3, 0), (support::Rgb{0, 0, 255}));
  EXPECT_EQ(vector->References(), 1);
  EXPECT_EQ(host.faults.Calls(kDrawPicture), 1);
  reader.reset();
  EXPECT_EQ(host.census.Live(host::Kind::kPicture), 1) << "the copy is gone";
}

TEST_F(EditorTest, AVectorPictureIsRefusedForModifyingOrWithoutRasterising) {
  StartDesktop();
  EXPECT_FALSE(Opens(MakeVector(), true, true));
  EXPECT_FALSE(Opens(MakeVector(), false, false));
}

TEST_F(EditorTest, AVectorPictureWithoutSizeIsRefused) {
  for (const char* missing : {"REALGetPropValueInt", "newPicture"}) {
    StartDesktop(2013.03, {missing});
    EXPECT_FALSE(Opens(MakeVector())) << missing;
  }
  host::Host& host = StartDesktop();
  const PictureRef vector = MakeVector();
  host.faults.FailAlways("newPicture");
  EXPECT_FALSE(Opens(vector));
}

TEST_F(EditorTest, ACopyThatRefusesTheLockIsNotCopiedAgain) {
  host::Host& host = StartDesktop();
  host.settings.opaqueLayout.locking = host::Locking::kRefused;
  const PictureRef vector = MakeVector();
  EXPECT_FALSE(Opens(vector));
  EXPECT_EQ(host.faults.Calls("newPicture"), 1);
}

TEST_F(EditorTest, WithoutTheDrawingMethodRowsAreCopied) {
  for (const double version : {2011.0, 2013.03}) {
    for (const char* missing : {kDrawPicture, "pluginPictureGraphicsGetter"}) {
      SCOPED_TRACE(missing);
      // Nothing but the row tables can be locked, and nobody says which kind of application this
      // is.
      host::Host& host = StartConsole(version, {missing, "pluginObjectType"});
      const PictureRef picture = host.NewPicture(4, 3, PictureLayout::RowTable(4));
      support::Fill(picture, {1, 2, 3}, 9);
      support::Put(picture, 3, 2, {7, 8, 9});
      Reader reader = MakeReader();
      ASSERT_TRUE(Open(reader, picture));
      EXPECT_NE(reader->picture, picture.Handle());
      EXPECT_EQ(PixelOf(reader, 0, 0), (support::Rgb{1, 2, 3}));
      EXPECT_EQ(PixelOf(reader, 3, 2), (support::Rgb{7, 8, 9}));
      EXPECT_EQ(picture->DescriptionLocks(), 0);
      EXPECT_GE(host.faults.Calls("REALPictureClearCache"), 1);
    }
  }
}

TEST_F(EditorTest, RowsOfAnotherSizeAreNotCopied) {
  host::Host& host = StartConsole(2013.03, {kDrawPicture, "pluginObjectType"});
  const PictureRef picture = host.NewPicture(4, 3);
  support::Fill(picture, {1, 2, 3});
  REALrowTablePicture table{};
  picture->SetDescriptionHook([&](REALpictureDescription& description) {
    std::memcpy(&table, description.pictureData, sizeof(table));
    table.height = 2;
    description.pictureData = &table;
  });
  Reader reader = MakeReader();
  ASSERT_TRUE(Open(reader, picture));
  EXPECT_EQ(PixelOf(reader, 0, 0), (support::Rgb{255, 255, 255})) << "as the host made it";
}

TEST_F(EditorTest, InTheRowCopyWhatWasLockedIsUnlocked) {
  host::Host& host = StartDesktop(2013.03, {kDrawPicture});
  const PictureRef vector = MakeVector();
  Reader reader = MakeReader();
  EXPECT_TRUE(Open(reader, vector)) << "the fresh bitmap, nothing copied";
  EXPECT_EQ(PixelOf(reader, 0, 0), (support::Rgb{255, 255, 255}));
  EXPECT_EQ(vector->DescriptionLocks(), 0);
  EXPECT_EQ(host.census.Errors().size(), 0U);
}

TEST_F(EditorTest, EveryMissingCoreGraphicsQueryRefusesAndUnlocks) {
  for (const char* missing : {"CGBitmapContextGetData", "CGBitmapContextGetBitsPerPixel",
                              "CGBitmapContextGetWidth", "CGBitmapContextGetHeight",
                              "CGBitmapContextGetBytesPerRow", "CGBitmapContextGetAlphaInfo"}) {
    if (support::PluginIsBundle()) {  // linked: not looked up, just called
      host::Host& host = StartDesktop();
      EXPECT_TRUE(Opens(host.NewPicture(2, 2)));
      EXPECT_EQ(host.faults.Calls(missing), 1) << missing;
      continue;
    }
    host::Host& host = StartDesktop(2013.03, {missing});
    EXPECT_FALSE(Opens(host.NewPicture(2, 2))) << missing;
  }
}

TEST_F(EditorTest, AContextWithoutDataOrWithRowsTooShortIsRefused) {
  for (const char* failing : {"CGBitmapContextGetData", "CGBitmapContextGetBytesPerRow"}) {
    host::Host& host = StartDesktop();
    host.faults.FailAlways(failing);
    EXPECT_FALSE(Opens(host.NewPicture(2, 2))) << failing;
  }
}

TEST_F(EditorTest, WithoutHasAlphaChannelThePictureCountsAsOpaque) {
  host::Host& host = StartDesktop(2013.03, {"REALGetPropValueBool"});
  const PictureRef picture = host.NewPicture(2, 2, PictureLayout::WithAlpha(2));
  Reader reader = MakeReader();
  ASSERT_TRUE(Open(reader, picture));
  EXPECT_FALSE(reader->hasAlpha);
  EXPECT_FALSE(reader->alphaContext);
}

TEST_F(EditorTest, AFailedLookUpIsRetriedAtTheNextCall) {
  host::Host& host = StartDesktop(2013.03, {"REALLockPictureDescription"});
  const PictureRef picture = host.NewPicture(2, 2);
  EXPECT_FALSE(Opens(picture, false));
  host.faults.Show("REALLockPictureDescription");
  EXPECT_TRUE(Opens(picture, false));
}

}  // namespace
