#include "runner/files/decoded_rows.h"

#include "runner/files/vips_library.h"

namespace runner {
namespace {

struct UnreferenceRegion {
  void operator()(VipsRegion* region) const { g_object_unref(region); }
};
using Region = std::unique_ptr<VipsRegion, UnreferenceRegion>;

class VipsRows : public DecodedRows {
 public:
  VipsRows(const vips::VImage& source, int top, int rowCount)
      : image(source), region(vips_region_new(image.get_image())), next(top), height(rowCount) {
    if (region == nullptr) throw vips::VError();
  }

  int Width() const override { return image.width(); }
  int Height() const override { return height; }
  int Bands() const override { return image.bands(); }
  bool IsWide() const override { return image.format() == VIPS_FORMAT_USHORT; }

  bool Next(int count) override {
    const VipsRect strip{0, next, image.width(), count};
    first = next;
    next += count;
    return vips_region_prepare(region.get(), &strip) == 0;
  }
  const void* Row(int index) const override {
    return VIPS_REGION_ADDR(region.get(), 0, first + index);
  }
  std::string Problem() const override {
    std::string problem = VipsProblem(vips_error_buffer());
    vips_error_clear();
    return problem;
  }

 private:
  vips::VImage image;
  Region region;
  int first = 0, next, height;
};

class JpegRows : public DecodedRows {
 public:
  JpegRows(JpegDecoder* from, bool putsUpWithDamage)
      : decoder(*from), lenient(putsUpWithDamage), rowBytes(RowBytes()) {}

  int Width() const override { return decoder.Width(); }
  int Height() const override { return decoder.Height(); }
  int Bands() const override { return decoder.Channels(); }
  bool IsWide() const override { return false; }

  bool Next(int count) override {
    rows.resize(rowBytes * static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
      if (!decoder.ReadRow(&rows[rowBytes * static_cast<size_t>(i)])) return false;
    return lenient || decoder.Problem().empty();
  }
  const void* Row(int index) const override { return &rows[rowBytes * static_cast<size_t>(index)]; }
  std::string Problem() const override { return decoder.Problem(); }

 private:
  size_t RowBytes() const {
    return static_cast<size_t>(decoder.Width()) * static_cast<size_t>(decoder.Channels());
  }

  JpegDecoder& decoder;
  bool lenient;
  size_t rowBytes;
  std::vector<uint8_t> rows;
};

}  // namespace

std::unique_ptr<DecodedRows> RowsOf(const vips::VImage& image, int top, int height) {
  return std::make_unique<VipsRows>(image, top, height);
}

std::unique_ptr<DecodedRows> RowsOf(JpegDecoder* decoder, bool lenient) {
  return std::make_unique<JpegRows>(decoder, lenient);
}

const uint8_t* RowSamples::Colours(const void* row) {
  if (bands == 3 && !wide) return static_cast<const uint8_t*>(row);
  const size_t step = bands < 3 ? 0 : 1;
  for (size_t x = 0; x < width; ++x)
    for (size_t i = 0; i < 3; ++i) colours[3 * x + i] = Sample(row, x * bands + i * step);
  return colours.data();
}

void RowSamples::Alpha(const void* row, uint8_t* alpha) const {
  for (size_t x = 0; x < width; ++x) alpha[x] = Sample(row, x * bands + bands - 1);
}

// 16 bits become the nearest of 8.
uint8_t RowSamples::Sample(const void* row, size_t at) const {
  if (!wide) return static_cast<const uint8_t*>(row)[at];
  const uint32_t sample = static_cast<const uint16_t*>(row)[at];
  return static_cast<uint8_t>((sample * 255 + 32767) / 65535);
}

}  // namespace runner
