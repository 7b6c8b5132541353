// Vector pictures, which are drawn into a bitmap, and hosts that lack what this takes.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "tests/pixels/editor_fixture.h"

namespace editor {
namespace {

REALresolver gHostResolver = nullptr;  // of a host whose answers a test changes or notes

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

// A host that tells a width or a height of 0 for a picture that it can't lock.
std::string_view gZeroProperty;
uint8_t TellSize(REALobject, const char* property, int32_t* value) {
  *value = property == gZeroProperty ? 0 : 4;
  return 1;
}

TEST_F(EditorTest, NoBitmapIsAskedForWithoutWidthOrHeight) {
  for (const std::string_view property : {"Width", "Height", ""}) {
    SCOPED_TRACE(property);
    gZeroProperty = property;
    host::Host& host = StartDesktop();
    gHostResolver = *internals->resolver;
    *internals->resolver = [](const char* name) {
      return std::string_view(name) == "REALGetPropValueInt" ? reinterpret_cast<void*>(TellSize)
                                                             : gHostResolver(name);
    };
    EXPECT_EQ(Opens(MakeVector(4, 4)), property.empty());
    EXPECT_EQ(host.faults.Calls("newPicture"), property.empty() ? 1 : 0);
  }
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

std::vector<std::string> gAskedFor;  // names that the resolver was given

TEST_F(EditorTest, OldHostsAreAskedForTheDrawingFunctionBeforeRowsAreCopied) {
  for (const double version : {2011.99, 2012.0}) {
    SCOPED_TRACE(version);
    host::Host& host = StartConsole(version, {kDrawPicture, "pluginObjectType"});
    gAskedFor.clear();
    gHostResolver = *internals->resolver;
    *internals->resolver = [](const char* name) {
      gAskedFor.emplace_back(name);
      return gHostResolver(name);
    };
    EXPECT_TRUE(Opens(host.NewPicture(4, 3)));
    const auto asked = std::count(gAskedFor.begin(), gAskedFor.end(), "RuntimeGraphicsDrawPicture");
    EXPECT_EQ(asked, version < 2012 ? 1 : 0);
    EXPECT_EQ(host.faults.Calls("RuntimeGraphicsDrawPicture"), 0) << "asked for, never called";
  }
}

using SpoilRows = void (*)(REALpictureDescription&, REALrowTablePicture&);

// What a copy made by rows has at its last pixel, where `spoil` changes what the source's lock
// gives.
class RowCopyTest : public EditorTest {
 protected:
  support::Rgb LastPixelCopied(SpoilRows spoil) {
    host::Host& host = StartConsole(2013.03, {kDrawPicture, "pluginObjectType"});
    const PictureRef picture = host.NewPicture(4, 3);
    support::Fill(picture, {1, 2, 3});
    REALrowTablePicture table{};
    picture->SetDescriptionHook([&](REALpictureDescription& description) {
      std::memcpy(&table, description.pictureData, sizeof(table));
      description.pictureData = &table;
      spoil(description, table);
    });
    Reader reader = MakeReader();
    EXPECT_TRUE(Open(reader, picture));
    EXPECT_NE(reader->picture, picture.Handle());
    return PixelOf(reader, 3, 2);
  }
};

TEST_F(RowCopyTest, RowsThatDoNotFitAreLeftAsTheHostMadeThem) {
  const SpoilRows spoilers[] = {
      [](REALpictureDescription&, REALrowTablePicture& table) { table.height = 2; },
      [](REALpictureDescription&, REALrowTablePicture& table) { table.width = 3; },
      [](REALpictureDescription&, REALrowTablePicture& table) { table.zero = 1; },
      [](REALpictureDescription&, REALrowTablePicture& table) { table.rows = nullptr; },
      [](REALpictureDescription& description, REALrowTablePicture&) {
        description.pictureData = nullptr;
      },
  };
  for (const SpoilRows spoil : spoilers) {
    EXPECT_EQ(LastPixelCopied(spoil), (support::Rgb{255, 255, 255}));
  }
}

// Rows to copy need neither the description's type nor the second pointer. A picture that is opened
// by its rows must have both.
TEST_F(RowCopyTest, RowsAreCopiedWhateverTheirTypeAndSecondPointer) {
  const SpoilRows spoilers[] = {
      [](REALpictureDescription&, REALrowTablePicture& table) { table.second = nullptr; },
      [](REALpictureDescription& description, REALrowTablePicture&) {
        description.pictureType = kPictureGraphicsWorld;
      },
  };
  for (const SpoilRows spoil : spoilers) {
    EXPECT_EQ(LastPixelCopied(spoil), (support::Rgb{1, 2, 3}));
  }
}

TEST_F(EditorTest, ACopyThatCannotBeLockedIsNotWritten) {
  host::Host& host = StartConsole(2013.03, {kDrawPicture, "pluginObjectType"});
  const PictureRef picture = host.NewPicture(4, 3);
  support::Fill(picture, {1, 2, 3});
  // The first lock is refused for its type, the second locks the rows, the third would the copy's.
  host.faults.FailCall("REALLockPictureDescription", 3);
  Reader reader = MakeReader();
  ASSERT_TRUE(Open(reader, picture));
  EXPECT_EQ(PixelOf(reader, 0, 0), (support::Rgb{255, 255, 255})) << "as the host made it";
  EXPECT_EQ(picture->DescriptionLocks(), 0);
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
}  // namespace editor
