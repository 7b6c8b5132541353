#include "tests/runner/images.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace runner {
namespace {

void Put(std::string* bytes, uint32_t value, int count) {
  for (int i = 0; i < count; ++i) *bytes += char(value >> 8 * i & 0xFF);
}

}  // namespace

Image MakeImage(int width, int height, const std::function<Pixel(int x, int y)>& pixel) {
  Image image{width, height, int(pixel(0, 0).size()), {}};
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      for (const uint8_t value : pixel(x, y)) image.bytes.push_back(value);
  return image;
}

Image Noise(int width, int height, int samples, uint32_t seed) {
  uint32_t state = seed * 2654435761U + 1;
  return MakeImage(width, height, [&](int, int) {
    Pixel pixel;
    for (int i = 0; i < samples; ++i) {
      state = state * 1664525 + 1013904223;
      pixel.push_back(uint8_t(state >> 24));
    }
    if (pixel[0] == pixel[1]) pixel[1] ^= 1;
    return pixel;
  });
}

void Save(const Image& image, const std::string& path, const char* format) {
  GdkPixbuf* pixbuf = gdk_pixbuf_new_from_data(image.bytes.data(), GDK_COLORSPACE_RGB,
                                               image.samples == 4, 8, image.width, image.height,
                                               image.width * image.samples, nullptr, nullptr);
  GError* error = nullptr;
  EXPECT_TRUE(gdk_pixbuf_save(pixbuf, path.c_str(), format, &error, nullptr))
      << (error ? error->message : "");
  g_object_unref(pixbuf);
}

Image Read(const std::string& path) {
  GError* error = nullptr;
  GdkPixbuf* pixbuf = gdk_pixbuf_new_from_file(path.c_str(), &error);
  EXPECT_NE(pixbuf, nullptr) << path << ": " << (error ? error->message : "");
  if (pixbuf == nullptr) return {};
  Image image{gdk_pixbuf_get_width(pixbuf),
              gdk_pixbuf_get_height(pixbuf),
              gdk_pixbuf_get_n_channels(pixbuf),
              {}};
  for (int y = 0; y < image.height; ++y) {
    const uint8_t* row = gdk_pixbuf_get_pixels(pixbuf) + y * gdk_pixbuf_get_rowstride(pixbuf);
    image.bytes.insert(image.bytes.end(), row, row + image.width * image.samples);
  }
  g_object_unref(pixbuf);
  return image;
}

void SaveTiff(const Image& image, const std::string& path, int orientation, int extraSamples) {
  const auto samples = uint32_t(image.samples);
  struct Entry {
    uint32_t tag, type, count, value;
  };
  const uint32_t entries = extraSamples > 0 ? 11 : 10;
  const uint32_t bitsAt = 8 + 2 + 12 * entries + 4, pixelsAt = bitsAt + 2 * samples;
  std::vector<Entry> directory = {{256, 3, 1, uint32_t(image.width)},
                                  {257, 3, 1, uint32_t(image.height)},
                                  {258, 3, samples, bitsAt},
                                  {259, 3, 1, 1},
                                  {262, 3, 1, 2},
                                  {273, 4, 1, pixelsAt},
                                  {274, 3, 1, uint32_t(orientation)},
                                  {277, 3, 1, samples},
                                  {278, 3, 1, uint32_t(image.height)},
                                  {279, 4, 1, uint32_t(image.bytes.size())}};
  if (extraSamples > 0) directory.push_back({338, 3, 1, uint32_t(extraSamples)});
  std::string bytes = "II*";
  Put(&bytes, 0, 1);
  Put(&bytes, 8, 4);
  Put(&bytes, entries, 2);
  for (const Entry& entry : directory) {
    Put(&bytes, entry.tag, 2);
    Put(&bytes, entry.type, 2);
    Put(&bytes, entry.count, 4);
    Put(&bytes, entry.value, 4);
  }
  Put(&bytes, 0, 4);
  for (uint32_t i = 0; i < samples; ++i) Put(&bytes, 8, 2);
  bytes.append(image.bytes.begin(), image.bytes.end());
  WriteBytes(path, bytes);
}

void SaveTurnedJpeg(const Image& image, const std::string& path, int orientation) {
  Save(image, path, "jpeg");
  std::string exif("Exif\0\0II*\0", 10);
  Put(&exif, 8, 4);
  Put(&exif, 1, 2);  // one entry
  Put(&exif, 0x0112, 2);
  Put(&exif, 3, 2);
  Put(&exif, 1, 4);
  Put(&exif, uint32_t(orientation), 4);
  Put(&exif, 0, 4);
  std::string bytes = ReadBytes(path);
  const auto length = exif.size() + 2;
  const std::string segment = {'\xFF', '\xE1', char(length >> 8), char(length & 0xFF)};
  WriteBytes(path, bytes.substr(0, 2) + segment + exif + bytes.substr(2));
}

std::string ReadBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.good()) << path;
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

void WriteBytes(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace runner
