// picturehost run: pictures in and out; what is expected is worked out here.
#include <gtest/gtest.h>

#include "tests/runner/run_fixture.h"

namespace runner {
namespace {

TEST_F(RunCommand, InvertsEveryShippedPhotograph) {
  for (const char* name :
       {"coffee.png", "chelsea.png", "rocket.jpg", "retina.jpg", "hubble_deep_field.jpg"}) {
    const std::string photo = kExamples + "photos/" + name;
    EXPECT_EQ(Done({"run", "InvertKRT", photo, "--metadata", "none", "--output", At("out.bmp")}),
              "");
    const Image source = Read(photo);
    ExpectPixels(At("out.bmp"), source.width, source.height,
                 [&](int x, int y) { return Inverted(source.At(x, y)); });
  }
}

TEST_F(RunCommand, InvertsTwelveMegapixels) {
#ifdef PICTURE_SANITIZED
  constexpr int kWidth = 400, kHeight = 300;  // as telling, and a hundred times as fast
#else
  constexpr int kWidth = 4000, kHeight = 3000;
#endif
  Save(MakeImage(kWidth, kHeight,
                 [](int x, int y) {
                   return Pixel{uint8_t(x / 16), uint8_t(y / 12), uint8_t((x + y) / 28)};
                 }),
       At("large.jpg"), "jpeg");
  Done({"run", "InvertKRT", At("large.jpg"), "-o", At("out.bmp")});
  Image expected = Read(At("large.jpg"));
  for (uint8_t& value : expected.bytes) value = uint8_t(255 - value);
  const Image got = Read(At("out.bmp"));
  ASSERT_EQ(got.width, kWidth);
  ASSERT_EQ(got.height, kHeight);
  EXPECT_TRUE(got.bytes == expected.bytes);
}

TEST_F(RunCommand, InvertsOnePixel) {
  Save(MakeImage(1, 1, [](int, int) { return Pixel{10, 20, 30}; }), At("one.png"), "png");
  Done({"run", "InvertKRT", At("one.png"), "-o", At("out.png")});
  ExpectPixels(At("out.png"), 1, 1, [](int, int) { return Pixel{245, 235, 225}; });
}

TEST_F(RunCommand, InvertsInARectangle) {
  const Image image = Noise(12, 12);
  Save(image, At("in.png"), "png");
  // Results start white, and stay so outside.
  Done({"run", "InvertKRT(left = 10, top = 9, width = 5, height = 2)", At("in.png"), "-o",
        At("out.png")});
  ExpectPixels(At("out.png"), 12, 12, [&](int x, int y) {
    return x >= 10 && (y == 9 || y == 10) ? Inverted(image.At(x, y)) : Pixel{255, 255, 255};
  });
}

TEST_F(RunCommand, AnAlphaChannelIsPremultipliedOrPlainAsTheLayoutSays) {
  const Image image = Noise(16, 16, 4);
  Save(image, At("alpha.png"), "png");
  for (const char* layout :
       {"", "argb-premultiplied", "rgba-premultiplied", "argb", "rgba", "xrgb", "rgbx"}) {
    std::vector<std::string> arguments = {"run", "InvertKRT", At("alpha.png"), "-o", At("out.png")};
    if (*layout != 0) arguments.insert(arguments.end(), {"--layout", layout});
    Done(arguments);
    const bool premultiplied = *layout == 0 || std::strlen(layout) > 4;
    // The plug-in reads the colours as they are stored, and writes opaque pixels.
    ExpectPixels(At("out.png"), 16, 16, [&](int x, int y) {
      Pixel pixel = image.At(x, y);
      if (premultiplied)
        for (size_t i = 0; i < 3; ++i) pixel[i] = uint8_t((pixel[i] * pixel[3] + 127) / 255);
      return Inverted(pixel);
    });
  }
}

TEST_F(RunCommand, AnAlphaChannelGoesThrough) {
  const Image image = Noise(16, 16, 4);
  Save(image, At("alpha.png"), "png");
  EXPECT_EQ(ValueOf(Done({"run", "CountColorKRT(&c000000)", At("alpha.png"), "--layout", "argb",
                          "-o", At("out.png")}),
                    "CountColorKRT"),
            "0");
  EXPECT_EQ(Read(At("out.png")).bytes, image.bytes);
}

TEST_F(RunCommand, EveryKindOfHostGivesTheSamePixels) {
  const Image image = Noise(31, 9);
  Save(image, At("in.png"), "png");
  const std::vector<std::vector<std::string>> hosts = {
      {"--application", "desktop"},
      {"--application", "console"},
      {"--application", "web"},
      {"--application", "console", "--layout", "rows"},
      {"--layout", "argb"},
      {"--layout", "argb-premultiplied"},
      {"--layout", "xrgb"},
      {"--layout", "rgba"},
      {"--layout", "rgba-premultiplied"},
      {"--layout", "rgbx"},
      {"--host-version", "2009.04"},
      {"--host-version", "2011.04"},
      {"--host-version", "2012.0"}};
  for (const auto& options : hosts) {
    std::vector<std::string> arguments = {"run", "InvertKRT", At("in.png"), "-o", At("out.png")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    Done(arguments);
    ExpectPixels(At("out.png"), 31, 9, [&](int x, int y) { return Inverted(image.At(x, y)); });
  }
}

}  // namespace
}  // namespace runner
