#include "runner/image_file.h"

#include <gtest/gtest.h>

#include "runner/failure.h"
#include "runner/image_check.h"
#include "runner/layouts.h"
#include "runner/pixel_rows.h"
#include "tests/runner/images.h"
#include "tests/runner/scratch.h"

namespace runner {
namespace {

// A host without a plug-in is all that pictures need.
class ImageFile : public ::testing::Test {
 protected:
  ImageFile() { ChooseLayouts("", &host.settings, &options); }

  host::Ref<host::Picture> Load(const std::string& path) {
    return LoadPicture(host, path, options);
  }
  std::string ErrorOf(const std::string& path) {
    try {
      Load(path);
    } catch (const Failure& failure) {
      return failure.what();
    }
    return "(no error)";
  }
  void Write(const host::Picture& picture, const std::string& path) {
    OutputFile file(path);
    EncodePicture(picture, FormatFor(path), &file);
    file.Commit();
  }

  Scratch scratch;
  host::Host host;
  ImageOptions options;
};

// Where the pixel shown at (x, y) stands in a file of that orientation, of which width and height
// are given: the definition of the eight values.
std::pair<int, int> Stored(int orientation, int x, int y, int width, int height) {
  switch (orientation) {
    case 2:
      return {width - 1 - x, y};
    case 3:
      return {width - 1 - x, height - 1 - y};
    case 4:
      return {x, height - 1 - y};
    case 5:
      return {y, x};
    case 6:
      return {y, height - 1 - x};
    case 7:
      return {width - 1 - y, height - 1 - x};
    case 8:
      return {width - 1 - y, x};
    default:
      return {x, y};
  }
}

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
    Write(*Load(scratch / "alpha.png"), scratch / "again.png");
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
  Write(*picture, scratch / "again.png");
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
    Write(*picture, scratch / name);
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
    Write(*Load(scratch / "smooth.png"), scratch / name);
    const Image read = Read(scratch / name);
    for (size_t i = 0; i < smooth.bytes.size(); ++i)
      ASSERT_NEAR(read.bytes[i], smooth.bytes[i], 16) << name;
  }
}

TEST_F(ImageFile, FormatsWithoutAlphaShowWhite) {
  const Image image = MakeImage(4, 4, [](int x, int) {
    return Pixel{200, 0, 100, uint8_t(x == 0 ? 0 : x == 1 ? 128 : 255)};
  });
  Save(image, scratch / "alpha.png", "png");
  ChooseLayouts("argb", &host.settings, &options);
  Write(*Load(scratch / "alpha.png"), scratch / "flat.bmp");
  const Image flat = Read(scratch / "flat.bmp");
  EXPECT_EQ(flat.At(0, 0), (Pixel{255, 255, 255}));
  EXPECT_EQ(flat.At(1, 1), (Pixel{227, 127, 177}));  // 255 - (255 - c) * 128 / 255, rounded
  EXPECT_EQ(flat.At(2, 2), (Pixel{200, 0, 100}));
}

TEST_F(ImageFile, RefusesTruncatedFilesOfEveryFormat) {
  const Image image = Noise(64, 48, 3, 7);
  for (const char* format : {"png", "jpeg", "tiff", "webp", "bmp"}) {
    Save(image, scratch / "whole", format);
    const std::string bytes = ReadBytes(scratch / "whole");
    ASSERT_EQ(ErrorOf(scratch / "whole"), "(no error)") << format;
    std::vector<size_t> lengths = {0, 1, 2, 3, 10, 20, 53, 54, bytes.size() - 1};
    for (size_t part = 1; part < 40; ++part) lengths.push_back(bytes.size() * part / 40);
    for (const size_t length : lengths) {
      WriteBytes(scratch / "cut", bytes.substr(0, length));
      EXPECT_NE(ErrorOf(scratch / "cut"), "(no error)") << format << " of " << length << " bytes";
    }
  }
  SaveTiff(image, scratch / "first.tif", 1);
  const std::string bytes = ReadBytes(scratch / "first.tif");
  WriteBytes(scratch / "cut", bytes.substr(0, bytes.size() - 100));
  EXPECT_NE(ErrorOf(scratch / "cut"), "(no error)");
}

TEST_F(ImageFile, AJpegWithMoreBehindItsEndIsWhole) {
  Save(Noise(20, 20), scratch / "tail.jpg", "jpeg");
  WriteBytes(scratch / "tail.jpg", ReadBytes(scratch / "tail.jpg") + std::string(1000, 'x'));
  EXPECT_EQ(ErrorOf(scratch / "tail.jpg"), "(no error)");
}

TEST_F(ImageFile, DoesNotBelieveHeaders) {
  // A JPEG of 16 x 16 pixels that says it had 65500 x 3000, and one within what its data can hold.
  Save(Noise(16, 16), scratch / "small.jpg", "jpeg");
  std::string bytes = ReadBytes(scratch / "small.jpg");
  const size_t frame = bytes.find("\xFF\xC0");
  ASSERT_NE(frame, std::string::npos);
  bytes.replace(frame + 5, 4, std::string("\x0B\xB8\xFF\xDC", 4));
  WriteBytes(scratch / "lie.jpg", bytes);
  EXPECT_EQ(
      ErrorOf(scratch / "lie.jpg"),
      "'" + (scratch / "lie.jpg") + "' promises more pixels in its header than its data can hold");

  // More than the limit: refused whatever the format, and at once.
  options.pixelLimit = 1000;
  for (const char* format : {"png", "jpeg", "tiff", "webp", "bmp"}) {
    Save(Noise(40, 26), scratch / "large", format);
    EXPECT_EQ(ErrorOf(scratch / "large"),
              "'" + (scratch / "large") +
                  "' has 40 x 26 pixels, more than the limit of 1000 (see --pixel-limit)")
        << format;
    Save(Noise(40, 25), scratch / "just", format);
    EXPECT_EQ(ErrorOf(scratch / "just"), "(no error)") << format;
  }
}

TEST_F(ImageFile, OpensNothingThatIsNoPictureFile) {
  WriteBytes(scratch / "text.png", "not a picture");
  EXPECT_NE(ErrorOf(scratch / "text.png").find("isn't an image that can be opened"),
            std::string::npos);
  WriteBytes(scratch / "empty.png", "");
  EXPECT_EQ(ErrorOf(scratch / "empty.png"), "'" + (scratch / "empty.png") + "' is empty");
  WriteBytes(scratch / "drawing.svg",
             "<svg xmlns='http://www.w3.org/2000/svg' width='10' height='10'></svg>");
  EXPECT_NE(ErrorOf(scratch / "drawing.svg"), "(no error)");
  WriteBytes(scratch / "plain.ppm", "P3 1 1 255 1 2 3\n");
  EXPECT_EQ(ErrorOf(scratch / "plain.ppm"),
            "'" + (scratch / "plain.ppm") +
                "' is a file of kind 'pnm'; PNG, JPEG, TIFF, WebP and BMP can be opened");
  EXPECT_EQ(ErrorOf(scratch / "missing.png"),
            "can't open '" + (scratch / "missing.png") + "': No such file or directory");
  EXPECT_EQ(ErrorOf(scratch.Folder().native()),
            "can't open '" + scratch.Folder().native() + "': Is a directory");
  EXPECT_EQ(ErrorOf("/dev/zero"), "can't open '/dev/zero': it isn't a regular file");
}

// Every layout against its definition, spelt out byte by byte.
TEST(PixelRows, PackAndUnpackEveryLayout) {
  const Image image = Noise(257, 1, 4, 3);
  const struct {
    host::PictureLayout layout;
    const char* order;  // what stands in the four bytes; x is the unused one
    bool premultiplied;
    uint8_t unused;
  } cases[] = {
      {host::PictureLayout::BitmapContext(0), "rgbx", false, 255},
      {host::PictureLayout::BitmapContext(1), "rgba", true, 0},
      {host::PictureLayout::BitmapContext(2), "argb", true, 0},
      {host::PictureLayout::BitmapContext(3), "rgba", false, 0},
      {host::PictureLayout::BitmapContext(4), "argb", false, 0},
      {host::PictureLayout::BitmapContext(5), "rgbx", false, 255},
      {host::PictureLayout::BitmapContext(6), "xrgb", false, 255},
      {host::PictureLayout::RowTable(), "bgrx", false, 0},
  };
  for (const auto& [layout, order, premultiplied, unused] : cases)
    for (const int samples : {3, 4}) {
      std::vector<uint8_t> in, row(257 * 4), out(257 * size_t(samples));
      for (int x = 0; x < 257; ++x)
        for (int i = 0; i < samples; ++i) in.push_back(image.At(x, 0)[size_t(i)]);
      PackRow(in.data(), samples, layout, row.data(), 257);
      UnpackRow(row.data(), layout, out.data(), samples, 257);
      const bool stores = std::string(order).find('a') != std::string::npos;
      EXPECT_TRUE(IsKnown(layout));
      EXPECT_EQ(StoresAlpha(layout), stores);
      for (int x = 0; x < 257; ++x) {
        const Pixel pixel = image.At(x, 0);
        const int alpha = samples == 4 ? pixel[3] : 255;
        for (int i = 0; i < 4; ++i) {
          const std::string channels = "rgb";
          const size_t channel = channels.find(order[i]);
          const uint8_t got = row[size_t(x * 4 + i)];
          if (order[i] == 'x') {
            ASSERT_EQ(got, unused) << order;
          } else if (order[i] == 'a') {
            ASSERT_EQ(got, alpha) << order;
          } else if (premultiplied) {
            ASSERT_EQ(got, (pixel[channel] * alpha + 127) / 255) << order;
          } else {
            ASSERT_EQ(got, pixel[channel]) << order;
          }
          if (channel == std::string::npos) continue;
          const uint8_t back = out[size_t(x * samples) + channel];
          if (!premultiplied) {
            ASSERT_EQ(back, pixel[channel]) << order;
          } else if (alpha == 0) {
            ASSERT_EQ(back, 0) << order;
          } else {
            ASSERT_EQ(back, std::min(255, (got * 255 + alpha / 2) / alpha)) << order;
          }
        }
        if (samples == 4) {
          ASSERT_EQ(out[size_t(x * 4 + 3)], stores ? pixel[3] : 255) << order;
        }
      }
    }
  EXPECT_FALSE(IsKnown(host::PictureLayout::BitmapContext(7)));
  EXPECT_FALSE(IsKnown(host::PictureLayout::BitmapContext(6, 0, 16)));
}

TEST(JpegCheck, TakesAnyBytes) {
  Scratch scratch;
  Save(Noise(24, 24), scratch / "x.jpg", "jpeg");
  const std::string bytes = ReadBytes(scratch / "x.jpg");
  EXPECT_EQ(MissingFromJpeg(bytes), std::nullopt);
  for (size_t length = 0; length < bytes.size(); ++length)
    EXPECT_EQ(MissingFromJpeg(std::string_view(bytes).substr(0, length)), "is truncated") << length;
}

}  // namespace
}  // namespace runner
