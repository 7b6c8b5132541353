#include "runner/files/container_metadata.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <optional>
#include <string_view>

#include "runner/files/bytes.h"
#include "runner/files/iptc.h"
#include "runner/files/tiff_tags.h"

namespace runner {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr std::string_view kExifStart = "Exif\0\0"sv;
// No block of metadata is larger in earnest.
constexpr size_t kLargestBlock = size_t{64} << 20;

// A file as it is walked through, from its beginning to its end.
class Bytes {
 public:
  explicit Bytes(const FileContent& from) : content(from), size(from.Size()) {}

  uint64_t Size() const { return size; }
  // Shorter at the file's end.
  std::string Part(uint64_t at, uint64_t count) {
    if (count > kLargestBlock) return {};
    if (count > kWindow) return content.Part(at, static_cast<size_t>(count));
    if (at < start || at + count > start + window.size()) {
      window = content.Part(at, kWindow);
      start = at;
    }
    return window.substr(static_cast<size_t>(at - start), static_cast<size_t>(count));
  }

 private:
  static constexpr size_t kWindow = 4096;
  const FileContent& content;
  uint64_t size;
  std::string window;
  uint64_t start = 0;
};

void SetIfEmpty(std::string* block, std::string value) {
  if (block->empty()) *block = std::move(value);
}

// Files of some formats have the block without its first bytes.
std::string ExifOf(std::string bytes) {
  if (bytes.starts_with("II") || bytes.starts_with("MM")) bytes.insert(0, kExifStart);
  return bytes.starts_with(kExifStart) ? bytes : std::string();
}

// Dots for each inch or centimetre.
std::optional<Resolution> ResolutionInJfif(std::string_view segment) {
  constexpr size_t kUnit = 7, kHorizontal = 8, kVertical = 10;
  constexpr double kMillimetresInInch = 25.4, kMillimetresInCentimetre = 10;
  const uint32_t unit = Byte(segment, kUnit);
  const uint32_t x = BigEndian16(segment, kHorizontal), y = BigEndian16(segment, kVertical);
  if ((unit != 1 && unit != 2) || x <= 1 || y <= 1) return std::nullopt;
  const double millimetres = unit == 1 ? kMillimetresInInch : kMillimetresInCentimetre;
  return Resolution{x / millimetres, y / millimetres, unit == 1};
}

// The parts of a profile, which say how many there are and which they are; empty: one is missing.
std::string Joined(const std::map<uint32_t, std::string>& parts, uint32_t count) {
  std::string profile;
  if (parts.size() != count || parts.empty() || parts.rbegin()->first != count) return profile;
  for (const auto& [number, part] : parts) profile += part;
  return profile;
}

// Segments before the scan.
void AddFromJpeg(Bytes* bytes, Metadata* metadata) {
  constexpr uint32_t kComment = 0xFE, kScan = 0xDA, kFill = 0xFF;
  constexpr uint32_t kApp0 = 0xE0, kApp1 = 0xE1, kApp2 = 0xE2, kApp13 = 0xED;
  constexpr std::string_view kJfif = "JFIF\0"sv, kXmp = "http://ns.adobe.com/xap/1.0/\0"sv;
  constexpr std::string_view kProfile = "ICC_PROFILE\0"sv, kResources = "Photoshop 3.0\0"sv;
  std::vector<std::string> comments;
  std::map<uint32_t, std::string> profile;
  uint32_t profileParts = 0;
  std::string resources;
  for (uint64_t at = 2; at + 4 <= bytes->Size();) {
    const std::string head = bytes->Part(at, 4);
    const uint32_t marker = Byte(head, 1);
    if (Byte(head, 0) != kFill || marker == kScan) break;
    if (marker == kFill) {
      ++at;
      continue;
    }
    const uint64_t length = std::max<uint64_t>(2, BigEndian16(head, 2));
    const auto data = [&] { return bytes->Part(at + 4, length - 2); };
    if (marker == kComment) comments.push_back(data());
    if (marker == kApp0 && !metadata->resolution && data().starts_with(kJfif))
      metadata->resolution = ResolutionInJfif(data());
    if (marker == kApp1) {
      const std::string block = data();
      if (block.starts_with(kExifStart)) SetIfEmpty(&metadata->exif, block);
      if (block.starts_with(kXmp)) SetIfEmpty(&metadata->xmp, block.substr(kXmp.size()));
    }
    if (marker == kApp2) {
      const std::string block = data();
      constexpr size_t kNumbers = 2;
      if (block.starts_with(kProfile) && block.size() > kProfile.size() + kNumbers) {
        profileParts = Byte(block, kProfile.size() + 1);
        profile.emplace(Byte(block, kProfile.size()), block.substr(kProfile.size() + kNumbers));
      }
    }
    if (marker == kApp13) {
      const std::string block = data();
      if (block.starts_with(kResources))
        resources += resources.empty() ? block : block.substr(kResources.size());
    }
    at += 2 + length;
  }
  if (metadata->comments.empty()) metadata->comments = std::move(comments);
  SetIfEmpty(&metadata->icc, Joined(profile, profileParts));
  SetIfEmpty(&metadata->iptc, std::move(resources));
}

// The text behind an international keyword, unless it is compressed.
std::string InternationalText(std::string_view data) {
  const size_t compressed = data.find('\0') + 1;
  if (compressed == 0 || Byte(data, compressed) != 0) return {};
  const size_t language = data.find('\0', std::min(compressed + 2, data.size()));
  if (language == std::string_view::npos) return {};
  const size_t keyword = data.find('\0', language + 1);
  return keyword == std::string_view::npos ? std::string() : std::string(data.substr(keyword + 1));
}

void AddFromPng(Bytes* bytes, Metadata* metadata) {
  constexpr uint64_t kSignature = 8, kAround = 12;
  constexpr std::string_view kXmp = "XML:com.adobe.xmp\0"sv, kComment = "Comment\0"sv;
  std::vector<std::string> comments;
  for (uint64_t at = kSignature; at + kAround <= bytes->Size();) {
    const std::string head = bytes->Part(at, 8);
    const uint64_t length = BigEndian32(head, 0);
    const std::string_view kind = std::string_view(head).substr(4);
    if (kind == "eXIf" || kind == "iTXt" || kind == "tEXt") {
      const std::string data = bytes->Part(at + 8, length);
      if (kind == "eXIf") SetIfEmpty(&metadata->exif, ExifOf(data));
      if (kind == "iTXt" && data.starts_with(kXmp))
        SetIfEmpty(&metadata->xmp, InternationalText(data));
      if (kind == "iTXt" && data.starts_with(kComment)) comments.push_back(InternationalText(data));
      if (kind == "tEXt" && data.starts_with(kComment))
        comments.push_back(data.substr(kComment.size()));
      if (kind == "tEXt" && data.starts_with(std::string(kIptcKeyword) + '\0'))
        SetIfEmpty(
            &metadata->iptc,
            IptcRecords(BytesOfText(std::string_view(data).substr(kIptcKeyword.size() + 1))));
    }
    at += kAround + length;
  }
  if (metadata->comments.empty()) metadata->comments = std::move(comments);
}

// The data of blocks up to the one without any, and where the next thing begins.
std::string GifData(Bytes* bytes, uint64_t* at) {
  std::string data;
  for (;;) {
    const size_t size = Byte(bytes->Part(*at, 1), 0);
    if (size > 0) data += bytes->Part(*at + 1, size);
    *at += 1 + size;
    if (size == 0 || *at >= bytes->Size()) return data;
  }
}

void SkipGifData(Bytes* bytes, uint64_t* at) {
  while (*at < bytes->Size()) {
    const size_t size = Byte(bytes->Part(*at, 1), 0);
    *at += 1 + size;
    if (size == 0) return;
  }
}

uint64_t ColourTableSize(uint32_t flags) {
  return (flags & 0x80) == 0 ? 0 : uint64_t{3} << ((flags & 7) + 1);
}

// XMP stands there bare. A reader that takes its characters for sizes of blocks comes out at its
// end all the same: 258 bytes follow that lead there from wherever it is.
void AddFromGif(Bytes* bytes, Metadata* metadata) {
  constexpr std::string_view kXmp = "XMP DataXMP", kProfile = "ICCRGBG1012";
  constexpr size_t kHeader = 13, kName = 11, kTrailer = 258;
  std::vector<std::string> comments;
  uint64_t at = kHeader + ColourTableSize(Byte(bytes->Part(0, kHeader), 10));
  while (at < bytes->Size()) {
    const std::string head = bytes->Part(at, 3 + kName);
    if (Byte(head, 0) == ',') {
      constexpr size_t kDescriptor = 10;
      at += kDescriptor + ColourTableSize(Byte(head, kDescriptor - 1)) + 1;
      SkipGifData(bytes, &at);
      continue;
    }
    if (Byte(head, 0) != '!') break;
    const std::string_view name = std::string_view(head).substr(std::min<size_t>(3, head.size()));
    const bool application = Byte(head, 1) == 0xFF && Byte(head, 2) == kName;
    at += 2;
    if (application) at += 1 + kName;
    if (application && name == kXmp) {
      const uint64_t start = at;
      SkipGifData(bytes, &at);
      if (at > start + kTrailer && at <= bytes->Size())
        SetIfEmpty(&metadata->xmp, bytes->Part(start, at - start - kTrailer));
    } else {
      std::string data = GifData(bytes, &at);
      if (application && name == kProfile) SetIfEmpty(&metadata->icc, std::move(data));
      if (!application && Byte(head, 1) == 0xFE) comments.push_back(std::move(data));
    }
  }
  if (metadata->comments.empty()) metadata->comments = std::move(comments);
}

// A box of JPEG 2000 and JPEG XL: where its content begins and ends.
struct Box {
  std::string kind;
  uint64_t start = 0, end = 0;
};

// Nothing: no box begins there.
std::optional<Box> BoxAt(Bytes* bytes, uint64_t at, uint64_t end) {
  constexpr uint64_t kShort = 8, kLong = 16;
  const std::string head = bytes->Part(at, kLong);
  if (head.size() < kShort || at + kShort > end) return std::nullopt;
  uint64_t length = BigEndian32(head, 0);
  uint64_t header = kShort;
  if (length == 1) {
    header = kLong;
    length = uint64_t{BigEndian32(head, 8)} << 32 | BigEndian32(head, 12);
  }
  if (length == 0) length = end - at;
  if (length < header || length > end - at) return std::nullopt;
  return Box{head.substr(4, 4), at + header, at + length};
}

template <class Look>
void ForEachBox(Bytes* bytes, uint64_t start, uint64_t end, Look look) {
  while (start < end) {
    const std::optional<Box> box = BoxAt(bytes, start, end);
    if (!box) return;
    look(*box, bytes->Part(box->start, 16));
    start = box->end;
  }
}

void AddFromJxl(Bytes* bytes, Metadata* metadata) {
  ForEachBox(bytes, 0, bytes->Size(), [&](const Box& box, std::string_view head) {
    const auto data = [&](uint64_t skip) {
      return box.start + skip >= box.end
                 ? std::string()
                 : bytes->Part(box.start + skip, box.end - box.start - skip);
    };
    // It begins with how many bytes precede the block.
    if (box.kind == "Exif")
      SetIfEmpty(&metadata->exif, ExifOf(data(uint64_t{4} + BigEndian32(head, 0))));
    if (box.kind == "xml " && metadata->xmp.empty()) metadata->xmp = data(0);
  });
}

void AddFromJp2(Bytes* bytes, Metadata* metadata) {
  constexpr std::string_view kExif = "JpgTiffExif->JP2";
  constexpr std::string_view kXmp =
      "\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC"sv;
  constexpr std::string_view kIptc =
      "\x33\xC7\xA4\xD2\xB8\x1D\x47\x23\xA0\xBA\xF1\xA3\xE0\x97\xAD\x38"sv;
  ForEachBox(bytes, 0, bytes->Size(), [&](const Box& box, std::string_view head) {
    if (box.kind == "uuid") {
      const auto data = [&] {
        const uint64_t start = std::min(box.start + head.size(), box.end);
        return bytes->Part(start, box.end - start);
      };
      if (head == kExif) SetIfEmpty(&metadata->exif, ExifOf(data()));
      if (head == kXmp) SetIfEmpty(&metadata->xmp, data());
      if (head == kIptc) SetIfEmpty(&metadata->iptc, IptcRecords(data()));
    }
    if (box.kind != "jp2h") return;
    ForEachBox(bytes, box.start, box.end, [&](const Box& inner, std::string_view method) {
      constexpr uint64_t kBefore = 3;
      if (inner.kind == "colr" && (Byte(method, 0) == 2 || Byte(method, 0) == 3) &&
          inner.start + kBefore < inner.end)
        SetIfEmpty(&metadata->icc,
                   bytes->Part(inner.start + kBefore, inner.end - inner.start - kBefore));
    });
  });
}

// Lines in the header, which consists of three or four words. Lines one below the other are one
// comment.
void AddFromPpm(Bytes* bytes, Metadata* metadata) {
  constexpr uint64_t kLargestHeader = 65536;
  const std::string head = bytes->Part(0, kLargestHeader);
  const size_t words = head.starts_with("P1") || head.starts_with("P4") ? 3 : 4;
  std::vector<std::string> comments;
  bool follows = false;
  for (size_t at = 0, word = 0; at < head.size();) {
    if (head[at] == '#') {
      const size_t end = std::min(head.find('\n', at), head.size());
      const size_t start = Byte(head, at + 1) == ' ' ? at + 2 : at + 1;
      const std::string text = head.substr(std::min(start, end), end - std::min(start, end));
      if (follows)
        comments.back() += '\n' + text;
      else
        comments.push_back(text);
      follows = true;
      at = end + 1;
    } else if (std::isspace(static_cast<unsigned char>(head[at])) != 0) {
      ++at;
    } else {
      if (++word == words) break;
      follows = false;
      while (at < head.size() && head[at] != '#' &&
             std::isspace(static_cast<unsigned char>(head[at])) == 0)
        ++at;
    }
  }
  // libvips signs its files.
  std::erase_if(comments,
                [](const std::string& comment) { return comment.starts_with("vips2ppm"); });
  if (metadata->comments.empty()) metadata->comments = std::move(comments);
}

// Pixels for each metre.
void AddFromBmp(Bytes* bytes, Metadata* metadata) {
  constexpr size_t kHorizontal = 38, kVertical = 42, kEnd = 46;
  constexpr double kMillimetresInMetre = 1000;
  const std::string head = bytes->Part(0, kEnd);
  const uint32_t x = LittleEndian32(head, kHorizontal), y = LittleEndian32(head, kVertical);
  constexpr size_t kHeaderLength = 14, kShortest = 40;
  if (LittleEndian32(head, kHeaderLength) < kShortest || x == 0 || y == 0) return;
  metadata->resolution = Resolution{x / kMillimetresInMetre, y / kMillimetresInMetre, true};
}

bool IsXmp(std::string_view block) {
  return block.starts_with("<?xpacket") || block.starts_with("<x:xmpmeta") ||
         block.starts_with("<rdf:RDF");
}

// What libvips keeps under names that don't say what it is.
void AddFromFields(VipsImage* image, Metadata* metadata) {
  gchar** names = vips_image_get_fields(image);
  for (gchar** each = names; *each != nullptr; ++each) {
    const std::string_view name = *each;
    const void* data = nullptr;
    const char* text = nullptr;
    size_t size = 0;
    if (name.starts_with("heif-") && vips_image_get_typeof(image, *each) == VIPS_TYPE_BLOB &&
        vips_image_get_blob(image, *each, &data, &size) == 0) {
      const std::string_view block(static_cast<const char*>(data), size);
      if (IsXmp(block)) SetIfEmpty(&metadata->xmp, std::string(block));
    }
    if (name.starts_with("png-comment-") && name.ends_with(kIptcKeyword) &&
        vips_image_get_string(image, *each, &text) == 0)
      SetIfEmpty(&metadata->iptc, IptcRecords(BytesOfText(text)));
  }
  g_strfreev(names);
}

}  // namespace

void AddContainerMetadata(const FileContent& content, VipsImage* image, const ImageFormat& format,
                          Metadata* metadata) {
  Bytes bytes(content);
  metadata->exif = ExifOf(std::move(metadata->exif));
  if (image != nullptr) AddFromFields(image, metadata);
  if (format.name == "jpeg") AddFromJpeg(&bytes, metadata);
  if (format.name == "png") AddFromPng(&bytes, metadata);
  if (format.name == "ppm") AddFromPpm(&bytes, metadata);
  if (format.name == "bmp") AddFromBmp(&bytes, metadata);
  if (format.name == "gif") AddFromGif(&bytes, metadata);
  if (format.name == "jxl") AddFromJxl(&bytes, metadata);
  if (format.name == "jp2") AddFromJp2(&bytes, metadata);
  if (format.name == "tiff" && metadata->exif.empty())
    if (const std::optional<TiffTags> tags = ReadTiffTags(content))
      metadata->exif = ExifBlock(*tags);
}

}  // namespace runner
