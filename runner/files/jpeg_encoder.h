// JPEG files, row by row, straight to the JPEG library.
#pragma once

#include <cstdint>
#include <functional>

#include "runner/files/image_writer.h"
#include "runner/files/origin.h"

namespace runner {

struct JpegPicture {
  int width = 0, height = 0;
  int channels = 3;  // 1: grey, 3: red, green and blue
  // Stores row `y`, width * channels bytes.
  std::function<void(int y, uint8_t* row)> read;
};

struct JpegSettings {
  int quality = 92;        // 1 to 100
  bool fullColour = true;  // otherwise a sample of colour for 2 x 2 pixels
  bool progressive = false;
  const JpegCoding* coding = nullptr;  // takes the place of quality and fullColour where it fits
};

// Encodes the picture, with the metadata in front of it. Throws Failure for a picture that is
// larger than the format allows, and what `read` and `write` throw.
void EncodeJpeg(const JpegPicture& picture, const JpegSettings& settings, const Metadata& metadata,
                const ByteSink& write);

}  // namespace runner
