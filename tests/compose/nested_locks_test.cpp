// One picture given twice, and pictures scrolled both ways, on hosts that don't grant a second lock
// of a picture together with the first, or that hand out copies.
#include <string>

#include "tests/colour/colour_transform_fixture.h"

namespace {

using host::LockManner;
using host::PictureLayout;
using support::PictureRef;
using support::Rgb;

struct Way {
  std::string name;
  LockManner manner;
  double version;
  host::Application application;
  PictureLayout layout;

  // Whether a picture that is locked can be opened once more: by a second copy of its pixels, or,
  // where it is neither locked by its rows nor has an alpha channel, drawn into a new picture.
  bool opensTwice = true;
};

std::vector<Way> Ways() {
  constexpr host::Application kDesktop = host::Application::kDesktop;
  constexpr host::Application kConsole = host::Application::kConsole;
  const PictureLayout opaque = PictureLayout::BitmapContext(6, 4);
  const PictureLayout alpha = PictureLayout::WithAlpha();
  const PictureLayout rows = PictureLayout::RowTable(4);
  return {
      {"single_opaque", LockManner::kSingle, 2013.03, kDesktop, opaque},
      {"single_alpha", LockManner::kSingle, 2013.03, kDesktop, alpha, false},
      {"single_rows", LockManner::kSingle, 2013.03, kConsole, rows, false},
      {"old_single_opaque", LockManner::kSingle, 2011.05, kDesktop, opaque},
      {"old_single_rows", LockManner::kSingle, 2011.05, kConsole, rows, false},
      {"uncounted_opaque", LockManner::kUncounted, 2011.05, kDesktop, opaque},
      {"uncounted_alpha", LockManner::kUncounted, 2011.05, kDesktop, alpha, false},
      {"uncounted_rows", LockManner::kUncounted, 2011.05, kConsole, rows, false},
      {"copied_opaque", LockManner::kCopied, 2013.03, kDesktop, opaque},
      {"copied_alpha", LockManner::kCopied, 2013.03, kDesktop, alpha},
      {"copied_rows", LockManner::kCopied, 2013.03, kConsole, rows},
      {"old_copied_opaque", LockManner::kCopied, 2011.05, kDesktop, opaque},
  };
}

std::ostream& operator<<(std::ostream& out, const Way& way) { return out << way.name; }

class NestedLocks : public support::PluginTest, public ::testing::WithParamInterface<Way> {
 protected:
  void SetUp() override {
    host::Settings settings;
    settings.lockManner = GetParam().manner;
    settings.version = GetParam().version;
    settings.application = GetParam().application;
    Start(settings);
    picture = Host().NewPicture(7, 5, GetParam().layout);
    support::FillWithNoise(picture, random);
    before = support::Bytes(picture);
  }
  void TearDown() override {
    EXPECT_EQ(picture->DescriptionLocks(), 0);
    picture = nullptr;
    PluginTest::TearDown();
  }

  // A new opaque picture of the same colours where the second opening succeeds, nil elsewhere.
  void ExpectCopy(const PictureRef& result) {
    if (!GetParam().opensTwice) {
      EXPECT_FALSE(result);
      return;
    }
    EXPECT_TRUE(support::IsNewPicture(
        result, 7, 5, false, [&](int32_t x, int32_t y) { return support::At(picture, x, y); }));
  }

  support::Random random{0x10C45};
  PictureRef picture;
  std::vector<uint8_t> before;
};

TEST_P(NestedLocks, ThePictureIsFoundInItself) {
  int32_t x = -1;
  int32_t y = -1;
  const bool found = CallStoring<bool>("FindPictureKRT", picture, picture, &x, &y);
  EXPECT_EQ(found, GetParam().opensTwice);
}

TEST_P(NestedLocks, ChannelsOfOnePictureMakeACopyOfIt) {
  ExpectCopy(CallGlobal<PictureRef>("MergePictureKRT", picture, picture));
  ExpectCopy(CallGlobal<PictureRef>("CombinePicturesKRT", picture, picture, picture));
  for (const char* replace :
       {"ReplaceRedChannelKRT", "ReplaceGreenChannelKRT", "ReplaceBlueChannelKRT"}) {
    ExpectCopy(Call<PictureRef>(replace, picture, picture));
  }
  EXPECT_EQ(support::Bytes(picture), before);
}

TEST_P(NestedLocks, APictureThatIsItsOwnMaskGetsItsOwnRed) {
  std::vector<uint8_t> expected = before;
  const size_t rowBytes = before.size() / 5;
  for (int32_t y = 0; y < 5 && GetParam().opensTwice; ++y) {
    for (int32_t x = 0; x < 7; ++x) {
      const int red = support::At(picture, x, y).red;
      expected[static_cast<size_t>(y) * rowBytes + static_cast<size_t>(x) * 4] =
          static_cast<uint8_t>(red);
    }
  }
  Assign(Find("Picture", "EmbeddedMaskKRT", 1), picture, false, picture);
  EXPECT_EQ(support::Bytes(picture), expected);
}

// A second lock that is refused makes the plug-in go on with a new picture. Of two copies, the
// source's is written back last, as it was.
TEST_P(NestedLocks, APictureThatIsItsOwnDestinationKeepsItsPixels) {
  colour_transform::Table table{};
  for (size_t value = 0; value < 256; ++value) table[value] = static_cast<uint8_t>(255 - value);
  const auto block = [&] { return Host().NewMemoryBlock(table); };
  const auto result =
      Call<PictureRef>("TransformColorsKRT", picture, block(), block(), block(), picture);
  EXPECT_EQ(support::Bytes(picture), before);
  if (GetParam().manner == LockManner::kCopied) {
    EXPECT_EQ(result, picture);
    return;
  }
  EXPECT_TRUE(support::IsNewPicture(result, 7, 5, false, [&](int32_t x, int32_t y) {
    const Rgb colour = support::At(picture, x, y);
    return Rgb{255 - colour.red, 255 - colour.green, 255 - colour.blue};
  }));
}

// Nothing nests here: both axes move, and so does the mask, even where the picture is its own.
TEST_P(NestedLocks, ScrollingBothWaysLocksOneAfterTheOther) {
  const auto moved = [&](int32_t x, int32_t y, int32_t dx, int32_t dy) {
    return support::At(picture, (x - dx + 7) % 7, (y - dy + 5) % 5);
  };
  std::vector<Rgb> expected;
  for (int32_t y = 0; y < 5; ++y) {
    for (int32_t x = 0; x < 7; ++x) expected.push_back(moved(x, y, 1, 1));
  }
  const auto expect = [&] {
    for (int32_t y = 0; y < 5; ++y) {
      for (int32_t x = 0; x < 7; ++x) {
        EXPECT_EQ(support::At(picture, x, y), expected[static_cast<size_t>(y * 7 + x)])
            << "(" << x << ", " << y << ")";
      }
    }
  };
  EXPECT_TRUE(Call<bool>("ScrollKRT", picture, 1, 1, true, false));
  expect();

  expected.clear();
  for (int32_t y = 0; y < 5; ++y) {
    for (int32_t x = 0; x < 7; ++x) expected.push_back(moved(x, y, 4, 2));
  }
  picture->SetMask(picture);
  EXPECT_TRUE(Call<bool>("ScrollKRT", picture, 2, 1, true, true));
  expect();
  picture->SetMask(nullptr);
}

INSTANTIATE_TEST_SUITE_P(Ways, NestedLocks, ::testing::ValuesIn(Ways()),
                         [](const auto& way) { return way.param.name; });

}  // namespace
