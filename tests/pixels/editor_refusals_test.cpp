// Pictures and descriptions that an editor refuses, and what it then undoes.
#include <gtest/gtest.h>

#include "tests/pixels/editor_fixture.h"

namespace editor {
namespace {

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

}  // namespace
}  // namespace editor
