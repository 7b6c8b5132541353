#include "runner/files/wholeness.h"

#include "runner/files/bytes.h"

namespace runner {
namespace {

Fault Truncated() { return {"is truncated", false}; }

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

constexpr size_t kBmpHeaders = 54;

// Uncompressed rows follow the header.
std::optional<Fault> FaultOfBmp(const FileContent& content) {
  const std::string header = content.Beginning(kBmpHeaders);
  const BmpSize size = SizeOfBmp(content);
  constexpr size_t kSmallestHeaders = 26;  // of files from OS/2
  if (header.size() < kSmallestHeaders) return Fault{"is truncated", true};
  if (size.width == 0) return std::nullopt;
  const uint64_t start = LittleEndian32(header, 10);
  const uint64_t bits = Byte(header, 28) | Byte(header, 29) << 8;
  const uint32_t compression = LittleEndian32(header, 30);
  bool whole = false;
  if (compression == 1 || compression == 2)
    whole = RunsComeToAnEnd(content.Beginning(kLargestFile), start, size.width, size.height,
                            compression == 2);
  else
    whole = start + (size.width * bits + 31) / 32 * 4 * size.height <= content.Size();
  if (whole) return std::nullopt;
  return Fault{"is truncated", true};
}

std::optional<Fault> FaultOfWebp(const FileContent& content) {
  const std::string header = content.Beginning(12);
  if (header.size() < 12 || uint64_t{LittleEndian32(header, 4)} + 8 > content.Size())
    return Truncated();
  return std::nullopt;
}

// Chunks follow each other up to the one that ends the file.
std::optional<Fault> FaultOfPng(const FileContent& content) {
  constexpr uint64_t kSignature = 8, kAround = 12;  // a chunk's length, kind and checksum
  for (uint64_t at = kSignature; at + kAround <= content.Size();) {
    const std::string head = content.Part(at, 8);
    if (head.size() < 8) break;
    at += kAround + BigEndian32(head, 0);
    if (std::string_view(head).substr(4) == "IEND" && at <= content.Size()) return std::nullopt;
  }
  return Truncated();
}

}  // namespace

BmpSize SizeOfBmp(const FileContent& content) {
  constexpr size_t kFileHeader = 14, kInfoHeader = 40;
  const std::string header = content.Beginning(kBmpHeaders);
  if (header.size() < kBmpHeaders || LittleEndian32(header, kFileHeader) < kInfoHeader) return {};
  const int64_t height = static_cast<int32_t>(LittleEndian32(header, 22));
  return {LittleEndian32(header, 18), static_cast<uint64_t>(height < 0 ? -height : height)};
}

std::optional<Fault> FaultOfJpeg(std::string_view bytes) {
  uint64_t pixels = 0;
  uint64_t coded = 0;
  bool arithmetic = false;
  for (size_t at = NextMarker(bytes, 0); at != std::string_view::npos;) {
    const uint32_t marker = Byte(bytes, at++);
    if (marker == kEndOfImage) {
      // Huffman codes spend at least one bit on each block of 64 pixels.
      if (!arithmetic && coded * 8 * 64 < pixels)
        return Fault{"promises more pixels in its header than its data can hold", true};
      return std::nullopt;
    }
    if (!StandsAlone(marker)) {
      if (at + 2 > bytes.size()) return Truncated();
      const size_t end = at + BigEndian16(bytes, at);
      if (end > bytes.size()) return Truncated();
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
  return Truncated();
}

std::optional<Fault> FaultOf(const FileContent& content, const ImageFormat& format) {
  if (format.name == "jpeg") return FaultOfJpeg(content.Beginning(kLargestFile));
  if (format.name == "bmp") return FaultOfBmp(content);
  if (format.name == "webp") return FaultOfWebp(content);
  if (format.name == "png") return FaultOfPng(content);
  return std::nullopt;
}

}  // namespace runner
