// The longest row and the longest column that a result can have.
#include "tests/support/fixture.h"

namespace {

using Result = host::Ref<host::Picture>;
using support::LayoutPair;
using support::PictureRef;
using support::Rgb;

constexpr int32_t kLongest = 32767;

class OneRow : public support::PluginTest {
 protected:
  // Both shapes in every layout; `place` gives the i-th pixel's column and row.
  template <class Check>
  void ForEachShape(const Check& check) {
    for (const LayoutPair& pair : support::AllSourceLayouts()) {
      for (const bool wide : {true, false}) {
        SCOPED_TRACE(pair.name + (wide ? ", wide" : ", tall"));
        Start(pair.settings);
        const PictureRef picture =
            Host().NewPicture(wide ? kLongest : 1, wide ? 1 : kLongest, pair.source);
        const auto at = [wide](int32_t i) { return std::pair{wide ? i : 0, wide ? 0 : i}; };
        for (int32_t i = 0; i < kLongest; ++i) {
          const auto [x, y] = at(i);
          support::Put(picture, x, y, ColourAt(i));
        }
        check(picture, at, wide);
      }
    }
  }
  static Rgb ColourAt(int32_t i) { return {i & 255, i >> 8, 7}; }
};

TEST_F(OneRow, IsInverted) {
  ForEachShape([&](const PictureRef& picture, const auto&, bool wide) {
    const Result result = Call<Result>("InvertKRT", picture);
    EXPECT_TRUE(support::IsNewPicture(result, picture->Width(), picture->Height(),
                                      support::HasAlpha(picture->Layout()),
                                      [&](int32_t x, int32_t y) {
                                        const Rgb colour = ColourAt(wide ? x : y);
                                        return Rgb{255 - colour.red, 255 - colour.green, 248};
                                      }));
  });
}

TEST_F(OneRow, IsCountedAndTested) {
  ForEachShape([&](const PictureRef& picture, const auto& at, bool) {
    const auto [x, y] = at(kLongest - 1);  // colour (254, 127, 7)
    EXPECT_EQ(Call<int32_t>("CountColorKRT", picture, 0xFE7F07U), 1);
    EXPECT_FALSE(Call<bool>("isGrayKRT", picture, 254));
    EXPECT_TRUE(Call<bool>("isGrayKRT", picture, 255));  // there is (255, 0, 7)
    support::Put(picture, x, y, {0, 0, 0});
    EXPECT_TRUE(Call<bool>("isBlackKRT", picture, x, y, 1, 1));
  });
}

TEST_F(OneRow, IsScrolled) {
  ForEachShape([&](const PictureRef& picture, const auto& at, bool wide) {
    EXPECT_TRUE(Call<bool>("ScrollKRT", picture, wide ? 5 : 1, wide ? 1 : 5, true, false));
    for (int32_t i = 0; i < kLongest; ++i) {
      const auto [x, y] = at((i + 5) % kLongest);
      ASSERT_EQ(support::At(picture, x, y), ColourAt(i)) << i;
    }
  });
}

TEST_F(OneRow, IsSearched) {
  ForEachShape([&](const PictureRef& picture, const auto& at, bool wide) {
    const PictureRef needle = Host().NewPicture(wide ? 3 : 1, wide ? 1 : 3);
    for (int32_t i = 0; i < 3; ++i) {
      const auto [x, y] = at(i);
      support::Put(needle, x, y, ColourAt(kLongest - 3 + i));
    }
    int32_t x = 0, y = 0;
    EXPECT_TRUE(Call<bool>("FindPictureKRT", picture, needle, &x, &y));
    EXPECT_EQ((std::pair{x, y}), at(kLongest - 3));
  });
}

TEST_F(OneRow, IsMasked) {
  ForEachShape([&](const PictureRef& picture, const auto& at, bool wide) {
    support::Fill(picture, {9, 9, 9});
    for (const int32_t i : {0, 1, 30000, kLongest - 1}) {
      const auto [x, y] = at(i);
      support::Put(picture, x, y, {1, 2, 3});
    }
    const Result mask = Call<Result>("ExtractColorRectangleMaskKRT", picture);
    EXPECT_TRUE(support::IsNewPicture(mask, picture->Width(), picture->Height(), false,
                                      [&](int32_t x, int32_t y) {
                                        const int32_t i = wide ? x : y;
                                        const bool black = i < 2 || i == 30000 || i == kLongest - 1;
                                        return black ? Rgb{0, 0, 0} : Rgb{255, 255, 255};
                                      }));
  });
}

TEST_F(OneRow, BecomesAStringAndComesBack) {
  ForEachShape([&](const PictureRef& picture, const auto&, bool wide) {
    const auto string = CallGlobal<host::Ref<host::String>>("PicturetoBinaryStringKRT", picture);
    ASSERT_TRUE(string);
    const Result back = CallGlobal<Result>("BinaryStringtoPictureKRT", string);
    EXPECT_TRUE(
        support::IsNewPicture(back, picture->Width(), picture->Height(), false,
                              [&](int32_t x, int32_t y) { return ColourAt(wide ? x : y); }));
  });
}

}  // namespace
