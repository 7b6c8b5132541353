#include "tests/tonal/pixel_rule.h"

namespace {

using namespace support;

Rgb Inverted(Rgb p) { return {p.red ^ 0xFF, p.green ^ 0xFF, p.blue ^ 0xFF}; }

Rgb GreyInverted(Rgb p) { return p.red == p.green && p.green == p.blue ? Inverted(p) : p; }

// Which of the picture's columns, or rows, a request selects.
struct Span {
  int64_t first;
  int64_t end;
  bool Has(int64_t place) const { return place >= first && place < end; }
};

Span Selected(int64_t start, int64_t length, int64_t size, bool zeroMeansAll) {
  if (length < 0 || (zeroMeansAll && length == 0)) length = size;
  Span span{start, start + length};
  if (span.first < 0) span.first = 0;
  if (span.end > size) span.end = size;
  return span;
}

struct Method {
  const char* name;
  bool zeroMeansAll;
  Rgb (*rule)(Rgb);
};

const Method kInvert{"InvertKRT", true, Inverted};
const Method kInvertGray{"InvertGrayKRT", false, GreyInverted};

struct Request {
  int32_t left, top, width, height;
};

class Invert : public PixelRuleTest {
 protected:
  Operation Whole(const Method& method) {
    return [name = method.name, this](const PictureRef& picture) {
      return Call<PictureRef>(name, picture);
    };
  }

  void ExpectWhole(const Method& method, const PictureRef& picture) {
    ExpectFollows(Whole(method), method.rule, picture);
  }

  void ExpectRectangle(const Method& method, Request request, const PictureRef& picture) {
    SCOPED_TRACE(::testing::Message() << method.name << "(" << request.left << ", " << request.top
                                      << ", " << request.width << ", " << request.height << ")");
    const std::vector<uint8_t> before = Bytes(picture);
    const PictureRef result = Call<PictureRef>(method.name, picture, request.left, request.top,
                                               request.width, request.height);
    const Span columns =
        Selected(request.left, request.width, picture->Width(), method.zeroMeansAll);
    const Span rows = Selected(request.top, request.height, picture->Height(), method.zeroMeansAll);
    EXPECT_TRUE(IsNewPicture(result, picture->Width(), picture->Height(),
                             HasAlpha(picture->Layout()),
                             [&](int32_t x, int32_t y) -> std::optional<Rgb> {
                               if (!columns.Has(x) || !rows.Has(y)) return std::nullopt;
                               return method.rule(At(picture, x, y));
                             }));
    EXPECT_EQ(Bytes(picture), before) << "the source was changed";
  }

  // Noise with many greys in it.
  PictureRef Greys(Size size, const host::PictureLayout& layout, Random& random) {
    const PictureRef picture = Noise(size, layout, random);
    for (int32_t y = 0; y < size.height; ++y) {
      for (int32_t x = 0; x < size.width; ++x) {
        if (random.OneIn(2)) continue;
        Rgb colour = At(picture, x, y);
        colour.green = colour.red;  // two equal channels are no grey yet
        if (random.OneIn(2)) colour.blue = colour.red;
        Put(picture, x, y, colour, random.Byte());
      }
    }
    return picture;
  }
};

TEST_F(Invert, FollowsTheRulesInEveryLayout) {
  Random random(310);
  for (const LayoutPair& pair : AllLayoutPairs()) {
    SCOPED_TRACE(::testing::Message() << pair.name << ", seed " << Seed());
    Start(pair.settings);
    for (const Method& method : {kInvert, kInvertGray}) {
      for (const Size size : Sizes()) {
        const PictureRef picture = Greys(size, pair.source, random);
        ExpectWhole(method, picture);
        const Request request{random.Between(-3, size.width), random.Between(-3, size.height),
                              random.Between(-1, size.width + 2),
                              random.Between(-1, size.height + 2)};
        ExpectRectangle(method, request, picture);
      }
    }
  }
}

TEST_F(Invert, FollowsTheRulesForAnyRectangle) {
  Random random(311);
  Start();
  const PictureRef picture = Greys({13, 11}, {}, random);
  static constexpr int32_t kEdges[] = {
      INT32_MIN, INT32_MIN + 1, -14, -13, -12, -1, 0, 1, 10, 11, 12, 13, 14, 99, INT32_MAX};
  const auto edge = [&] { return kEdges[random.Between(0, std::size(kEdges) - 1)]; };
  for (int i = 0; i < 400; ++i) {
    const Request request{edge(), edge(), edge(), edge()};
    ExpectRectangle(kInvert, request, picture);
    ExpectRectangle(kInvertGray, request, picture);
  }
}

TEST_F(Invert, TwiceGivesBackTheColours) {
  Start();
  Random random(312);
  const PictureRef picture = Noise({37, 5}, {}, random);
  const Operation invert = Whole(kInvert);
  ExpectFollows([&](const PictureRef& p) { return invert(invert(p)); }, [](Rgb p) { return p; },
                picture);
}

TEST_F(Invert, GreyIsInvertedByBothAndColourByOne) {
  Start();
  ExpectPixel(Whole(kInvert), {10, 10, 10}, {245, 245, 245});
  ExpectPixel(Whole(kInvertGray), {10, 10, 10}, {245, 245, 245});
  ExpectPixel(Whole(kInvert), {10, 20, 30}, {245, 235, 225});
  ExpectPixel(Whole(kInvertGray), {10, 20, 30}, {10, 20, 30});
}

TEST_F(Invert, TwoEqualChannelsAreNotGrey) {
  Start();
  ExpectPixel(Whole(kInvertGray), {10, 10, 11}, {10, 10, 11});
  ExpectPixel(Whole(kInvertGray), {11, 10, 10}, {11, 10, 10});
  ExpectPixel(Whole(kInvertGray), {10, 11, 10}, {10, 11, 10});
}

TEST_F(Invert, AnEmptySizeIsTheWholePictureForInvertAndNothingForInvertGray) {
  Start();
  const PictureRef picture = Host().NewPicture(4, 3);
  Fill(picture, {10, 10, 10});
  const std::vector<uint8_t> fresh = Bytes(Host().NewPicture(4, 3));
  const auto inverted = [](int32_t, int32_t) { return Rgb{245, 245, 245}; };
  EXPECT_TRUE(
      IsNewPicture(Call<PictureRef>("InvertKRT", picture, 0, 0, 0, 0), 4, 3, false, inverted));
  EXPECT_EQ(Bytes(Call<PictureRef>("InvertGrayKRT", picture, 0, 0, 0, 0)), fresh);
  EXPECT_TRUE(IsNewPicture(Call<PictureRef>("InvertGrayKRT", picture, 0, 0, -1, -1), 4, 3, false,
                           inverted));
}

TEST_F(Invert, ARectangleIsCutOffAtTheEdges) {
  Start();
  const PictureRef picture = Host().NewPicture(12, 12);
  Fill(picture, {1, 2, 3});
  const auto inside = [](int32_t first, int32_t last) {
    return [=](int32_t x, int32_t y) -> std::optional<Rgb> {
      if (x < first || x > last || y < first || y > last) return std::nullopt;
      return Rgb{254, 253, 252};
    };
  };
  EXPECT_TRUE(IsNewPicture(Call<PictureRef>("InvertKRT", picture, 10, 10, 5, 5), 12, 12, false,
                           inside(10, 11)));
  EXPECT_TRUE(IsNewPicture(Call<PictureRef>("InvertKRT", picture, -5, -5, 10, 10), 12, 12, false,
                           inside(0, 4)));
}

// As many columns are left out on the left as on the right.
TEST_F(Invert, ARectangleInTheMiddleIsNotWholeRows) {
  Start();
  Random random(313);
  const PictureRef picture = Greys({13, 6}, {}, random);
  for (const Method& method : {kInvert, kInvertGray}) {
    ExpectRectangle(method, {4, 1, 5, 3}, picture);
    ExpectRectangle(method, {6, 0, 1, 6}, picture);
  }
}

TEST_F(Invert, ARectangleBesideThePictureWritesNothing) {
  Start();
  const PictureRef picture = Host().NewPicture(12, 12);
  Fill(picture, {1, 2, 3});
  const std::vector<uint8_t> fresh = Bytes(Host().NewPicture(12, 12));
  EXPECT_EQ(Bytes(Call<PictureRef>("InvertKRT", picture, 13, 0, 5, 5)), fresh);
  EXPECT_EQ(Bytes(Call<PictureRef>("InvertKRT", picture, 0, INT32_MAX, -1, -1)), fresh);
  EXPECT_EQ(Bytes(Call<PictureRef>("InvertKRT", picture, -20, 0, 5, 5)), fresh);
}

TEST_F(Invert, ASemiTransparentSourceGivesAnOpaqueResult) {
  for (const uint32_t alphaInfo : {host::kAlphaPremultipliedLast, host::kAlphaPremultipliedFirst}) {
    Start();
    const PictureRef picture = Host().NewPicture(5, 3, host::PictureLayout::WithAlpha(alphaInfo));
    Fill(picture, {40, 50, 60}, 128);
    ExpectFollows(
        Whole(kInvert),
        [](Rgb) {
          return Rgb{215, 205, 195};
        },
        picture);
  }
}

TEST_F(Invert, GivesNilOnFailure) {
  for (const Method& method : {kInvert, kInvertGray}) {
    ExpectNilOnFailure(Whole(method));
    ExpectNilOnFailure([&](const PictureRef& picture) {
      return Call<PictureRef>(method.name, picture, 0, 0, -1, -1);
    });
  }
}

}  // namespace
