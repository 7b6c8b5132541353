#include <array>
#include <climits>
#include <functional>

#include "host/quickdraw.h"
#include "tests/support/fixture.h"

namespace {

using host::PictureLayout;
using support::Bytes;
using support::FillWithNoise;
using support::LayoutPair;
using support::PictureRef;
using support::Random;

// The remainder that is never negative.
int32_t Modulo(int64_t value, int32_t length) {
  return static_cast<int32_t>((value % length + length) % length);
}

// A picture's bytes, row by row: the pixels, then the padding.
struct Rows {
  explicit Rows(const PictureRef& picture)
      : bytes(Bytes(picture)),
        width(picture->Width()),
        height(picture->Height()),
        rowBytes(height > 0 ? static_cast<int32_t>(bytes.size()) / height : 0) {}

  uint8_t& At(int32_t row, int32_t byte) {
    return bytes[static_cast<size_t>(row) * static_cast<size_t>(rowBytes) +
                 static_cast<size_t>(byte)];
  }

  std::vector<uint8_t> bytes;
  int32_t width, height, rowBytes;
};

// Row i goes to row i + delta. The padding of a bitmap moves with its row; rows of a table are as
// long as their pixels.
std::vector<uint8_t> MovedDown(const PictureRef& picture, int64_t delta) {
  Rows from(picture);
  Rows to = from;
  const bool isTable = picture->Layout().storage == host::Storage::kRowTable;
  const int32_t moving = isTable ? from.width * 4 : from.rowBytes;
  for (int32_t y = 0; y < from.height; ++y) {
    for (int32_t i = 0; i < moving; ++i) to.At(Modulo(y + delta, from.height), i) = from.At(y, i);
  }
  return to.bytes;
}

// Column i goes to column i + delta.
std::vector<uint8_t> MovedRight(const PictureRef& picture, int64_t delta) {
  Rows from(picture);
  Rows to = from;
  for (int32_t y = 0; y < from.height; ++y) {
    for (int32_t x = 0; x < from.width; ++x) {
      for (int32_t i = 0; i < 4; ++i) {
        to.At(y, Modulo(x + delta, from.width) * 4 + i) = from.At(y, x * 4 + i);
      }
    }
  }
  return to.bytes;
}

// Makes what the host shows of a picture what it now holds, so that a missed clear can be seen.
void Show(const PictureRef& picture) {
  picture->SetPixel(0, 0, picture->Pixel(0, 0));
  picture->Rendering();
}

class ScrollingTest : public support::PluginTest {
 protected:
  PictureRef Noise(int32_t width, int32_t height, const PictureLayout& layout) {
    PictureRef picture = Host().NewPicture(width, height, layout);
    FillWithNoise(picture, random);
    Show(picture);
    return picture;
  }
  PictureRef Noise(int32_t width, int32_t height) {
    return Noise(width, height, PictureLayout::BitmapContext(2, 8));
  }

  bool Down(const PictureRef& picture, int32_t delta, bool wrap = true, bool mask = false) {
    return Call<bool>("ScrollVerticalKRT", picture, delta, wrap, mask);
  }
  bool Right(const PictureRef& picture, int32_t delta, bool wrap = true, bool mask = false) {
    return Call<bool>("ScrollHorizontalKRT", picture, delta, wrap, mask);
  }
  bool Both(const PictureRef& picture, int32_t dx, int32_t dy, bool wrap = true,
            bool mask = false) {
    return Call<bool>("ScrollKRT", picture, dx, dy, wrap, mask);
  }

  Random random{0x5C011};
};

TEST_F(ScrollingTest, ADeltaOfZeroIsTrueEvenForNil) {
  for (const bool wrap : {false, true}) {
    for (const bool mask : {false, true}) {
      EXPECT_TRUE(Down(nullptr, 0, wrap, mask));
      EXPECT_TRUE(Right(nullptr, 0, wrap, mask));
      EXPECT_TRUE(Both(nullptr, 0, 0, wrap, mask));
    }
  }
}

TEST_F(ScrollingTest, ADeltaOfZeroTouchesNeitherPictureNorMask) {
  const PictureRef picture = Noise(5, 4);
  const PictureRef mask = Noise(5, 4);
  picture->SetMask(mask);
  const std::vector<uint8_t> before = Bytes(picture);
  const std::vector<uint8_t> maskBefore = Bytes(mask);
  for (const bool wrap : {false, true}) {
    EXPECT_TRUE(Down(picture, 0, wrap, true));
    EXPECT_TRUE(Right(picture, 0, wrap, true));
    EXPECT_TRUE(Both(picture, 0, 0, wrap, true));
  }
  EXPECT_EQ(Bytes(picture), before);
  EXPECT_EQ(Bytes(mask), maskBefore);
}

TEST_F(ScrollingTest, NilIsFalseVerticallyAndTrueHorizontally) {
  for (const bool wrap : {false, true}) {
    EXPECT_FALSE(Down(nullptr, 3, wrap, true));
    EXPECT_TRUE(Right(nullptr, 3, wrap, true));
    EXPECT_FALSE(Both(nullptr, 3, 3, wrap, true));
    EXPECT_TRUE(Both(nullptr, 3, 0, wrap, true));
  }
}

TEST_F(ScrollingTest, MultiplesOfTheAxisChangeNothing) {
  const PictureRef picture = Noise(7, 10);
  const std::vector<uint8_t> before = Bytes(picture);
  for (const int32_t times : {-3, -1, 1, 2}) {
    EXPECT_TRUE(Down(picture, 10 * times));
    EXPECT_TRUE(Right(picture, 7 * times));
    EXPECT_TRUE(Both(picture, 7 * times, 10 * times));
    EXPECT_EQ(Bytes(picture), before);
  }
}

TEST_F(ScrollingTest, RowsOfAPictureTenHighMoveAsWorkedOut) {
  struct Case {
    int32_t delta, movesDownBy;
  };
  for (const Case& c : {Case{5, 5}, Case{-5, 5}, Case{6, -4}, Case{-13, -3}}) {
    const PictureRef picture = Noise(3, 10);
    const std::vector<uint8_t> expected = MovedDown(picture, c.movesDownBy);
    EXPECT_TRUE(Down(picture, c.delta));
    EXPECT_EQ(Bytes(picture), expected) << "delta " << c.delta;
  }
}

TEST_F(ScrollingTest, RowsAreFoundWhereHandArithmeticPutsThem) {
  const PictureRef picture = Host().NewPicture(1, 5, PictureLayout::BitmapContext(5));
  for (int32_t y = 0; y < 5; ++y) support::Put(picture, 0, y, {10 * y, 0, 0});
  EXPECT_TRUE(Down(picture, 2));
  const std::array<int, 5> reds = {30, 40, 0, 10, 20};
  for (int32_t y = 0; y < 5; ++y) {
    EXPECT_EQ(support::At(picture, 0, y).red, reds[static_cast<size_t>(y)]);
  }
}

TEST_F(ScrollingTest, ColumnsOfAPictureSevenWideMoveAsWorkedOut) {
  const PictureRef picture = Host().NewPicture(7, 1, PictureLayout::BitmapContext(5));
  for (int32_t x = 0; x < 7; ++x) support::Put(picture, x, 0, {10 * x, 0, 0});
  EXPECT_TRUE(Right(picture, 4));
  const std::array<int, 7> reds = {30, 40, 50, 60, 0, 10, 20};
  for (int32_t x = 0; x < 7; ++x) {
    EXPECT_EQ(support::At(picture, x, 0).red, reds[static_cast<size_t>(x)]);
  }
}

TEST_F(ScrollingTest, WithoutWrapOnlyGraphicsWorldsMove) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef picture = Noise(6, 5, pair.source);
    const std::vector<uint8_t> before = Bytes(picture);
    EXPECT_FALSE(Down(picture, 2, false));
    EXPECT_TRUE(Right(picture, 2, false));
    EXPECT_FALSE(Both(picture, 2, 2, false));
    EXPECT_TRUE(Both(picture, 2, 0, false));
    EXPECT_EQ(Bytes(picture), before);
  }
}

TEST_F(ScrollingTest, BothAxesMoveByTheirOwnDelta) {
  const PictureRef picture = Noise(6, 5);
  const std::vector<uint8_t> right = MovedRight(picture, 1);
  EXPECT_TRUE(Both(picture, 1, 0));
  EXPECT_EQ(Bytes(picture), right);
  const std::vector<uint8_t> down = MovedDown(picture, -2);
  EXPECT_TRUE(Both(picture, 0, -2));
  EXPECT_EQ(Bytes(picture), down);
}

TEST_F(ScrollingTest, WithoutAMaskScrollmaskChangesNothing) {
  const PictureRef picture = Noise(6, 5);
  const std::vector<uint8_t> down = MovedDown(picture, 2);
  EXPECT_TRUE(Down(picture, 2, true, true));
  EXPECT_EQ(Bytes(picture), down);
  const std::vector<uint8_t> right = MovedRight(picture, 2);
  EXPECT_TRUE(Right(picture, 2, true, true));
  EXPECT_EQ(Bytes(picture), right);
  EXPECT_FALSE(picture->Mask()) << "a mask was made";
}

TEST_F(ScrollingTest, EveryLayoutAndDeltaRotatesByTheRule) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (int32_t round = 0; round < 40; ++round) {
      const int32_t width = random.Between(1, 9);
      const int32_t height = random.Between(1, 9);
      PictureLayout layout = pair.source;
      layout.rowPadding = random.Between(0, 3) * 4;
      layout.contiguousRows = random.OneIn(2);
      const PictureRef picture = Noise(width, height, layout);
      const std::array<int32_t, 4> deltas = {random.Between(-20, 20), random.Between(-20, 20),
                                             static_cast<int32_t>(random.Bits()),
                                             random.OneIn(2) ? INT_MIN : INT_MAX};
      for (const int32_t delta : deltas) {
        SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height) + " by " +
                     std::to_string(delta));
        const std::vector<uint8_t> down = MovedDown(picture, delta);
        EXPECT_TRUE(Down(picture, delta));
        EXPECT_EQ(Bytes(picture), down);
        EXPECT_TRUE(picture->RenderingIsCurrent());
        const std::vector<uint8_t> right = MovedRight(picture, delta);
        EXPECT_TRUE(Right(picture, delta));
        EXPECT_EQ(Bytes(picture), right);
        EXPECT_TRUE(picture->RenderingIsCurrent());
      }
      ASSERT_FALSE(HasFailure());
    }
  }
}

TEST_F(ScrollingTest, TheMaskMovesWithThePictureWhenAsked) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef picture = Noise(6, 5, pair.source);
    const PictureRef mask = Noise(8, 3, pair.source);
    picture->SetMask(mask);

    std::vector<uint8_t> moved = MovedDown(picture, 2);
    std::vector<uint8_t> maskMoved = MovedDown(mask, 2);
    EXPECT_TRUE(Down(picture, 2, true, true));
    EXPECT_EQ(Bytes(picture), moved);
    EXPECT_EQ(Bytes(mask), maskMoved);
    EXPECT_TRUE(mask->RenderingIsCurrent());

    moved = MovedRight(picture, -1);
    maskMoved = MovedRight(mask, -1);
    EXPECT_TRUE(Right(picture, -1, true, true));
    EXPECT_EQ(Bytes(picture), moved);
    EXPECT_EQ(Bytes(mask), maskMoved);

    moved = MovedDown(picture, 1);
    EXPECT_TRUE(Down(picture, 1));
    EXPECT_EQ(Bytes(picture), moved);
    EXPECT_EQ(Bytes(mask), maskMoved) << "scrollmask was false";
  }
}

TEST_F(ScrollingTest, APictureThatIsItsOwnMaskMovesTwice) {
  const PictureRef picture = Noise(6, 5);
  picture->SetMask(picture);
  const std::vector<uint8_t> down = MovedDown(picture, 2);
  EXPECT_TRUE(Down(picture, 1, true, true));
  EXPECT_EQ(Bytes(picture), down);
  const std::vector<uint8_t> right = MovedRight(picture, 4);
  EXPECT_TRUE(Right(picture, 2, true, true));
  EXPECT_EQ(Bytes(picture), right);
  picture->SetMask(nullptr);
}

TEST_F(ScrollingTest, AMaskThatCannotMoveStopsTheVerticalMethodAlone) {
  const PictureRef picture = Noise(6, 5);
  const PictureRef mask = Noise(6, 5);
  mask->SetLocking(host::Locking::kRefused);
  picture->SetMask(mask);
  const std::vector<uint8_t> before = Bytes(picture);
  const std::vector<uint8_t> maskBefore = Bytes(mask);
  EXPECT_FALSE(Down(picture, 2, true, true));
  EXPECT_EQ(Bytes(picture), before);

  const std::vector<uint8_t> right = MovedRight(picture, 2);
  EXPECT_TRUE(Right(picture, 2, true, true));
  EXPECT_EQ(Bytes(picture), right);
  EXPECT_EQ(Bytes(mask), maskBefore);
}

TEST_F(ScrollingTest, WithTheMaskEntryMissingThePictureMovesAlone) {
  StartWithoutPlugin().faults.Hide("REALGetPictureMask");
  support::LoadPluginUnderTest(Host());
  const PictureRef picture = Noise(6, 5);
  const PictureRef mask = Noise(6, 5);
  picture->SetMask(mask);
  const std::vector<uint8_t> down = MovedDown(picture, 2);
  const std::vector<uint8_t> maskBefore = Bytes(mask);
  EXPECT_TRUE(Down(picture, 2, true, true));
  EXPECT_EQ(Bytes(picture), down);
  EXPECT_EQ(Bytes(mask), maskBefore);
}

TEST_F(ScrollingTest, APictureThatCannotBeOpenedIsFalseVerticallyAndTrueHorizontally) {
  for (const host::Application application :
       {host::Application::kDesktop, host::Application::kConsole}) {
    for (const double version : {2011.04, 2012.0, 2013.03}) {
      host::Settings settings;
      settings.application = application;
      settings.version = version;
      Start(settings);
      const PictureRef picture = Host().NewPicture(6, 5);
      picture->SetLocking(host::Locking::kRefused);
      const std::vector<uint8_t> before = Bytes(picture);
      EXPECT_FALSE(Down(picture, 2));
      EXPECT_TRUE(Right(picture, 2));
      EXPECT_FALSE(Both(picture, 2, 2));
      EXPECT_EQ(Bytes(picture), before);
      EXPECT_EQ(picture->DescriptionLocks(), 0);
    }
  }
}

TEST_F(ScrollingTest, AVectorPictureIsNotDrawnIntoACopy) {
  const PictureRef vector =
      Host().NewVectorPicture(6, 5, [](int32_t, int32_t) { return 0x123456U; });
  EXPECT_FALSE(Down(vector, 2));
  EXPECT_TRUE(Right(vector, 2));
  EXPECT_EQ(Host().faults.Calls("newPicture"), 0);
}

TEST_F(ScrollingTest, APictureWithoutPixelsIsLeftAloneAndTrue) {
  host::Settings settings;
  settings.application = host::Application::kConsole;
  Start(settings);
  const PictureRef picture = Noise(6, 5, PictureLayout::RowTable());
  const std::vector<uint8_t> before = Bytes(picture);
  picture->SetDescriptionHook([](REALpictureDescription& d) { d.width = d.height = 0; });
  EXPECT_TRUE(Down(picture, 2));
  EXPECT_TRUE(Right(picture, 2));
  EXPECT_TRUE(Both(picture, 2, 2));
  EXPECT_EQ(Bytes(picture), before);
}

// The description tells of a picture that is larger than it is; nothing of it may be touched.
TEST_F(ScrollingTest, WhatNeedsMoreThan31BitsOfMemoryIsRefused) {
  struct Case {
    int32_t width, height, delta;
  };
  const Case vertical[] = {
      {1 << 27, 5, 1},     // four rows of 2^29 bytes are 2^31
      {1 << 27, 5, -1},    // and five more than that
      {102261127, 6, -1},  // six rows of 409044508 bytes are 2454267048, though five are in range
      {1 << 28, 3, 1},     // two rows of 2^30
      {1 << 29, 2, 1},     // a row of 2^31 bytes
      {1 << 30, 2, 1},     // a row of 2^32 bytes
      {1 << 30, 1 << 30, 5}, {INT_MAX, INT_MAX, -5},
  };
  host::Settings settings;
  settings.application = host::Application::kConsole;
  Start(settings);
  const PictureRef picture = Noise(6, 5, PictureLayout::RowTable());
  const std::vector<uint8_t> before = Bytes(picture);
  for (const Case& c : vertical) {
    SCOPED_TRACE(std::to_string(c.width) + " x " + std::to_string(c.height));
    picture->SetDescriptionHook([&](REALpictureDescription& d) {
      d.width = c.width;
      d.height = c.height;
    });
    EXPECT_FALSE(Down(picture, c.delta));
    if (c.width >= 1 << 29) {
      EXPECT_TRUE(Right(picture, c.delta));
    }
    EXPECT_EQ(Bytes(picture), before);
  }
}

TEST_F(ScrollingTest, EveryFailingHostCallGivesTheDocumentedResultAndBalances) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef picture = Noise(6, 5, pair.source);
    const std::vector<uint8_t> before = Bytes(picture);
    Host().faults.FailAlways("REALLockPictureDescription");
    EXPECT_FALSE(Down(picture, 2));
    EXPECT_TRUE(Right(picture, 2));
    EXPECT_FALSE(Both(picture, 2, 2));
    EXPECT_EQ(Bytes(picture), before);
    Host().faults.Clear();

    // The horizontal step fails and is passed over; the vertical one decides.
    const std::vector<uint8_t> down = MovedDown(picture, 2);
    Host().faults.FailCall("REALLockPictureDescription");
    EXPECT_TRUE(Both(picture, 2, 2));
    EXPECT_EQ(Bytes(picture), down);
    Host().faults.Clear();
  }
}

// Pictures that a QuickDraw graphics world backs: without wrap, the platform moves them.
class GraphicsWorldTest : public ScrollingTest {
 protected:
  PictureRef World(int32_t width, int32_t height) {
    PictureRef picture = Host().NewPicture(width, height, PictureLayout::GraphicsWorld(8));
    FillWithNoise(picture, random);
    Show(picture);
    return picture;
  }

  // What a picture holds, channel values in a row.
  static std::vector<host::Rgba> Colours(const PictureRef& picture) {
    std::vector<host::Rgba> colours;
    for (int32_t y = 0; y < picture->Height(); ++y) {
      for (int32_t x = 0; x < picture->Width(); ++x) colours.push_back(picture->Pixel(x, y));
    }
    return colours;
  }

  // The colours moved by (dh, dv), white where nothing came from.
  static std::vector<host::Rgba> Shifted(const PictureRef& picture, int32_t dh, int32_t dv) {
    std::vector<host::Rgba> colours;
    for (int32_t y = 0; y < picture->Height(); ++y) {
      for (int32_t x = 0; x < picture->Width(); ++x) {
        const int32_t fromX = x - dh;
        const int32_t fromY = y - dv;
        const bool inside =
            fromX >= 0 && fromX < picture->Width() && fromY >= 0 && fromY < picture->Height();
        colours.push_back(inside ? picture->Pixel(fromX, fromY) : host::Rgba{255, 255, 255, 255});
      }
    }
    return colours;
  }
};

TEST_F(GraphicsWorldTest, TheContentShiftsAndTheStripIsErased) {
  for (const int32_t delta : {1, 3, -2, 4, -4, 100, -100}) {
    SCOPED_TRACE(delta);
    const PictureRef picture = World(5, 4);
    const std::vector<host::Rgba> down = Shifted(picture, 0, delta);
    EXPECT_TRUE(Down(picture, delta, false));
    EXPECT_EQ(Colours(picture), down);

    const PictureRef second = World(5, 4);
    const std::vector<host::Rgba> right = Shifted(second, delta, 0);
    EXPECT_TRUE(Right(second, delta, false));
    EXPECT_EQ(Colours(second), right);
  }
}

TEST_F(GraphicsWorldTest, BothAxesShift) {
  const PictureRef picture = World(5, 4);
  const std::vector<host::Rgba> shifted = Shifted(picture, 2, -1);
  EXPECT_TRUE(Both(picture, 2, -1, false));
  EXPECT_EQ(Colours(picture), shifted);
}

TEST_F(GraphicsWorldTest, TheMaskShiftsFirst) {
  const PictureRef picture = World(5, 4);
  const PictureRef mask = World(3, 6);
  picture->SetMask(mask);
  const std::vector<host::Rgba> shifted = Shifted(picture, 0, 2);
  const std::vector<host::Rgba> maskShifted = Shifted(mask, 0, 2);
  EXPECT_TRUE(Down(picture, 2, false, true));
  EXPECT_EQ(Colours(picture), shifted);
  EXPECT_EQ(Colours(mask), maskShifted);
}

TEST_F(GraphicsWorldTest, AMaskThatIsNoGraphicsWorldStopsTheVerticalMethodAlone) {
  const PictureRef picture = World(5, 4);
  const PictureRef mask = Noise(5, 4);
  picture->SetMask(mask);
  const std::vector<host::Rgba> before = Colours(picture);
  EXPECT_FALSE(Down(picture, 2, false, true));
  EXPECT_EQ(Colours(picture), before);
  const std::vector<host::Rgba> right = Shifted(picture, 2, 0);
  EXPECT_TRUE(Right(picture, 2, false, true));
  EXPECT_EQ(Colours(picture), right);
}

TEST_F(GraphicsWorldTest, DistancesKeepTheirLower16Bits) {
  struct Case {
    int32_t delta, shift;
  };
  for (const Case& c : {Case{65536, 0}, Case{65537, 1}, Case{-65538, -2}, Case{INT_MIN, 0},
                        Case{INT_MAX, -1}, Case{0x12340002, 2}}) {
    SCOPED_TRACE(c.delta);
    const PictureRef picture = World(5, 4);
    const std::vector<host::Rgba> down = Shifted(picture, 0, c.shift);
    EXPECT_TRUE(Down(picture, c.delta, false));
    EXPECT_EQ(Colours(picture), down);
    const std::vector<host::Rgba> right = Shifted(picture, c.shift, 0);
    EXPECT_TRUE(Right(picture, c.delta, false));
    EXPECT_EQ(Colours(picture), right);
  }
}

TEST_F(GraphicsWorldTest, WrappingNeedsAnotherKindOfLock) {
  const PictureRef picture = World(5, 4);
  const std::vector<host::Rgba> before = Colours(picture);
  EXPECT_FALSE(Down(picture, 2));
  EXPECT_TRUE(Right(picture, 2));
  EXPECT_EQ(Colours(picture), before);
}

// The calls that are there are made all the same; what moves is what they do without the others.
TEST_F(GraphicsWorldTest, MissingQuickDrawFunctionsAreLeftOutAndItIsTrue) {
  struct Case {
    const char* missing;
    bool moves;
    int regionsLeft;
  };
  for (const Case& c :
       {Case{"GetGWorld", true, 0}, Case{"NewRgn", true, 0}, Case{"DisposeRgn", true, 1},
        Case{"SetGWorld", false, 0}, Case{"ScrollRect", false, 0}, Case{"FSFindFolder", false, 0},
        Case{"CFURLCreateFromFSRef", false, 0},
        Case{"CFURLCreateCopyAppendingPathComponent", false, 0}, Case{"CFBundleCreate", false, 0},
        Case{"CFBundleLoadExecutable", false, 0},
        Case{"CFBundleGetFunctionPointerForName", false, 0}}) {
    SCOPED_TRACE(c.missing);
    StartWithoutPlugin().faults.Hide(c.missing);
    support::LoadPluginUnderTest(Host());
    {
      const PictureRef picture = World(5, 4);
      const std::vector<host::Rgba> expected = c.moves ? Shifted(picture, 0, 2) : Colours(picture);
      EXPECT_TRUE(CallStoring<bool>("ScrollVerticalKRT", picture, 2, false, false));
      EXPECT_EQ(Colours(picture), expected);
      EXPECT_EQ(picture->DescriptionLocks(), 0);
      EXPECT_EQ(host::CurrentGraphicsWorld(), nullptr);
    }
    ExpectLeft(c.regionsLeft);
    StartWithoutPlugin();  // ends the host, which looks at its census
    ExpectLeft(0);
  }
}

TEST_F(GraphicsWorldTest, WithoutASavedWorldOrARegionTheContentMovesAllTheSame) {
  for (const char* entry : {"GetGWorld", "NewRgn"}) {
    SCOPED_TRACE(entry);
    const PictureRef picture = World(5, 4);
    const std::vector<host::Rgba> right = Shifted(picture, 2, 0);
    Host().faults.FailCall(entry);
    EXPECT_TRUE(Right(picture, 2, false));
    EXPECT_EQ(Colours(picture), right);
    EXPECT_EQ(host::CurrentGraphicsWorld(), nullptr);
    Host().faults.Clear();
  }
}

TEST_F(GraphicsWorldTest, TheCallsComeInTheirOrder) {
  const PictureRef picture = World(5, 4);
  ASSERT_TRUE(Down(picture, 1, false));
  Host().faults.StartRecord();
  ASSERT_TRUE(Down(picture, 1, false));
  const std::vector<std::string> expected = {"lockPictureDescription",
                                             "GetGWorld",
                                             "SetGWorld",
                                             "NewRgn",
                                             "ScrollRect",
                                             "DisposeRgn",
                                             "SetGWorld",
                                             "unlockPictureDescription"};
  EXPECT_EQ(Host().faults.StopRecord(), expected);
}

TEST_F(GraphicsWorldTest, WithoutTheTwoArgumentLockItIsNoGraphicsWorld) {
  for (const double version : {2009.05, 2012.0}) {
    host::Settings settings;
    settings.version = version;
    StartWithoutPlugin(settings).faults.Hide("lockPictureDescription");
    support::LoadPluginUnderTest(Host());
    const PictureRef picture = World(5, 4);
    const std::vector<host::Rgba> before = Colours(picture);
    EXPECT_FALSE(Down(picture, 2, false));
    EXPECT_TRUE(Right(picture, 2, false));
    EXPECT_EQ(Colours(picture), before);
    EXPECT_EQ(picture->DescriptionLocks(), 0);
  }
}

TEST_F(GraphicsWorldTest, ARefusedLockIsUndoneWhereTheHostCountsIt) {
  for (const double version : {2009.05, 2011.99, 2012.0, 2013.03}) {
    SCOPED_TRACE(version);
    host::Settings settings;
    settings.version = version;
    Start(settings);
    const PictureRef picture = World(5, 4);
    picture->SetLocking(host::Locking::kRefused);
    EXPECT_FALSE(Down(picture, 2, false));
    EXPECT_TRUE(Right(picture, 2, false));
    EXPECT_EQ(picture->DescriptionLocks(), 0);
  }
}

TEST_F(GraphicsWorldTest, ADescriptionOfAnotherKindIsUnlocked) {
  const PictureRef picture = World(5, 4);
  const std::vector<host::Rgba> before = Colours(picture);
  for (const int32_t type : {0, 3, 5, 8, 10}) {
    picture->SetDescriptionHook([type](REALpictureDescription& d) { d.pictureType = type; });
    EXPECT_FALSE(Down(picture, 2, false));
    EXPECT_TRUE(Right(picture, 2, false));
    EXPECT_EQ(picture->DescriptionLocks(), 0);
  }
  EXPECT_EQ(Colours(picture), before);
}

TEST_F(GraphicsWorldTest, ADescriptionWithoutItsWorldIsNoGraphicsWorld) {
  const PictureRef picture = World(5, 4);
  const std::vector<host::Rgba> before = Colours(picture);
  picture->SetDescriptionHook([](REALpictureDescription& d) { d.pictureData = nullptr; });
  EXPECT_FALSE(Down(picture, 2, false));
  EXPECT_TRUE(Right(picture, 2, false));
  EXPECT_EQ(Colours(picture), before);
}

}  // namespace
