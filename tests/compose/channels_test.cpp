#include <algorithm>
#include <array>

#include "tests/support/fixture.h"

namespace {

using host::PictureLayout;
using support::At;
using support::Bytes;
using support::FillWithNoise;
using support::IsNewPicture;
using support::LayoutPair;
using support::PictureRef;
using support::Random;
using support::Rgb;

using Result = host::Ref<host::Picture>;

constexpr const char* kReplace[] = {"ReplaceRedChannelKRT", "ReplaceGreenChannelKRT",
                                    "ReplaceBlueChannelKRT"};

// One of the layouts that can stand beside `layout` in a process, rows padded at random.
PictureLayout AnotherLayout(const PictureLayout& layout, Random& random) {
  const int32_t padding = random.Between(0, 3) * 4;
  if (layout.storage == host::Storage::kRowTable) return PictureLayout::RowTable(padding);
  const auto kind = static_cast<uint32_t>(random.Between(1, 8));
  return kind <= 6 ? PictureLayout::BitmapContext(kind, padding)
                   : PictureLayout::WithAlpha(kind - 6, padding);
}

class ChannelsTest : public support::PluginTest {
 protected:
  PictureRef Noise(int32_t width, int32_t height, const PictureLayout& layout) {
    PictureRef picture = Host().NewPicture(width, height, layout);
    FillWithNoise(picture, random);
    return picture;
  }
  PictureRef Noise(int32_t width, int32_t height) {
    return Noise(width, height, PictureLayout::BitmapContext(2, 4));
  }
  PictureRef Plain(int32_t width, int32_t height, Rgb colour) {
    PictureRef picture = Host().NewPicture(width, height);
    support::Fill(picture, colour);
    return picture;
  }

  Result Merge(const PictureRef& a, const PictureRef& b) {
    return CallGlobal<Result>("MergePictureKRT", a, b);
  }
  Result Combine(const PictureRef& red, const PictureRef& blue, const PictureRef& green) {
    return CallGlobal<Result>("CombinePicturesKRT", red, blue, green);
  }
  Result Replace(const char* method, const PictureRef& self, const PictureRef& channel) {
    return Call<Result>(method, self, channel);
  }

  ::testing::AssertionResult IsOpaqueCopy(const Result& actual, const PictureRef& of) {
    return IsNewPicture(actual, of->Width(), of->Height(), false,
                        [&](int32_t x, int32_t y) { return At(of, x, y); });
  }

  Random random{0xC4A2};
};

TEST_F(ChannelsTest, MergingAPictureWithItselfCopiesItOpaque) {
  NEEDS_NESTED_LOCKS();
  for (const LayoutPair& pair : support::AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef picture = Noise(7, 3, pair.source);
    EXPECT_TRUE(IsOpaqueCopy(Merge(picture, picture), picture));
  }
}

TEST_F(ChannelsTest, MergingWithBlackCopiesTheOtherAndWithWhiteIsWhite) {
  const PictureRef picture = Noise(7, 3);
  const PictureRef black = Plain(7, 3, {0, 0, 0});
  const PictureRef white = Plain(7, 3, {255, 255, 255});
  EXPECT_TRUE(IsOpaqueCopy(Merge(picture, black), picture));
  EXPECT_TRUE(IsOpaqueCopy(Merge(black, picture), picture));
  EXPECT_TRUE(IsOpaqueCopy(Merge(picture, white), white));
  EXPECT_TRUE(IsOpaqueCopy(Merge(white, picture), white));
}

TEST_F(ChannelsTest, CombiningOnePictureThreeTimesCopiesItOpaque) {
  NEEDS_NESTED_LOCKS();
  for (const LayoutPair& pair : support::AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef picture = Noise(7, 3, pair.source);
    EXPECT_TRUE(IsOpaqueCopy(Combine(picture, picture, picture), picture));
  }
}

TEST_F(ChannelsTest, TheArgumentsOfCombineAreRedBlueGreen) {
  const PictureRef r = Plain(4, 4, {255, 0, 0});
  const PictureRef g = Plain(4, 4, {0, 255, 0});
  const PictureRef b = Plain(4, 4, {0, 0, 255});
  EXPECT_TRUE(IsOpaqueCopy(Combine(r, b, g), Plain(4, 4, {255, 255, 255})));
  EXPECT_TRUE(IsOpaqueCopy(Combine(r, g, b), r));
}

TEST_F(ChannelsTest, EachReplaceTakesItsOwnChannel) {
  const PictureRef source = Plain(4, 4, {1, 2, 3});
  const PictureRef channel = Plain(4, 4, {101, 102, 103});
  EXPECT_TRUE(IsOpaqueCopy(Replace(kReplace[0], source, channel), Plain(4, 4, {101, 2, 3})));
  EXPECT_TRUE(IsOpaqueCopy(Replace(kReplace[1], source, channel), Plain(4, 4, {1, 102, 3})));
  EXPECT_TRUE(IsOpaqueCopy(Replace(kReplace[2], source, channel), Plain(4, 4, {1, 2, 103})));
}

TEST_F(ChannelsTest, ReplacingByItselfCopiesThePictureOpaque) {
  NEEDS_NESTED_LOCKS();
  const PictureRef picture = Noise(7, 3);
  for (const char* method : kReplace) {
    EXPECT_TRUE(IsOpaqueCopy(Replace(method, picture, picture), picture)) << method;
  }
}

TEST_F(ChannelsTest, OfALargerChannelPictureTheTopLeftPartCounts) {
  const PictureRef source = Noise(5, 4);
  for (const auto& [width, height] : {std::pair{6, 4}, std::pair{5, 5}, std::pair{9, 8}}) {
    const PictureRef channel = Noise(width, height);
    const Result result = Replace(kReplace[1], source, channel);
    EXPECT_TRUE(IsNewPicture(result, 5, 4, false, [&](int32_t x, int32_t y) {
      return Rgb{At(source, x, y).red, At(channel, x, y).green, At(source, x, y).blue};
    }));
  }
}

TEST_F(ChannelsTest, AChannelPictureOnePixelSmallerIsRefusedWithoutAnException) {
  const PictureRef source = Noise(5, 4);
  for (const auto& [width, height] : {std::pair{4, 4}, std::pair{5, 3}, std::pair{9, 3}}) {
    const PictureRef channel = Noise(width, height);
    for (const char* method : kReplace) {
      EXPECT_FALSE(Replace(method, source, channel)) << method << " " << width << " x " << height;
      EXPECT_EQ(TakeException(), "");
    }
  }
}

TEST_F(ChannelsTest, ANilChannelPictureIsAnExceptionEvenOnNil) {
  const std::string message = "NilObjectException: The channel picture is nil.";
  for (const char* method : kReplace) {
    EXPECT_FALSE(Replace(method, Noise(5, 4), nullptr));
    EXPECT_EQ(TakeException(), message);
    EXPECT_FALSE(Replace(method, nullptr, nullptr));
    EXPECT_EQ(TakeException(), message);
    EXPECT_FALSE(Replace(method, nullptr, Noise(5, 4)));
    EXPECT_EQ(TakeException(), "");
  }
}

TEST_F(ChannelsTest, NilPicturesAndDifferentSizesGiveNilWithoutAnException) {
  const PictureRef picture = Noise(5, 4);
  const PictureRef wider = Noise(6, 4);
  const PictureRef lower = Noise(5, 3);
  EXPECT_FALSE(Merge(nullptr, picture));
  EXPECT_FALSE(Merge(picture, nullptr));
  EXPECT_FALSE(Merge(nullptr, nullptr));
  EXPECT_FALSE(Merge(picture, wider));
  EXPECT_FALSE(Merge(lower, picture));
  EXPECT_FALSE(Combine(nullptr, picture, picture));
  EXPECT_FALSE(Combine(picture, nullptr, picture));
  EXPECT_FALSE(Combine(picture, picture, nullptr));
  for (const PictureRef& other : {wider, lower}) {
    EXPECT_FALSE(Combine(other, picture, picture));
    EXPECT_FALSE(Combine(picture, other, picture));
    EXPECT_FALSE(Combine(picture, picture, other));
  }
  EXPECT_EQ(TakeException(), "");
}

TEST_F(ChannelsTest, PremultipliedColoursAreTakenAsTheyStand) {
  const PictureRef source = Host().NewPicture(1, 1, PictureLayout::WithAlpha(1));
  support::Put(source, 0, 0, {10, 20, 30}, 40);
  const Result result = Replace(kReplace[0], source, Plain(1, 1, {200, 0, 0}));
  EXPECT_TRUE(IsNewPicture(result, 1, 1, false, [](int32_t, int32_t) { return Rgb{200, 20, 30}; }));
  EXPECT_FALSE(support::HasAlpha(result->Layout()));
}

// Every output layout, each source in a layout of its own, fourth bytes full of noise.
TEST_F(ChannelsTest, EveryMixtureOfLayoutsFollowsTheRules) {
  for (const LayoutPair& pair : support::AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (int32_t round = 0; round < 12; ++round) {
      const int32_t width = random.OneIn(3) ? random.Between(1, 4) : random.Between(5, 67);
      const int32_t height = random.Between(1, 4);
      const std::array<PictureRef, 3> p = {
          Noise(width, height, pair.source),
          Noise(width, height, AnotherLayout(pair.source, random)),
          Noise(width, height, AnotherLayout(pair.source, random))};
      const std::array<std::vector<uint8_t>, 3> before = {Bytes(p[0]), Bytes(p[1]), Bytes(p[2])};

      EXPECT_TRUE(IsNewPicture(Merge(p[0], p[1]), width, height, false, [&](int32_t x, int32_t y) {
        const Rgb a = At(p[0], x, y);
        const Rgb b = At(p[1], x, y);
        return Rgb{std::max(a.red, b.red), std::max(a.green, b.green), std::max(a.blue, b.blue)};
      }));
      // The picture for blue comes second.
      EXPECT_TRUE(
          IsNewPicture(Combine(p[0], p[1], p[2]), width, height, false, [&](int32_t x, int32_t y) {
            return Rgb{At(p[0], x, y).red, At(p[2], x, y).green, At(p[1], x, y).blue};
          }));
      const PictureRef large = Noise(width + random.Between(0, 3), height + random.Between(0, 3),
                                     AnotherLayout(pair.source, random));
      for (int32_t channel = 0; channel < 3; ++channel) {
        const Result result = Replace(kReplace[channel], p[0], large);
        EXPECT_TRUE(IsNewPicture(result, width, height, false, [&](int32_t x, int32_t y) {
          Rgb colour = At(p[0], x, y);
          if (channel == 0) colour.red = At(large, x, y).red;
          if (channel == 1) colour.green = At(large, x, y).green;
          if (channel == 2) colour.blue = At(large, x, y).blue;
          return colour;
        }));
      }
      for (size_t i = 0; i < 3; ++i) EXPECT_EQ(Bytes(p[i]), before[i]) << "a source was changed";
      ASSERT_FALSE(HasFailure());
    }
  }
}

TEST_F(ChannelsTest, MergingWithNilOpensNoPicture) {
  const PictureRef picture = Plain(4, 4, {1, 2, 3});
  EXPECT_FALSE(Merge(picture, nullptr));
  EXPECT_FALSE(Merge(nullptr, picture));
  EXPECT_EQ(Host().faults.Calls("REALLockPictureDescription"), 0);
}

TEST_F(ChannelsTest, EachPictureThatCannotBeOpenedGivesNil) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef p = Noise(5, 4, pair.source);
    const PictureRef refused = Noise(5, 4, pair.source);
    refused->SetLocking(host::Locking::kRefused);
    // Where it has no alpha channel, a desktop host draws what it can't lock into a copy.
    Host().faults.FailAlways("REALGetPropValueInt");
    EXPECT_FALSE(Merge(refused, p));
    EXPECT_FALSE(Merge(p, refused));
    EXPECT_FALSE(Combine(refused, p, p));
    EXPECT_FALSE(Combine(p, refused, p));
    EXPECT_FALSE(Combine(p, p, refused));
    for (const char* method : kReplace) {
      EXPECT_FALSE(Replace(method, refused, p));
      EXPECT_FALSE(Replace(method, p, refused));
    }
  }
}

TEST_F(ChannelsTest, AVectorPictureIsDrawnAndThenRead) {
  const PictureRef p = Plain(5, 4, {0, 0, 9});
  const PictureRef vector = Host().NewVectorPicture(5, 4, [](int32_t x, int32_t y) {
    return static_cast<uint32_t>(0x100000 * (x + 1) + 0x1000 * y);
  });
  EXPECT_TRUE(IsNewPicture(Merge(vector, p), 5, 4, false, [](int32_t x, int32_t y) {
    return Rgb{16 * (x + 1), 16 * y, 9};
  }));
}

TEST_F(ChannelsTest, WithoutANewPictureTheResultIsNil) {
  for (const host::Application application :
       {host::Application::kDesktop, host::Application::kConsole}) {
    host::Settings settings;
    settings.application = application;
    Start(settings);
    const PictureRef p = Host().NewPicture(5, 4);
    Host().faults.FailAlways("newPicture");
    EXPECT_FALSE(Merge(p, p));
    EXPECT_FALSE(Combine(p, p, p));
    for (const char* method : kReplace) EXPECT_FALSE(Replace(method, p, p));
  }
}

TEST_F(ChannelsTest, SizesBeyond32767GiveNil) {
  for (const auto& [width, height] : {std::pair{32768, 1}, std::pair{1, 32768}}) {
    const PictureRef p = Host().NewPicture(width, height, PictureLayout::BitmapContext(6));
    EXPECT_FALSE(Merge(p, p));
    EXPECT_FALSE(Combine(p, p, p));
    for (const char* method : kReplace) EXPECT_FALSE(Replace(method, p, p));
  }
  const PictureRef p = Noise(32767, 1);
  EXPECT_TRUE(IsOpaqueCopy(Merge(p, Plain(32767, 1, {0, 0, 0})), p));
}

}  // namespace
