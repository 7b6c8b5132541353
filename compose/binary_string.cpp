// PicturetoBinaryStringKRT(p as picture) as string
// BinaryStringtoPictureKRT(data as String) as Picture
//
// A picture as a string of bytes, and back. Only red, green and blue are kept, as they stand in the
// picture's pixels; what is read is opaque. Numbers are big-endian, rows go from top to bottom
// without padding:
//
//     0  "PPIC"            16  depth, 32 (ignored when read)
//     4  length in bytes   20  where the pixels begin, 40 when written
//     8  width             24  sixteen zero bytes (ignored)
//    12  height            40  red, green, blue of each pixel
//
// Nothing but the null string or nil reports a failure: a picture that can't be opened or made, a
// string of another form, sizes outside 1 to 32767 when reading, pixels that don't lie wholly
// inside the string, more than 2^31 - 1 bytes when writing, no memory.

#include <string.h>

#include "pixels/buffer.h"
#include "pixels/rows.h"
#include "pixels/write_rows.h"
#include "plugin/binding/runtime.h"
#include "plugin/binding/strings.h"

namespace {

constexpr char kMagic[] = {'P', 'P', 'I', 'C'};
constexpr int32_t kHeaderSize = 40;
constexpr int32_t kReadHeaderSize = 24;  // what lies behind is ignored
constexpr int32_t kPixelSize = 3;

void PutBigEndian(uint8_t* at, uint32_t value) {
  at[0] = static_cast<uint8_t>(value >> 24);
  at[1] = static_cast<uint8_t>(value >> 16);
  at[2] = static_cast<uint8_t>(value >> 8);
  at[3] = static_cast<uint8_t>(value);
}

constexpr uint32_t BigEndian(const uint8_t* at) {
  return uint32_t{at[0]} << 24 | uint32_t{at[1]} << 16 | uint32_t{at[2]} << 8 | at[3];
}

// A pixel as the string has it, in the lower three bytes.
template <Layout kFrom>
constexpr uint32_t StringPixel(uint32_t word) {
  return Pack<Layout::rgba>(Unpack<kFrom>(word)) & 0xFFFFFF;
}

// Pixels as the string has them. Four pixels are three words, which is three to eight times
// as fast as bytes.
template <Layout kFrom>
void PutPixels(const Word* first, size_t count, uint8_t* bytes) {
  const size_t groups = count / 4;
  for (size_t i = 0; i < groups; ++i) {
    const uint32_t a = StringPixel<kFrom>(first[4 * i]);
    const uint32_t b = StringPixel<kFrom>(first[4 * i + 1]);
    const uint32_t c = StringPixel<kFrom>(first[4 * i + 2]);
    const uint32_t d = StringPixel<kFrom>(first[4 * i + 3]);
    Word* words = reinterpret_cast<Word*>(bytes + 12 * i);
    words[0] = a | b << 24;
    words[1] = b >> 8 | c << 16;
    words[2] = c >> 16 | d << 8;
  }
  for (size_t x = 4 * groups; x < count; ++x) {
    const Pixel pixel = Unpack<kFrom>(first[x]);
    bytes[kPixelSize * x] = static_cast<uint8_t>(pixel.red);
    bytes[kPixelSize * x + 1] = static_cast<uint8_t>(pixel.green);
    bytes[kPixelSize * x + 2] = static_cast<uint8_t>(pixel.blue);
  }
}

constexpr Pixel GetPixel(const uint8_t* at) { return {at[0], at[1], at[2]}; }

// The length of the string of a picture, or -1 where there is none: the size is negative, or the
// string would be longer than a string can be.
constexpr int64_t StringSize(int32_t width, int32_t height) {
  if (width < 0 || height < 0) return -1;
  constexpr int64_t kMostPixels = (std::numeric_limits<int32_t>::max() - kHeaderSize) / kPixelSize;
  const int64_t pixels = int64_t{width} * height;
  return pixels > kMostPixels ? -1 : kHeaderSize + kPixelSize * pixels;
}

void WriteHeader(uint8_t* bytes, uint32_t size, int32_t width, int32_t height) {
  memset(bytes, 0, kHeaderSize);
  memcpy(bytes, kMagic, sizeof kMagic);
  PutBigEndian(bytes + 4, size);
  PutBigEndian(bytes + 8, static_cast<uint32_t>(width));
  PutBigEndian(bytes + 12, static_cast<uint32_t>(height));
  PutBigEndian(bytes + 16, 32);
  PutBigEndian(bytes + 20, kHeaderSize);
}

struct Header {
  int32_t width;
  int32_t height;
  uint32_t dataOffset;
};

// Reads the header of a string of `length` bytes. False when it isn't one, or when it or its pixels
// reach beyond the string.
bool ReadHeader(const uint8_t* bytes, int64_t length, Header* header) {
  if (length < kReadHeaderSize || memcmp(bytes, kMagic, sizeof kMagic) != 0) return false;
  if (BigEndian(bytes + 4) != length) return false;
  *header = {static_cast<int32_t>(BigEndian(bytes + 8)),
             static_cast<int32_t>(BigEndian(bytes + 12)), BigEndian(bytes + 20)};
  if (header->width < 1 || header->width > kMaxPictureSize) return false;
  if (header->height < 1 || header->height > kMaxPictureSize) return false;
  return header->dataOffset + int64_t{kPixelSize} * header->width * header->height <= length;
}

// Text where every byte, the header's included, is below 128 (intended); else bytes of no encoding.
REALencoding EncodingOf(const uint8_t* bytes, size_t size) {
  constexpr size_t kBlock = 4096;
  for (size_t begin = 0; begin < size; begin += kBlock) {
    const size_t end = size - begin < kBlock ? size : begin + kBlock;
    uint8_t seen = 0;
    for (size_t i = begin; i < end; ++i) seen |= bytes[i];
    if (seen >= 128) return kEncodingUnknown;
  }
  return kEncodingASCII;
}

}  // namespace

REALstring PicturetoBinaryString(REALpicture picture) {
  PictureReader source;
  if (!source.GetPictureEditor(picture, true, false)) return nullptr;
  const int64_t size = StringSize(source.width, source.height);
  if (!IsBufferSize(size)) return nullptr;
  const Buffer string = Buffer::Uncleared(static_cast<size_t>(size));  // filled to the last byte
  if (!string) return nullptr;

  WriteHeader(string.bytes(), static_cast<uint32_t>(size), source.width, source.height);
  uint8_t* next = string.bytes() + kHeaderSize;
  VisitPixels(source, {0, 0, source.width, source.height},
              [&]<Layout kFrom>(const Word* first, int32_t count) {
                const auto length = static_cast<size_t>(count);
                PutPixels<kFrom>(first, length, next);
                next += length * kPixelSize;
                return true;
              });

  REALstring result =
      REALBuildString(reinterpret_cast<const char*>(string.bytes()), static_cast<int32_t>(size));
  if (result != nullptr) {
    REALSetStringEncoding(result, EncodingOf(string.bytes(), static_cast<size_t>(size)));
  }
  return result;
}

REALpicture BinaryStringtoPicture(REALstring string) {
  if (string == nullptr) return nullptr;
  const StringDataGuard data(string, kEncodingUnknown);
  Header header{};
  if (!data || !ReadHeader(data.bytes(), data.length(), &header)) return nullptr;
  PictureWriter target;
  if (!target.NewPictureWriter(header.width, header.height, false)) return nullptr;

  const uint8_t* next = data.bytes() + header.dataOffset;
  const size_t rowSize = static_cast<size_t>(header.width) * kPixelSize;
  WriteRows(target, header.width, header.height, [&]<Layout kTo>(Word* row, int32_t count) {
    const uint8_t* const from = next;
    const auto length = static_cast<size_t>(count);
    for (size_t x = 0; x < length; ++x) row[x] = Pack<kTo>(GetPixel(from + x * kPixelSize));
    next = from + rowSize;
  });
  return target.RenderPictureWriter();
}
