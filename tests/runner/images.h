// Image files made and read without the code under test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace runner {

using Pixel = std::vector<uint8_t>;  // R, G, B and, where there is alpha, A; not premultiplied

struct Image {
  int width = 0, height = 0;
  int samples = 3;  // 3 or 4
  std::vector<uint8_t> bytes;

  Pixel At(int x, int y) const {
    const size_t start = (size_t(y) * size_t(width) + size_t(x)) * size_t(samples);
    return {bytes.begin() + std::ptrdiff_t(start), bytes.begin() + ptrdiff_t(start) + samples};
  }
};

Image MakeImage(int width, int height, const std::function<Pixel(int x, int y)>& pixel);
// Every pixel of another colour, none of them grey.
Image Noise(int width, int height, int samples = 3, uint32_t seed = 1);

// By the system's library: "png", "jpeg", "tiff", "bmp", "webp".
void Save(const Image& image, const std::string& path, const char* format);
// As the file says, not turned. A failed test and an empty image where it can't be read.
Image Read(const std::string& path);

// An uncompressed TIFF file with its directory before its pixels. Extra samples are 0 none, 1
// premultiplied alpha, 2 plain alpha.
void SaveTiff(const Image& image, const std::string& path, int orientation, int extraSamples = 0);
// A JPEG file with an EXIF orientation.
void SaveTurnedJpeg(const Image& image, const std::string& path, int orientation);

std::string ReadBytes(const std::string& path);
void WriteBytes(const std::string& path, const std::string& bytes);

}  // namespace runner
