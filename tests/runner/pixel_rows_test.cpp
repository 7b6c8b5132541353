// Rows between picture files and layouts; JPEG files that are cut.
#include <gtest/gtest.h>

#include "runner/files/wholeness.h"
#include "tests/runner/image_file_fixture.h"

namespace runner {
namespace {

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
  EXPECT_FALSE(FaultOfJpeg(bytes));
  for (size_t length = 0; length < bytes.size(); ++length) {
    const auto fault = FaultOfJpeg(std::string_view(bytes).substr(0, length));
    ASSERT_TRUE(fault) << length;
    EXPECT_EQ(fault->text, "is truncated") << length;
  }
}

}  // namespace
}  // namespace runner
