// Decoded rows, one after the other, from whichever library decodes the file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>
#include <vips/vips8>

#include "runner/files/jpeg_decoder.h"

namespace runner {

// One page. Throws vips::VError where the library can't begin with it.
class DecodedRows {
 public:
  virtual ~DecodedRows() = default;

  virtual int Width() const = 0;
  virtual int Height() const = 0;
  // 1 or 3 samples of colour, with or without one of alpha.
  virtual int Bands() const = 0;
  // Whether samples have 16 bits, in the processor's order; otherwise 8.
  virtual bool IsWide() const = 0;

  // Decodes the next rows, at most 16 of them, which are asked for from top to bottom. False: one
  // of them can't be decoded or, unless damage is put up with, is damaged.
  virtual bool Next(int count) = 0;
  // One of them, from 0 on; valid until the next call.
  virtual const void* Row(int index) const = 0;
  // What was wrong.
  virtual std::string Problem() const = 0;
};

// The rows of an image from `top` on.
std::unique_ptr<DecodedRows> RowsOf(const vips::VImage& image, int top, int height);
// The rows of a JPEG file of 1 or 3 channels, whose decoder outlives them.
std::unique_ptr<DecodedRows> RowsOf(JpegDecoder* decoder, bool lenient);

// Samples of a decoded row as R, G, B of 8 bits, with alpha apart.
class RowSamples {
 public:
  explicit RowSamples(const DecodedRows& rows)
      : width(static_cast<size_t>(rows.Width())),
        bands(static_cast<size_t>(rows.Bands())),
        wide(rows.IsWide()),
        colours(width * 3) {}

  bool HasAlpha() const { return bands == 2 || bands == 4; }
  // Valid until the next call.
  const uint8_t* Colours(const void* row);
  void Alpha(const void* row, uint8_t* alpha) const;

 private:
  uint8_t Sample(const void* row, size_t at) const;

  size_t width, bands;
  bool wide;
  std::vector<uint8_t> colours;
};

}  // namespace runner
