// Picture files of every format, read and written.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/runner/image_file_fixture.h"

namespace runner {
namespace {

TEST_F(ImageFile, OpensEveryFormatExactly) {
  const Image image = Noise(37, 21);
  for (const char* format : {"png", "tiff", "bmp"}) {
    Save(image, scratch / format, format);
    const host::Ref<host::Picture> picture = Load(scratch / format);
    ASSERT_EQ(picture->Width(), 37);
    ASSERT_EQ(picture->Height(), 21);
    for (int y = 0; y < 21; ++y)
      for (int x = 0; x < 37; ++x) {
        const Pixel pixel = image.At(x, y);
        ASSERT_EQ(picture->Pixel(x, y), (host::Rgba{pixel[0], pixel[1], pixel[2], 255})) << format;
      }
    EXPECT_EQ(picture->Layout().hasAlphaChannel, false) << format;
  }
  for (const char* format : {"jpeg", "webp"}) {
    Save(image, scratch / format, format);
    const Image decoded = Read(scratch / format);
    const host::Ref<host::Picture> picture = Load(scratch / format);
    for (int y = 0; y < 21; ++y)
      for (int x = 0; x < 37; ++x) {
        const Pixel pixel = decoded.At(x, y);
        ASSERT_EQ(picture->Pixel(x, y), (host::Rgba{pixel[0], pixel[1], pixel[2], 255})) << format;
      }
  }
}

TEST_F(ImageFile, TurnsJpegAndTiffAsTheirOrientationSays) {
  // Large plain areas, which JPEG keeps close.
  const Image image = MakeImage(48, 32, [](int x, int y) {
    return Pixel{uint8_t(x < 24 ? 20 : 220), uint8_t(y < 16 ? 20 : 220),
                 uint8_t(x < 16 ? 220 : 20)};
  });
  for (int orientation = 1; orientation <= 8; ++orientation) {
    SaveTurnedJpeg(image, scratch / "turned.jpg", orientation);
    SaveTiff(image, scratch / "turned.tif", orientation);
    for (const char* name : {"turned.jpg", "turned.tif"}) {
      const host::Ref<host::Picture> picture = Load(scratch / name);
      ASSERT_EQ(picture->Width(), orientation > 4 ? 32 : 48) << name << orientation;
      ASSERT_EQ(picture->Height(), orientation > 4 ? 48 : 32) << name << orientation;
      for (int y = 4; y < picture->Height(); y += 8)
        for (int x = 4; x < picture->Width(); x += 8) {
          const auto [atX, atY] = Stored(orientation, x, y, 48, 32);
          const Pixel expected = image.At(atX, atY);
          const host::Rgba got = picture->Pixel(x, y);
          ASSERT_NEAR(got.red, expected[0], 8) << name << orientation << " " << x << " " << y;
          ASSERT_NEAR(got.green, expected[1], 8) << name << orientation << " " << x << " " << y;
          ASSERT_NEAR(got.blue, expected[2], 8) << name << orientation << " " << x << " " << y;
        }
    }
  }
}

TEST_F(ImageFile, KeepsAlphaWhereTheLayoutHasIt) {
  const Image image = Noise(30, 40, 4);
  Save(image, scratch / "alpha.png", "png");
  const host::Ref<host::Picture> picture = Load(scratch / "alpha.png");
  EXPECT_EQ(picture->Layout().hasAlphaChannel, true);
  for (int y = 0; y < 40; ++y)
    for (int x = 0; x < 30; ++x) {
      const Pixel pixel = image.At(x, y);
      const int alpha = pixel[3];
      const auto premultiplied = [&](int i) {
        return uint8_t((pixel[size_t(i)] * alpha + 127) / 255);
      };
      ASSERT_EQ(picture->Pixel(x, y),
                (host::Rgba{premultiplied(0), premultiplied(1), premultiplied(2), pixel[3]}));
    }

  for (const char* layout : {"argb", "rgba"}) {
    ChooseLayouts(layout, &host.settings, &options);
    Write(Load(scratch / "alpha.png"), scratch / "again.png");
    EXPECT_EQ(Read(scratch / "again.png").bytes, image.bytes) << layout;
  }
}

TEST_F(ImageFile, LayoutsWithoutAlphaGetAMaskInstead) {
  const Image image = Noise(9, 7, 4);
  Save(image, scratch / "alpha.png", "png");
  ChooseLayouts("xrgb", &host.settings, &options);
  const host::Ref<host::Picture> picture = Load(scratch / "alpha.png");
  ASSERT_TRUE(picture->Mask());
  for (int y = 0; y < 7; ++y)
    for (int x = 0; x < 9; ++x) {
      const Pixel pixel = image.At(x, y);
      const auto grey = uint8_t(255 - pixel[3]);
      ASSERT_EQ(picture->Mask()->Pixel(x, y), (host::Rgba{grey, grey, grey, 255}));
      ASSERT_EQ(picture->Pixel(x, y), (host::Rgba{pixel[0], pixel[1], pixel[2], 255}));
    }
  Write(picture, scratch / "again.png");
  EXPECT_EQ(Read(scratch / "again.png").bytes, image.bytes);
}

TEST_F(ImageFile, AnAlphaChannelThatIsOpaqueIsNone) {
  Image image = Noise(5, 5, 4);
  for (size_t i = 3; i < image.bytes.size(); i += 4) image.bytes[i] = 255;
  Save(image, scratch / "opaque.png", "png");
  EXPECT_EQ(Load(scratch / "opaque.png")->Layout().hasAlphaChannel, false);
  image.bytes.back() = 254;
  Save(image, scratch / "nearly.png", "png");
  EXPECT_EQ(Load(scratch / "nearly.png")->Layout().hasAlphaChannel, true);
}

TEST_F(ImageFile, TiffColoursAreNotPremultipliedTwice) {
  const Image image = MakeImage(3, 2, [](int, int) { return Pixel{200, 100, 40, 128}; });
  const Image premultiplied = MakeImage(3, 2, [](int, int) { return Pixel{100, 50, 20, 128}; });
  SaveTiff(image, scratch / "plain.tif", 1, 2);
  SaveTiff(premultiplied, scratch / "premultiplied.tif", 1, 1);
  for (const char* name : {"plain.tif", "premultiplied.tif"}) {
    const host::Rgba pixel = Load(scratch / name)->Pixel(1, 1);
    EXPECT_EQ(pixel, (host::Rgba{100, 50, 20, 128})) << name;
  }
}

TEST_F(ImageFile, WritesEveryFormat) {
  const Image image = Noise(33, 17);
  Save(image, scratch / "in.png", "png");
  const host::Ref<host::Picture> picture = Load(scratch / "in.png");
  for (const char* name : {"out.png", "out.PNG", "out.tif", "out.tiff", "out.bmp"}) {
    Write(picture, scratch / name);
    const Image read = Read(scratch / name);
    ASSERT_EQ(read.width, 33) << name;
    for (int y = 0; y < 17; ++y)
      for (int x = 0; x < 33; ++x) {
        Pixel pixel = read.At(x, y);
        pixel.resize(3);  // TIFF files are read with an alpha channel, always
        ASSERT_EQ(pixel, image.At(x, y)) << name;
      }
  }
  const Image smooth = MakeImage(64, 64, [](int x, int y) {
    return Pixel{uint8_t(x * 3), uint8_t(y * 3), uint8_t(x + y)};
  });
  Save(smooth, scratch / "smooth.png", "png");
  for (const char* name : {"out.jpg", "out.jpeg", "out.webp"}) {
    Write(Load(scratch / "smooth.png"), scratch / name);
    const Image read = Read(scratch / name);
    for (size_t i = 0; i < smooth.bytes.size(); ++i)
      ASSERT_NEAR(read.bytes[i], smooth.bytes[i], 16) << name;
  }
}

// The encoders' threads aren't there in the new process, which would wait for them.
TEST_F(ImageFile, AForkedProcessRefusesToSaveInsteadOfWaitingForEver) {
  Save(Noise(4, 4), scratch / "in.png", "png");
  const host::Ref<host::Picture> picture = Load(scratch / "in.png");
  Write(picture, scratch / "out.png");
  const pid_t child = ::fork();
  if (child == 0) {
    const bool opens = Load(scratch / "in.png")->Width() == 4;
    try {
      Write(picture, scratch / "other.png");
    } catch (const Failure& failure) {
      ::_exit(opens && std::string(failure.what()).find("forked") != std::string::npos ? 0 : 1);
    }
    ::_exit(2);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  Write(picture, scratch / "again.png");
}

TEST_F(ImageFile, FormatsWithoutAlphaShowWhite) {
  const Image image = MakeImage(4, 4, [](int x, int) {
    return Pixel{200, 0, 100, uint8_t(x == 0 ? 0 : x == 1 ? 128 : 255)};
  });
  Save(image, scratch / "alpha.png", "png");
  ChooseLayouts("argb", &host.settings, &options);
  Write(Load(scratch / "alpha.png"), scratch / "flat.bmp");
  const Image flat = Read(scratch / "flat.bmp");
  EXPECT_EQ(flat.At(0, 0), (Pixel{255, 255, 255}));
  EXPECT_EQ(flat.At(1, 1), (Pixel{227, 127, 177}));  // 255 - (255 - c) * 128 / 255, rounded
  EXPECT_EQ(flat.At(2, 2), (Pixel{200, 0, 100}));
}

}  // namespace
}  // namespace runner
