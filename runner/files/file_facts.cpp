#include "runner/files/file_facts.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <string_view>

#include "runner/files/bytes.h"
#include "runner/files/container_metadata.h"

namespace runner {
namespace {

// A file's beginning, where headers are; large profiles may come before what is looked for.
constexpr size_t kBeginning = size_t{1} << 20;

std::string Blob(VipsImage* image, const char* name) {
  const void* data = nullptr;
  size_t size = 0;
  if (vips_image_get_typeof(image, name) != VIPS_TYPE_BLOB ||
      vips_image_get_blob(image, name, &data, &size) != 0)
    return {};
  return {static_cast<const char*>(data), size};
}

int Number(VipsImage* image, const char* name, int otherwise) {
  int number = otherwise;
  if (vips_image_get_typeof(image, name) == G_TYPE_INT) vips_image_get_int(image, name, &number);
  return number;
}

std::string TextOf(VipsImage* image, const char* name) {
  const char* text = nullptr;
  if (vips_image_get_typeof(image, name) == 0 || vips_image_get_string(image, name, &text) != 0)
    return {};
  return text;
}

std::vector<std::string> Fields(VipsImage* image) {
  std::vector<std::string> fields;
  gchar** names = vips_image_get_fields(image);
  for (gchar** name = names; *name != nullptr; ++name) fields.emplace_back(*name);
  g_strfreev(names);
  return fields;
}

std::vector<std::string> Comments(VipsImage* image) {
  std::vector<std::string> comments;
  for (const std::string& field : Fields(image))
    if (field.starts_with("jpeg-comment-") ||
        (field.starts_with("png-comment-") && field.ends_with("-Comment")))
      comments.push_back(TextOf(image, field.c_str()));
  return comments;
}

void DescribeMetadata(VipsImage* image, Metadata* metadata) {
  metadata->exif = Blob(image, VIPS_META_EXIF_NAME);
  metadata->xmp = Blob(image, VIPS_META_XMP_NAME);
  metadata->iptc = Blob(image, VIPS_META_IPTC_NAME);
  metadata->icc = Blob(image, VIPS_META_ICC_NAME);
  metadata->comments = Comments(image);
  const double x = vips_image_get_xres(image), y = vips_image_get_yres(image);
  // The library says one pixel a millimetre where a file says nothing.
  if (x != 1 || y != 1)
    metadata->resolution = Resolution{x, y, TextOf(image, VIPS_META_RESOLUTION_UNIT) != "cm"};
}

void DescribePng(std::string_view bytes, Origin* origin) {
  constexpr size_t kBits = 24, kColourType = 25, kInterlace = 28;
  constexpr uint32_t kPalette = 3;
  origin->bits = static_cast<int>(Byte(bytes, kBits));
  origin->palette = Byte(bytes, kColourType) == kPalette;
  origin->interlaced = Byte(bytes, kInterlace) != 0;
  origin->lossless = true;
  // The library makes up a resolution where the file has none.
  const std::string_view before = bytes.substr(0, bytes.find("IDAT"));
  if (before.find("pHYs") == std::string_view::npos) origin->metadata.resolution.reset();
}

// The first chunk of pixels tells.
void DescribeWebp(std::string_view bytes, Origin* origin) {
  for (size_t at = 12; at + 8 <= bytes.size();) {
    const std::string_view kind = bytes.substr(at, 4);
    if (kind == "VP8L") origin->lossless = true;
    if (kind == "VP8L" || kind == "VP8 ") return;
    constexpr size_t kFrameHeader = 16;
    at += 8 + (kind == "ANMF" ? kFrameHeader : (size_t{LittleEndian32(bytes, at + 4)} + 1) / 2 * 2);
  }
}

// The wavelet that can be undone is number 1, in the segment of coding style.
void DescribeJp2(std::string_view bytes, Origin* origin) {
  const size_t style = bytes.find("\xFF\x52");
  constexpr size_t kTransformation = 13;
  origin->lossless = style != std::string_view::npos && Byte(bytes, style + kTransformation) == 1;
}

struct CloseTiff {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, CloseTiff>;

// Bytes as libtiff reads a file.
struct TiffBytes {
  std::string_view bytes;
  uint64_t position = 0;
};
tmsize_t ReadBytes(thandle_t handle, void* to, tmsize_t count) {
  auto* from = reinterpret_cast<TiffBytes*>(handle);
  const uint64_t size = from->bytes.size();
  const uint64_t got = from->position >= size ? 0
                                              : std::min<uint64_t>(static_cast<uint64_t>(count),
                                                                   size - from->position);
  if (got > 0) std::copy_n(from->bytes.data() + from->position, got, static_cast<char*>(to));
  from->position += got;
  return static_cast<tmsize_t>(got);
}
tmsize_t WriteNothing(thandle_t, void*, tmsize_t) { return 0; }
toff_t SeekBytes(thandle_t handle, toff_t offset, int from) {
  auto* bytes = reinterpret_cast<TiffBytes*>(handle);
  bytes->position = (from == SEEK_CUR   ? bytes->position
                     : from == SEEK_END ? uint64_t{bytes->bytes.size()}
                                        : 0) +
                    offset;
  return bytes->position;
}
int CloseNothing(thandle_t) { return 0; }
toff_t SizeOfBytes(thandle_t handle) { return reinterpret_cast<TiffBytes*>(handle)->bytes.size(); }

const char* CompressionOf(TIFF* tiff) {
  uint16_t compression = COMPRESSION_NONE;
  TIFFGetField(tiff, TIFFTAG_COMPRESSION, &compression);
  switch (compression) {
    case COMPRESSION_NONE:
      return "none";
    case COMPRESSION_LZW:
      return "lzw";
    case COMPRESSION_JPEG:
    case COMPRESSION_OJPEG:
      return "jpeg";
    case COMPRESSION_PACKBITS:
      return "packbits";
    case COMPRESSION_CCITTFAX3:
    case COMPRESSION_CCITTFAX4:
    case COMPRESSION_CCITTRLE:
      return "ccittfax4";
    case COMPRESSION_ZSTD:
      return "zstd";
    default:
      return "deflate";
  }
}

void DescribeTiff(const FileContent& content, Origin* origin, std::vector<int>* pages) {
  TiffBytes source{content.Bytes()};
  const Tiff tiff(!content.IsInMemory()
                      ? TIFFOpen(content.Path().c_str(), "rm")
                      : TIFFClientOpen("", "rm", reinterpret_cast<thandle_t>(&source), ReadBytes,
                                       WriteNothing, SeekBytes, CloseNothing, SizeOfBytes, nullptr,
                                       nullptr));
  if (tiff == nullptr) return;
  uint16_t bits = 1, photometric = PHOTOMETRIC_RGB, predictor = PREDICTOR_NONE;
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_BITSPERSAMPLE, &bits);
  TIFFGetField(tiff.get(), TIFFTAG_PHOTOMETRIC, &photometric);
  origin->bits = bits;
  origin->palette = photometric == PHOTOMETRIC_PALETTE;
  origin->compression = CompressionOf(tiff.get());
  const bool mayHaveDifferences = origin->compression == "deflate" ||
                                  origin->compression == "lzw" || origin->compression == "zstd";
  TIFFGetField(tiff.get(), TIFFTAG_PREDICTOR, &predictor);
  origin->differences = !mayHaveDifferences || predictor != PREDICTOR_NONE;
  origin->lossless = origin->compression != "jpeg";
  const std::vector<int> all = std::move(*pages);
  pages->clear();
  for (const int page : all) {
    uint32_t kind = 0;
    if (TIFFSetDirectory(tiff.get(), static_cast<tdir_t>(page)) == 0) break;
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_SUBFILETYPE, &kind);
    if (page == 0 || (kind & FILETYPE_REDUCEDIMAGE) == 0) pages->push_back(page);
  }
  if (pages->empty()) pages->push_back(0);
}

// The tables that the JPEG standard has in its Annex K.1 for brightness, in zigzag order.
constexpr std::array<int, 64> kBrightness = {
    16, 11, 12,  14,  12,  10, 16, 14,  13,  14,  18,  17,  16, 19,  24,  40,
    26, 24, 22,  22,  24,  49, 35, 37,  29,  40,  58,  51,  61, 60,  57,  51,
    56, 55, 64,  72,  92,  78, 64, 68,  87,  69,  55,  56,  80, 109, 81,  87,
    95, 98, 103, 104, 103, 62, 77, 113, 121, 112, 100, 120, 92, 101, 103, 99};

// As the usual encoder scales them.
int Scaled(int entry, int quality) {
  const int percent = quality < 50 ? 5000 / quality : 200 - quality * 2;
  return std::clamp((entry * percent + 50) / 100, 1, 255);
}

}  // namespace

int JpegQuality(std::string_view bytes) {
  constexpr uint32_t kTables = 0xDB, kScan = 0xDA;
  for (size_t at = 2; at + 4 <= bytes.size() && Byte(bytes, at) == 0xFF;) {
    const uint32_t marker = Byte(bytes, at + 1);
    const size_t length = BigEndian16(bytes, at + 2);
    if (marker == kScan) return 0;
    // The first table, of bytes, is that of the brightness.
    if (marker == kTables && length >= 67 && Byte(bytes, at + 4) == 0) {
      int best = 0, bestDistance = INT_MAX;
      for (int quality = 1; quality <= 100; ++quality) {
        int distance = 0;
        for (size_t i = 0; i < 64; ++i)
          distance +=
              std::abs(Scaled(kBrightness[i], quality) - static_cast<int>(Byte(bytes, at + 5 + i)));
        if (distance < bestDistance) {
          best = quality;
          bestDistance = distance;
        }
      }
      return best;
    }
    at += 2 + length;
  }
  return 0;
}

void DescribeFile(const FileContent& content, VipsImage* image, Origin* origin,
                  std::vector<int>* pages) {
  pages->resize(static_cast<size_t>(std::max(1, vips_image_get_n_pages(image))));
  std::iota(pages->begin(), pages->end(), 0);
  DescribeMetadata(image, &origin->metadata);
  const VipsInterpretation space = vips_image_get_interpretation(image);
  origin->bits = vips_image_get_format(image) == VIPS_FORMAT_UCHAR ? 8 : 16;
  origin->grey = space == VIPS_INTERPRETATION_B_W || space == VIPS_INTERPRETATION_GREY16;
  origin->fullColour = true;
  origin->loops = Number(image, "loop", 0);
  int* delays = nullptr;
  int count = 0;
  if (vips_image_get_typeof(image, "delay") != 0 &&
      vips_image_get_array_int(image, "delay", &delays, &count) == 0)
    origin->delays.assign(delays, delays + count);

  const std::string_view format = origin->format->name;
  if (format == "jpeg") {
    origin->jpegQuality = JpegQuality(content.Beginning(kBeginning));
    origin->fullColour = TextOf(image, "jpeg-chroma-subsample") != "4:2:0";
    origin->interlaced = Number(image, "jpeg-multiscan", 0) != 0;
  } else if (format == "png") {
    DescribePng(content.Beginning(kBeginning), origin);
  } else if (format == "webp") {
    DescribeWebp(content.Beginning(kBeginning), origin);
  } else if (format == "tiff") {
    DescribeTiff(content, origin, pages);
  } else if (format == "jp2") {
    *pages = {0};  // the others are the same one made smaller
    DescribeJp2(content.Beginning(kBeginning), origin);
  } else if (format == "gif") {
    origin->lossless = origin->palette = true;
  } else if (format == "ppm" || format == "bmp") {
    origin->lossless = true;
  }

  Metadata& metadata = origin->metadata;
  const bool seen = !metadata.exif.empty();
  AddContainerMetadata(content, image, *origin->format, &metadata);
  if (!metadata.resolution && !metadata.exif.empty())
    metadata.resolution = ResolutionInExif(metadata.exif);
  // libvips turns what it has seen the tag of. JPEG XL has an orientation of its own, which counts.
  if (!seen && (format == "png" || format == "jp2"))
    origin->orientation = OrientationInExif(metadata.exif);
}

void DescribeJpeg(const FileContent& content, const JpegDecoder& decoder, Origin* origin,
                  std::vector<int>* pages) {
  *pages = {0};
  origin->grey = decoder.Channels() == 1;
  origin->jpegQuality = JpegQuality(content.Beginning(kBeginning));
  origin->fullColour = decoder.HasFullColour();
  origin->jpegCoding = decoder.Coding();
  origin->interlaced = decoder.IsProgressive();
  Metadata& metadata = origin->metadata;
  AddContainerMetadata(content, nullptr, *origin->format, &metadata);
  // EXIF counts, and what the file says itself where it says nothing.
  if (const std::optional<Resolution> resolution = ResolutionInExif(metadata.exif))
    metadata.resolution = resolution;
  origin->orientation = OrientationInExif(metadata.exif);
}

}  // namespace runner
