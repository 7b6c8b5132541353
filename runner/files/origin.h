// What a picture file says besides its pixels, kept for the file that its result goes to.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "runner/files/exif.h"
#include "runner/files/image_format.h"

namespace runner {

// Blocks as files carry them; empty: the file has none.
struct Metadata {
  std::string exif;  // from "Exif\0\0" on
  std::string xmp;
  std::string iptc;  // as an image resource block or alone
  std::string icc;
  std::vector<std::string> comments;
  std::optional<Resolution> resolution;
};

// How a JPEG file rounds what it stores of each channel.
struct JpegCoding {
  struct Channel {
    int table = 0;
    int across = 1, down = 1;  // samples, beside those of the other channels
  };
  std::map<int, std::array<unsigned, 64>> tables;  // row by row
  std::vector<Channel> channels;                   // brightness, then two of colour; or grey
};

struct Origin {
  std::string name;  // of the file, as messages have it
  const ImageFormat* format = nullptr;
  int bits = 8;             // a sample, or an index into the palette
  bool grey = false;        // one channel of colour, bilevel included
  bool palette = false;     // at most 256 colours, named once
  bool lossless = false;    // the pixels came as they had been stored
  bool interlaced = false;  // or progressive
  int jpegQuality = 0;      // 1 to 100; 0: isn't known
  bool fullColour = true;   // the channels of colour have as many samples as the brightness
  std::optional<JpegCoding> jpegCoding;
  std::string compression;  // libvips's name for that of a TIFF file
  bool differences = true;  // of neighbours are what a TIFF file compresses
  std::vector<int> delays;  // of an animation's frames, in milliseconds
  int loops = 0;            // of an animation; 0: for ever
  int orientation = 0;      // that EXIF tells and libvips doesn't; 0: none
  Metadata metadata;
};

}  // namespace runner
