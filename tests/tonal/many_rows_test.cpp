// Pictures of so many rows that their pixels are walked in several pieces: narrow ones several rows
// at a time where no bytes lie between rows, and wide ones row by row.

#include "tests/tonal/pixel_rule.h"

namespace {

using namespace support;

class ManyRows : public PixelRuleTest {
 protected:
  static std::vector<Size> Sizes() {
    return {{1, 9001}, {17, 777}, {64, 192}, {4095, 3}, {4096, 3}, {4097, 3}};
  }

  // Calls `check(picture)` with noise of every size in every layout, in which channels take few
  // values.
  template <class Check>
  void ForEachPicture(int seed, const Check& check) {
    Random random(seed);
    for (const LayoutPair& pair : AllSourceLayouts()) {
      Start(pair.settings);
      for (const Size size : Sizes()) {
        SCOPED_TRACE(::testing::Message() << pair.name << ", " << size.width << " x " << size.height
                                          << ", seed " << Seed());
        const PictureRef picture = Host().NewPicture(size.width, size.height, pair.source);
        FillWithNoise(picture, random, 3);
        check(picture);
      }
    }
  }

  template <class Test>
  static int32_t Count(const PictureRef& picture, const Test& test) {
    int32_t count = 0;
    for (int32_t y = 0; y < picture->Height(); ++y) {
      for (int32_t x = 0; x < picture->Width(); ++x) count += test(At(picture, x, y));
    }
    return count;
  }
};

TEST_F(ManyRows, AreMappedToTheLastPixel) {
  ForEachPicture(320, [&](const PictureRef& picture) {
    ExpectFollows([&](const PictureRef& p) { return Call<PictureRef>("InvertKRT", p); },
                  [](Rgb p) {
                    return Rgb{255 - p.red, 255 - p.green, 255 - p.blue};
                  },
                  picture);
  });
}

TEST_F(ManyRows, AreCountedToTheLastPixel) {
  ForEachPicture(321, [&](const PictureRef& picture) {
    const Rgb wanted = At(picture, picture->Width() - 1, picture->Height() - 1);
    const auto colour = static_cast<uint32_t>(wanted.red << 16 | wanted.green << 8 | wanted.blue);
    EXPECT_EQ(Call<int32_t>("CountColorKRT", picture, colour),
              Count(picture, [&](Rgb p) { return p == wanted; }));
  });
}

TEST_F(ManyRows, AreTestedToTheLastPixel) {
  Random random(322);
  ForEachPicture(323, [&](const PictureRef& picture) {
    Fill(picture, {0, 0, 0}, 0x5A);
    EXPECT_TRUE(Call<bool>("isBlackKRT", picture));
    const int32_t pixels = picture->Width() * picture->Height();
    for (const int32_t odd :
         {0, 4079, 4080, 4095, 4096, 4097, 8191, 8192, random.Between(0, pixels - 1), pixels - 1}) {
      const int32_t x = odd % picture->Width();
      const int32_t y = odd / picture->Width();
      Put(picture, x, y, {0, 0, 1}, 0x5A);
      EXPECT_FALSE(Call<bool>("isBlackKRT", picture)) << x << ", " << y;
      Put(picture, x, y, {0, 0, 0}, 0x5A);
    }
  });
}

}  // namespace
