#include "runner/image_check.h"

#include <cstring>

#include "runner/files.h"

namespace runner {
namespace {

constexpr const char* kTruncated = "is truncated";

uint32_t Byte(std::string_view bytes, size_t at) { return static_cast<uint8_t>(bytes[at]); }
uint32_t BigEndian16(std::string_view bytes, size_t at) {
  return Byte(bytes, at) << 8 | Byte(bytes, at + 1);
}
uint32_t LittleEndian32(std::string_view bytes, size_t at) {
  return Byte(bytes, at) | Byte(bytes, at + 1) << 8 | Byte(bytes, at + 2) << 16 |
         Byte(bytes, at + 3) << 24;
}

constexpr uint32_t kEndOfImage = 0xD9, kStartOfScan = 0xDA;

bool StandsAlone(uint32_t marker) { return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8); }
bool IsFrame(uint32_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}
bool IsArithmetic(uint32_t frame) { return frame >= 0xC9; }

// The position of the next marker's code at or after `at`; npos: there is none.
size_t NextMarker(std::string_view bytes, size_t at) {
  while ((at = bytes.find('\xFF', at)) != std::string_view::npos && at + 1 < bytes.size()) {
    const uint32_t code = Byte(bytes, at + 1);
    const bool stuffed = code == 0 || (code >= 0xD0 && code <= 0xD7);
    if (code != 0xFF && !stuffed) return at + 1;
    at += code == 0xFF ? 1 : 2;
  }
  return std::string_view::npos;
}

// Whether run-length coded rows, which begin at `at`, come to an end: by the mark for it or with
// the last pixel. A row may end early and rows may be skipped.
bool RunsComeToAnEnd(std::string_view bytes, size_t at, uint64_t width, uint64_t height,
                     bool halfBytes) {
  constexpr uint32_t kEndOfRow = 0, kEndOfBitmap = 1, kSkip = 2;
  uint64_t x = 0, y = 0;
  while (at + 2 <= bytes.size()) {
    const uint32_t count = Byte(bytes, at), value = Byte(bytes, at + 1);
    at += 2;
    if (count > 0) {
      x += count;
    } else if (value == kEndOfBitmap) {
      return true;
    } else if (value == kEndOfRow) {
      x = 0;
      y += 1;
    } else if (value == kSkip) {
      if (at + 2 > bytes.size()) return false;
      x += Byte(bytes, at);
      y += Byte(bytes, at + 1);
      at += 2;
    } else {  // so many pixels as they are, padded to 16 bits
      x += value;
      const size_t length = halfBytes ? (value + 1) / 2 : value;
      if (at + length > bytes.size()) return false;
      at += (length + 1) / 2 * 2;
    }
    if (y >= height || (y + 1 == height && x >= width)) return true;
  }
  return false;
}

// Uncompressed rows follow the header.
std::optional<std::string> MissingFromBmp(const std::filesystem::path& path,
                                          std::string_view header, uintmax_t size) {
  constexpr size_t kFileHeader = 14, kInfoHeader = 40;
  if (header.size() < kFileHeader + kInfoHeader) return std::nullopt;  // older kinds
  const uint64_t start = LittleEndian32(header, 10);
  if (LittleEndian32(header, kFileHeader) < kInfoHeader) return std::nullopt;
  const uint64_t width = LittleEndian32(header, 18);
  const int64_t signedHeight = static_cast<int32_t>(LittleEndian32(header, 22));
  const auto height = static_cast<uint64_t>(signedHeight < 0 ? -signedHeight : signedHeight);
  const uint64_t bits = Byte(header, 28) | Byte(header, 29) << 8;
  const uint32_t compression = LittleEndian32(header, 30);
  bool whole = false;
  if (compression == 1 || compression == 2)
    whole = RunsComeToAnEnd(ReadWholeFile(path), start, width, height, compression == 2);
  else
    whole = start + (width * bits + 31) / 32 * 4 * height <= size;
  return whole ? std::nullopt : std::optional<std::string>(kTruncated);
}

std::optional<std::string> MissingFromWebp(std::string_view header, uintmax_t size) {
  if (header.size() < 12 || uint64_t{LittleEndian32(header, 4)} + 8 > size) return kTruncated;
  return std::nullopt;
}

}  // namespace

std::optional<std::string> MissingFromJpeg(std::string_view bytes) {
  uint64_t pixels = 0;
  uint64_t coded = 0;
  bool arithmetic = false;
  for (size_t at = NextMarker(bytes, 0); at != std::string_view::npos;) {
    const uint32_t marker = Byte(bytes, at++);
    if (marker == kEndOfImage) {
      // Huffman codes spend at least one bit on each block of 64 pixels.
      if (!arithmetic && coded * 8 * 64 < pixels)
        return "promises more pixels in its header than its data can hold";
      return std::nullopt;
    }
    if (!StandsAlone(marker)) {
      if (at + 2 > bytes.size()) return kTruncated;
      const size_t end = at + BigEndian16(bytes, at);
      if (end > bytes.size()) return kTruncated;
      if (IsFrame(marker) && at + 7 <= end) {
        pixels = uint64_t{BigEndian16(bytes, at + 3)} * BigEndian16(bytes, at + 5);
        arithmetic = IsArithmetic(marker);
      }
      at = end;
    }
    const size_t next = NextMarker(bytes, at);
    if (marker == kStartOfScan && next != std::string_view::npos) coded += next - 1 - at;
    at = next;
  }
  return kTruncated;
}

std::optional<std::string> MissingFrom(const std::filesystem::path& path, std::string_view format) {
  if (format == "jpeg") return MissingFromJpeg(ReadWholeFile(path));
  if (format != "bmp" && format != "webp") return std::nullopt;
  const std::string header = ReadBeginning(path, 54);
  const uintmax_t size = std::filesystem::file_size(path);
  return format == "bmp" ? MissingFromBmp(path, header, size) : MissingFromWebp(header, size);
}

}  // namespace runner
