#include "runner/files/iptc.h"

#include <algorithm>
#include <cctype>
#include <charconv>

#include "runner/files/bytes.h"

namespace runner {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr std::string_view kResourceMark = "8BIM";
constexpr uint32_t kIptcResource = 0x0404;
constexpr char kIptcRecord = '\x1C';

// Calls `look` with the number of each resource, the resource as a whole and its data, until that
// says no.
template <class Look>
void ForEachResource(std::string_view block, Look look) {
  if (block.starts_with(kResourcesStart)) block.remove_prefix(kResourcesStart.size());
  // A resource: its signature, number, name, size and data. Name and data take an even number of
  // bytes each.
  for (size_t at = 0; at + 12 <= block.size() && block.substr(at, 4) == kResourceMark;) {
    const uint32_t number = BigEndian16(block, at + 4);
    const size_t name = (Byte(block, at + 6) + 2) / 2 * 2;
    const size_t size = BigEndian32(block, at + 6 + name);
    const size_t start = at + 10 + name;
    if (start > block.size() || size > block.size() - start) return;
    const size_t end = start + (size + 1) / 2 * 2;
    if (!look(number, block.substr(at, end - at), block.substr(start, size))) return;
    at = end;
  }
}

}  // namespace

std::string IptcRecords(std::string_view block) {
  if (block.starts_with(kIptcRecord)) return std::string(block);
  std::string records;
  ForEachResource(block, [&](uint32_t number, std::string_view, std::string_view data) {
    if (number == kIptcResource) records = data;
    return number != kIptcResource;
  });
  return records;
}

std::string ResourcesOfResult(std::string_view block) {
  if (block.starts_with(kIptcRecord)) return IptcResources(block);
  constexpr uint32_t kThumbnail = 0x040C, kOldThumbnail = 0x0409;
  std::string kept;
  ForEachResource(block, [&](uint32_t number, std::string_view resource, std::string_view) {
    if (number == kThumbnail || number == kOldThumbnail) return true;
    kept += resource;
    if (resource.size() % 2 != 0) kept += '\0';  // the last one may lack it
    return true;
  });
  return kept;
}

std::string IptcResources(std::string_view records) {
  std::string block = "8BIM\4\4\0\0"s;
  for (int shift = 24; shift >= 0; shift -= 8) block += static_cast<char>(records.size() >> shift);
  block += records;
  if (records.size() % 2 != 0) block += '\0';
  return block;
}

std::string IptcText(std::string_view block) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  constexpr size_t kLine = 36;
  std::string text = "\niptc\n" + std::to_string(block.size());
  for (size_t i = 0; i < block.size(); ++i) {
    if (i % kLine == 0) text += '\n';
    text += kDigits[Byte(block, i) >> 4];
    text += kDigits[Byte(block, i) & 15];
  }
  return text + '\n';
}

// Behind an empty line, a name and a number of bytes come the bytes.
std::string BytesOfText(std::string_view text) {
  for (int line = 0; line < 3; ++line)
    text.remove_prefix(std::min(text.size(), text.find('\n') + 1));
  std::string bytes;
  while (true) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text[0])) != 0)
      text.remove_prefix(1);
    if (text.size() < 2) return bytes;
    unsigned value = 0;
    const char* end = text.data() + 2;
    if (std::from_chars(text.data(), end, value, 16).ptr != end) return {};
    bytes += static_cast<char>(value);
    text.remove_prefix(2);
  }
}

}  // namespace runner
