#include "runner/files/container_writer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <string_view>

#include "runner/files/bytes.h"
#include "runner/files/iptc.h"
#include "runner/files/tiff_tags.h"

namespace runner {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr size_t kExifHeader = 6;

std::string BigEndian(uint64_t number) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift);
  return bytes;
}

std::string LittleEndian(uint64_t number) {
  std::string bytes = BigEndian(number);
  return {bytes.rbegin(), bytes.rend()};
}

constexpr size_t kBoxHeader = 8;
std::string NewBox(std::string_view kind, std::string_view content) {
  return BigEndian(kBoxHeader + content.size()) + std::string(kind) + std::string(content);
}

std::string GifBlocks(std::string_view data) {
  constexpr size_t kLargest = 255;
  std::string blocks;
  for (size_t at = 0; at < data.size(); at += kLargest) {
    const std::string_view part = data.substr(at, kLargest);
    blocks += static_cast<char>(part.size());
    blocks += part;
  }
  return blocks + '\0';
}

// A reader that takes XMP's characters for sizes of blocks is led to the end from wherever it is.
std::string GifXmp(std::string_view xmp) {
  std::string extension = "!\xFF\x0BXMP DataXMP" + std::string(xmp) + '\1';
  for (int value = 255; value >= 0; --value) extension += static_cast<char>(value);
  return extension + '\0';
}

std::string ToGif(std::string file, const Metadata& metadata) {
  constexpr size_t kHeader = 13, kFlags = 10;
  const uint32_t flags = Byte(file, kFlags);
  const size_t start = kHeader + ((flags & 0x80) == 0 ? 0 : size_t{3} << ((flags & 7) + 1));
  if (start > file.size()) return file;
  std::string extensions;
  for (const std::string& comment : metadata.comments)
    if (!comment.empty()) extensions += "!\xFE" + GifBlocks(comment);
  if (!metadata.xmp.empty()) extensions += GifXmp(metadata.xmp);
  if (!metadata.icc.empty()) extensions += "!\xFF\x0BICCRGBG1012" + GifBlocks(metadata.icc);
  return file.insert(start, extensions);
}

std::string ToJxl(std::string file, const Metadata& metadata) {
  std::string boxes;
  if (metadata.exif.size() > kExifHeader)
    boxes += NewBox("Exif", BigEndian(0) + metadata.exif.substr(kExifHeader));
  if (!metadata.xmp.empty()) boxes += NewBox("xml ", metadata.xmp);
  if (boxes.empty()) return file;
  if (!file.starts_with("\xFF\x0A")) return file + boxes;
  return NewBox("JXL ", "\r\n\x87\n") + NewBox("ftyp", "jxl \0\0\0\0jxl "sv) + boxes +
         NewBox("jxlc", file);
}

// Gives the header's colour box the profile. Offsets in the file count from nowhere before it.
void SetJp2Profile(std::string* file, const std::string& icc) {
  for (size_t at = 0; at + kBoxHeader <= file->size();) {
    const size_t length = BigEndian32(*file, at);
    if (length < kBoxHeader || length > file->size() - at) return;
    if (file->compare(at + 4, 4, "jp2h") != 0) {
      at += length;
      continue;
    }
    for (size_t inner = at + kBoxHeader; inner + kBoxHeader <= at + length;) {
      const size_t size = BigEndian32(*file, inner);
      if (size < kBoxHeader || size > at + length - inner) return;
      if (file->compare(inner + 4, 4, "colr") == 0) {
        const std::string box = NewBox("colr", "\2\0\0"s + icc);
        file->replace(inner, size, box);
        file->replace(at, 4, BigEndian(length - size + box.size()));
        return;
      }
      inner += size;
    }
    return;
  }
}

std::string ToJp2(std::string file, const Metadata& metadata) {
  // A bare stream of pixels has no boxes.
  if (file.compare(4, 4, "jP  ") != 0) return file;
  if (!metadata.icc.empty()) SetJp2Profile(&file, metadata.icc);
  if (metadata.exif.size() > kExifHeader)
    file += NewBox("uuid", "JpgTiffExif->JP2" + metadata.exif.substr(kExifHeader));
  if (!metadata.xmp.empty())
    file += NewBox(
        "uuid", "\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC" + metadata.xmp);
  if (const std::string records = IptcRecords(metadata.iptc); !records.empty())
    file += NewBox("uuid",
                   "\x33\xC7\xA4\xD2\xB8\x1D\x47\x23\xA0\xBA\xF1\xA3\xE0\x97\xAD\x38" + records);
  return file;
}

// The checksum of a PNG chunk, bit by bit: metadata is short.
uint32_t ChunkChecksum(std::string_view bytes) {
  uint32_t sum = ~uint32_t{0};
  for (const char c : bytes) {
    sum ^= static_cast<uint8_t>(c);
    for (int i = 0; i < 8; ++i) sum = sum >> 1 ^ ((sum & 1) != 0 ? 0xEDB88320 : 0);
  }
  return ~sum;
}

std::string Chunk(std::string_view kindAndData) {
  constexpr size_t kKind = 4;
  return BigEndian(kindAndData.size() - kKind) + std::string(kindAndData) +
         BigEndian(ChunkChecksum(kindAndData));
}

std::string PngTexts(const Metadata& metadata) {
  std::string chunks;
  if (!metadata.xmp.empty()) chunks += Chunk("iTXtXML:com.adobe.xmp\0\0\0\0\0"s + metadata.xmp);
  if (const std::string records = IptcRecords(metadata.iptc); !records.empty())
    chunks += Chunk("tEXt" + std::string(kIptcKeyword) + '\0' + IptcText(IptcResources(records)));
  return chunks;
}

// libvips writes EXIF a second time behind the pixels, and XMP where few programs look for it.
std::string ToPng(const std::string& file, const Metadata& metadata) {
  constexpr size_t kSignature = 8, kAround = 12;
  std::string result = file.substr(0, kSignature);
  bool pixels = false;
  for (size_t at = kSignature; at + kAround <= file.size();) {
    const size_t length = BigEndian32(file, at) + kAround;
    if (length > file.size() - at) return file;
    const std::string_view kind = std::string_view(file).substr(at + 4, 4);
    if (kind == "IDAT" && !pixels) {
      pixels = true;
      result += PngTexts(metadata);
    }
    if (kind != "eXIf" || !pixels) result.append(file, at, length);
    at += length;
  }
  return result;
}

// Comments are lines behind the first one. libvips writes one of its own, with the time in it.
std::string ToPpm(std::string file, const Metadata& metadata) {
  std::string lines;
  for (const std::string& comment : metadata.comments) {
    lines += "# ";
    for (const char c : comment) lines += c == '\n' ? "\n# " : std::string(1, c);
    lines += '\n';
  }
  const size_t start = file.find('\n') + 1;
  const size_t end = Byte(file, start) == '#' ? file.find('\n', start) + 1 : start;
  return start == 0 || end == 0 ? file : file.replace(start, end - start, lines);
}

// libvips writes EXIF where there is none, and begins it as in a JPEG file, which other programs
// find wrong.
std::string ToWebp(std::string file, const Metadata& metadata) {
  constexpr size_t kFirst = 12, kHeader = 8, kFlags = 20;
  constexpr char kHasExif = 8;
  for (size_t at = kFirst; at + kHeader <= file.size();) {
    const uint64_t size = LittleEndian32(file, at + 4);
    const uint64_t end = at + kHeader + (size + 1) / 2 * 2;
    if (end > file.size()) break;
    if (file.compare(at, 4, "EXIF") != 0) {
      at = end;
      continue;
    }
    if (metadata.exif.empty()) {
      file.erase(at, end - at);
      file[kFlags] &= static_cast<char>(~kHasExif);
    } else if (size > kExifHeader &&
               file.compare(at + kHeader, kExifHeader, "Exif\0\0", kExifHeader) == 0) {
      file.erase(at + kHeader, kExifHeader);
      file.replace(at + 4, 4, LittleEndian(size - kExifHeader));
    }
    return file.replace(4, 4, LittleEndian(file.size() - kHeader));
  }
  return file;
}

std::string ToTiff(std::string file, const Metadata& metadata) {
  const std::string block =
      metadata.exif.size() > kExifHeader ? metadata.exif.substr(kExifHeader) : std::string();
  const std::filesystem::path none;
  TiffTags tags;
  if (!block.empty()) tags = ReadTiffTags({block, none}).value_or(TiffTags());
  // libvips would write a quarter of it.
  constexpr uint16_t kIptc = 33723, kUndefined = 7;
  if (std::string records = IptcRecords(metadata.iptc); !records.empty())
    tags.image.push_back(
        {kIptc, kUndefined, static_cast<uint32_t>(records.size()), std::move(records)});
  return WithTiffTags(std::move(file), tags);
}

// Pixels for each metre, in a header that is long enough.
std::string ToBmp(std::string file, const Metadata& metadata) {
  constexpr size_t kHeaderLength = 14, kHorizontal = 38, kVertical = 42, kShortest = 40;
  constexpr double kMillimetresInMetre = 1000;
  if (!metadata.resolution || LittleEndian32(file, kHeaderLength) < kShortest) return file;
  const auto perMetre = [](double perMillimetre) {
    return LittleEndian(static_cast<uint32_t>(
        std::clamp<double>(std::round(perMillimetre * kMillimetresInMetre), 0, INT32_MAX)));
  };
  file.replace(kHorizontal, 4, perMetre(metadata.resolution->horizontal));
  return file.replace(kVertical, 4, perMetre(metadata.resolution->vertical));
}

}  // namespace

std::string WithContainerMetadata(std::string file, const ImageFormat& format,
                                  const Metadata& metadata) {
  if (format.name == "tiff") return ToTiff(std::move(file), metadata);
  if (format.name == "bmp") return ToBmp(std::move(file), metadata);
  if (format.name == "gif") return ToGif(std::move(file), metadata);
  if (format.name == "jxl") return ToJxl(std::move(file), metadata);
  if (format.name == "jp2") return ToJp2(std::move(file), metadata);
  if (format.name == "png") return ToPng(file, metadata);
  if (format.name == "ppm") return ToPpm(std::move(file), metadata);
  if (format.name == "webp") return ToWebp(std::move(file), metadata);
  return file;
}

}  // namespace runner
