#include "runner/files/tiff_tags.h"

#include <algorithm>
#include <array>

#include "runner/files/bytes.h"

namespace runner {
namespace {

constexpr uint16_t kExifPointer = 0x8769, kGpsPointer = 0x8825, kInteroperabilityPointer = 0xA005;
constexpr uint16_t kLong = 4;
constexpr size_t kTiffHeader = 8, kTiffEntry = 12, kInPlace = 4;
constexpr size_t kLargestTags = 65527;  // behind "Exif\0\0"

// Bytes of a number of each type, from 1 on. A ratio is two numbers.
constexpr std::array<size_t, 14> kNumberSizes = {0, 1, 1, 2, 4, 4, 1, 1, 2, 4, 4, 4, 8, 4};

bool IsRatio(uint16_t type) { return type == 5 || type == 10; }
size_t NumberSize(uint16_t type) { return type < kNumberSizes.size() ? kNumberSizes[type] : 0; }
uint64_t ValueSize(uint16_t type, uint32_t count) {
  return uint64_t{count} * NumberSize(type) * (IsRatio(type) ? 2 : 1);
}

bool IsPointer(uint16_t number) {
  return number == kExifPointer || number == kGpsPointer || number == kInteroperabilityPointer;
}

struct TagRange {
  uint16_t first, last;
};

// Tags of a picture's directory that follow from how its pixels are stored, or that point at other
// things in the file.
constexpr auto kStorage = std::to_array<TagRange>({
    {254, 266},      // kind of page, size, samples, compression
    {273, 273},      // strips
    {277, 281},      // samples and strips
    {284, 284},      // planes
    {288, 293},      // free space and fax options
    {297, 297},      // number of the page
    {301, 301},      // transfer function
    {317, 347},      // predictor, primaries, palette, tiles, further directories, inks, samples
    {512, 532},      // JPEG's tables, YCbCr
    {559, 559},      // strips
    {700, 700},      // XMP
    {32995, 32998},  // depth
    {33421, 33422},  // sensor's pattern
    {33723, 33723},  // IPTC
    {34377, 34377},  // image resources
    {34675, 34675},  // profile
    {37724, 37724},  // layers
    {50706, 52600},  // raw pixels
});

bool TellsOfStorage(uint16_t number) {
  return std::any_of(kStorage.begin(), kStorage.end(), [&](const TagRange& range) {
    return number >= range.first && number <= range.last;
  });
}

// Numbers in the byte order of a file.
class ByteOrder {
 public:
  explicit ByteOrder(bool isBigEndian) : bigEndian(isBigEndian) {}

  uint16_t Get16(std::string_view bytes, size_t at) const {
    return static_cast<uint16_t>(bigEndian ? BigEndian16(bytes, at)
                                           : Byte(bytes, at) | Byte(bytes, at + 1) << 8);
  }
  uint32_t Get32(std::string_view bytes, size_t at) const {
    return bigEndian ? BigEndian32(bytes, at) : LittleEndian32(bytes, at);
  }
  void Add(std::string* to, uint32_t number, int count) const {
    for (int i = 0; i < count; ++i)
      *to += static_cast<char>(number >> 8 * (bigEndian ? count - 1 - i : i));
  }

 private:
  bool bigEndian;
};

class TiffReader {
 public:
  TiffReader(const FileContent& from, bool bigEndian) : content(from), order(bigEndian) {}

  std::vector<TiffTag> Directory(uint32_t at, bool ofImage) {
    std::vector<TiffTag> tags;
    if (at == 0) return tags;
    const size_t count = order.Get16(content.Part(at, 2), 0);
    const std::string entries = content.Part(uint64_t{at} + 2, count * kTiffEntry);
    for (size_t i = 0; i + kTiffEntry <= entries.size(); i += kTiffEntry) {
      TiffTag tag{order.Get16(entries, i), order.Get16(entries, i + 2), order.Get32(entries, i + 4),
                  ""};
      const uint32_t place = order.Get32(entries, i + 8);
      if (tag.number == kExifPointer && ofImage) exif = place;
      if (tag.number == kGpsPointer && ofImage) gps = place;
      if (tag.number == kInteroperabilityPointer && !ofImage) interoperability = place;
      if (IsPointer(tag.number) || (ofImage && TellsOfStorage(tag.number))) continue;
      const uint64_t size = ValueSize(tag.type, tag.count);
      if (size == 0 || size + kTiffEntry > left) continue;
      tag.value = size <= kInPlace ? entries.substr(i + 8, size)
                                   : content.Part(place, static_cast<size_t>(size));
      if (tag.value.size() != size) continue;
      left -= kTiffEntry + tag.value.size();
      tags.push_back(std::move(tag));
    }
    return tags;
  }

  uint32_t exif = 0, gps = 0, interoperability = 0;

 private:
  const FileContent& content;
  ByteOrder order;
  size_t left = kLargestTags;
};

// The value of a tag for a file of the other byte order.
TiffTag Turned(TiffTag tag) {
  const size_t size = NumberSize(tag.type);
  for (size_t at = 0; at + size <= tag.value.size() && size > 1; at += size)
    std::reverse(&tag.value[at], &tag.value[at] + size);
  return tag;
}

std::vector<TiffTag> Turned(const std::vector<TiffTag>& tags) {
  std::vector<TiffTag> turned;
  for (const TiffTag& tag : tags) turned.push_back(Turned(tag));
  return turned;
}

// An entry of twelve bytes.
struct TiffEntry {
  uint16_t number;
  std::string bytes;
};

// Appends directories to bytes whose offsets count from their beginning.
class TiffWriter {
 public:
  TiffWriter(std::string* bytes, bool bigEndian) : file(bytes), order(bigEndian) {}

  TiffEntry Pointer(uint16_t number, uint32_t place) const {
    std::string bytes;
    order.Add(&bytes, number, 2);
    order.Add(&bytes, kLong, 2);
    order.Add(&bytes, 1, 4);
    order.Add(&bytes, place, 4);
    return {number, bytes};
  }

  TiffEntry Value(const TiffTag& tag) {
    std::string bytes;
    order.Add(&bytes, tag.number, 2);
    order.Add(&bytes, tag.type, 2);
    order.Add(&bytes, tag.count, 4);
    if (tag.value.size() <= kInPlace) {
      bytes += tag.value;
      bytes.resize(kTiffEntry);
    } else {
      order.Add(&bytes, End(), 4);
      *file += tag.value;
    }
    return {tag.number, bytes};
  }

  void AddPointers(const TiffTags& tags, std::vector<TiffEntry>* to) {
    std::vector<TiffEntry> exif = Values(tags.exif);
    if (!tags.interoperability.empty())
      exif.push_back(
          Pointer(kInteroperabilityPointer, Directory(Values(tags.interoperability), 0)));
    if (!exif.empty()) to->push_back(Pointer(kExifPointer, Directory(exif, 0)));
    if (!tags.gps.empty()) to->push_back(Pointer(kGpsPointer, Directory(Values(tags.gps), 0)));
  }

  // Where it begins.
  uint32_t Directory(std::vector<TiffEntry> entries, uint32_t next) {
    std::stable_sort(entries.begin(), entries.end(),
                     [](const TiffEntry& a, const TiffEntry& b) { return a.number < b.number; });
    const uint32_t start = End();
    order.Add(file, static_cast<uint32_t>(entries.size()), 2);
    for (const TiffEntry& entry : entries) *file += entry.bytes;
    order.Add(file, next, 4);
    return start;
  }

  std::vector<TiffEntry> Values(const std::vector<TiffTag>& tags) {
    std::vector<TiffEntry> entries;
    for (const TiffTag& tag : tags) entries.push_back(Value(tag));
    return entries;
  }

 private:
  // Directories and values begin at even places.
  uint32_t End() {
    if (file->size() % 2 != 0) *file += '\0';
    return static_cast<uint32_t>(file->size());
  }

  std::string* file;
  ByteOrder order;
};

std::optional<bool> IsBigEndian(std::string_view header) {
  using namespace std::string_view_literals;
  if (header.starts_with("MM\0\x2A"sv)) return true;
  if (header.starts_with("II\x2A\0"sv)) return false;
  return std::nullopt;
}

}  // namespace

std::optional<TiffTags> ReadTiffTags(const FileContent& content) {
  const std::string header = content.Beginning(kTiffHeader);
  const std::optional<bool> bigEndian = IsBigEndian(header);
  if (!bigEndian || header.size() < kTiffHeader) return std::nullopt;
  TiffReader reader(content, *bigEndian);
  TiffTags tags;
  tags.bigEndian = *bigEndian;
  tags.image = reader.Directory(ByteOrder(*bigEndian).Get32(header, 4), true);
  tags.exif = reader.Directory(reader.exif, false);
  tags.gps = reader.Directory(reader.gps, false);
  tags.interoperability = reader.Directory(reader.interoperability, false);
  return tags;
}

std::string ExifBlock(const TiffTags& tags) {
  if (tags.Empty()) return {};
  using namespace std::string_literals;
  std::string block = tags.bigEndian ? "MM\0\x2A\0\0\0\0"s : "II\x2A\0\0\0\0\0"s;
  TiffWriter writer(&block, tags.bigEndian);
  std::vector<TiffEntry> entries = writer.Values(tags.image);
  writer.AddPointers(tags, &entries);
  const uint32_t start = writer.Directory(std::move(entries), 0);
  std::string place;
  ByteOrder(tags.bigEndian).Add(&place, start, 4);
  return "Exif\0\0"s + block.replace(4, 4, place);
}

std::string WithTiffTags(std::string file, const TiffTags& tags) {
  const std::optional<bool> bigEndian = IsBigEndian(file);
  constexpr uint64_t kLargest = 0xFFF00000;  // offsets have 32 bits, and the tags need some room
  if (!bigEndian || file.size() > kLargest || tags.Empty()) return file;
  TiffTags own = tags;
  if (own.bigEndian != *bigEndian)
    for (std::vector<TiffTag>* list : {&own.image, &own.exif, &own.gps, &own.interoperability})
      *list = Turned(*list);

  const ByteOrder order(*bigEndian);
  const size_t old = order.Get32(file, 4);
  const size_t count = order.Get16(file, old);
  const size_t end = old + 2 + count * kTiffEntry;
  if (end + 4 > file.size()) return file;
  const uint32_t next = order.Get32(file, end);
  std::vector<TiffEntry> entries;
  for (size_t at = old + 2; at < end; at += kTiffEntry)
    entries.push_back({order.Get16(file, at), file.substr(at, kTiffEntry)});
  const auto has = [&](uint16_t number) {
    return std::any_of(entries.begin(), entries.end(),
                       [&](const TiffEntry& entry) { return entry.number == number; });
  };
  std::erase_if(own.image, [&](const TiffTag& tag) { return has(tag.number); });

  TiffWriter writer(&file, *bigEndian);
  for (TiffEntry& entry : writer.Values(own.image)) entries.push_back(std::move(entry));
  writer.AddPointers(own, &entries);
  const uint32_t start = writer.Directory(std::move(entries), next);
  std::string place;
  order.Add(&place, start, 4);
  return file.replace(4, 4, place);
}

}  // namespace runner
