// Twice the pixels take about twice the instructions, also of the pictures that are worst for a
// search or a mask. `Growth` prints what it counts. Seconds are script/bench's.
#include <functional>
#include <iostream>

#include "tests/steps/counting_test.h"

namespace {

using support::PictureRef;
using support::Rgb;

// Twice the pixels may take this many times as long. What grows with the square takes four times.
constexpr double kMostGrowth = 2.5;

class Growth : public steps::CountingTest {
 protected:
  using Paint = std::function<Rgb(int32_t x, int32_t y)>;

  PictureRef Make(int32_t width, int32_t height, const Paint& paint) {
    const PictureRef picture = Host().NewPicture(width, height);
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) support::Put(picture, x, y, paint(x, y));
    }
    return picture;
  }

  // `prepare(scale)` makes what is needed for so many times the pixels and gives the call.
  void ExpectLinear(const std::string& what,
                    const std::function<std::function<void()>(int32_t scale)>& prepare) {
    const int64_t once = Count(prepare(1));
    const int64_t twice = Count(prepare(2));
    std::cout << what << ": " << once << " instructions, " << twice << " for twice the pixels\n";
    EXPECT_LE(static_cast<double>(twice), kMostGrowth * static_cast<double>(once)) << what;
  }
};

constexpr Rgb kGrey = {90, 90, 90};
constexpr Rgb kLastPixel = {91, 90, 90};

TEST_F(Growth, SearchInOneColour) {
  const auto grey = [](int32_t, int32_t) { return kGrey; };
  constexpr int32_t kNeedle = 8;
  const auto differingAt = [&](int32_t row) {
    return Make(kNeedle, kNeedle, [=](int32_t x, int32_t y) {
      return x == kNeedle - 1 && y == row ? kLastPixel : kGrey;
    });
  };
  // Everything matches but the last pixel of the needle. What is compared next begins with the row
  // after that one, which is row 0 again, and so on: found one column further on.
  int32_t foundX = -1;
  int32_t foundY = -1;
  const PictureRef near = differingAt(kNeedle - 1);
  EXPECT_TRUE(Call<bool>("FindPictureKRT", Make(200, 200, grey), near, &foundX, &foundY));
  EXPECT_EQ(foundX, 1);
  EXPECT_EQ(foundY, 0);

  const PictureRef needle = differingAt(0);
  ExpectLinear("search in one colour, needle of 8 x 8", [&](int32_t scale) {
    const PictureRef haystack = Make(200, 200 * scale, grey);
    return [this, haystack, needle] {
      int32_t x = 0;
      int32_t y = 0;
      EXPECT_FALSE(Call<bool>("FindPictureKRT", haystack, needle, &x, &y));
    };
  });
  // A row as long as half of the picture's: what matched once isn't compared again at each column.
  ExpectLinear("search in one colour, needle of one long row", [&](int32_t scale) {
    const int32_t length = 1000 * scale;
    const PictureRef haystack = Make(2 * length, 40, grey);
    const PictureRef row =
        Make(length, 1, [=](int32_t x, int32_t) { return x == length - 1 ? kLastPixel : kGrey; });
    return [this, haystack, row] {
      int32_t x = 0;
      int32_t y = 0;
      EXPECT_FALSE(Call<bool>("FindPictureKRT", haystack, row, &x, &y));
    };
  });
}

TEST_F(Growth, MaskOfManyRectangles) {
  const Rgb red = {255, 0, 0};
  const struct {
    const char* name;
    Paint paint;
  } kPictures[] = {
      {"mask over a checkerboard",
       [=](int32_t x, int32_t y) { return (x + y) % 2 == 0 ? red : kGrey; }},
      {"mask over single coloured pixels",
       [=](int32_t x, int32_t y) { return x % 3 == 0 && y % 3 == 0 ? red : kGrey; }},
      {"mask over coloured columns", [=](int32_t x, int32_t) { return x % 2 == 0 ? red : kGrey; }},
      {"mask over coloured rows", [=](int32_t, int32_t y) { return y % 2 == 0 ? red : kGrey; }},
      {"mask over stairs",  // one rectangle, which grows by a row and a column at a time
       [=](int32_t x, int32_t y) { return x == y || x == y + 1 ? red : kGrey; }},
      {"mask over combs",
       [=](int32_t x, int32_t y) { return x % 2 == 0 || y % 16 == 15 ? red : kGrey; }},
      {"mask over a coloured picture", [=](int32_t, int32_t) { return red; }},
  };
  for (const auto& picture : kPictures) {
    ExpectLinear(picture.name, [&](int32_t scale) {
      const PictureRef source = Make(200, 200 * scale, picture.paint);
      return
          [this, source] { EXPECT_TRUE(Call<PictureRef>("ExtractColorRectangleMaskKRT", source)); };
    });
  }
}

TEST_F(Growth, ScrollingCountingAndStrings) {
  support::Random random;
  const auto noise = [&](int32_t scale) {
    const PictureRef picture = Host().NewPicture(250, 250 * scale);
    support::FillWithNoise(picture, random);
    return picture;
  };
  ExpectLinear("vertical scroll", [&](int32_t scale) {
    // No two rows change places, so that there is one chain of them.
    const PictureRef picture = noise(scale);
    return [this, picture, scale] {
      EXPECT_TRUE(Call<bool>("ScrollVerticalKRT", picture, 123 * scale, true, false));
    };
  });
  ExpectLinear("horizontal scroll", [&](int32_t scale) {
    const PictureRef picture = noise(scale);
    return [this, picture] {
      EXPECT_TRUE(Call<bool>("ScrollHorizontalKRT", picture, 123, true, false));
    };
  });
  ExpectLinear("counting a colour", [&](int32_t scale) {
    const PictureRef picture = noise(scale);
    return [this, picture] { Call<int32_t>("CountColorKRT", picture, 0x123456); };
  });
  ExpectLinear("a picture as a string", [&](int32_t scale) {
    const PictureRef picture = noise(scale);
    return [this, picture] {
      EXPECT_TRUE(CallGlobal<host::Ref<host::String>>("PicturetoBinaryStringKRT", picture));
    };
  });
}

}  // namespace
