// Strings: bytes with the name of their encoding.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/object.h"

namespace host {

class String final : public Object {
 public:
  // As stored; may hold zeros.
  const std::string& Bytes() const { return bytes; }
  uint32_t Encoding() const { return encoding; }
  std::string Describe() const override;

  // Made by Host::NewString.
  String(std::string stringBytes, uint32_t stringEncoding)
      : Object(Kind::kString), bytes(std::move(stringBytes)), encoding(stringEncoding) {}

  // Names another encoding; the bytes stay.
  void SetEncoding(uint32_t value) { encoding = value; }

 private:
  ~String() override = default;
  void Dispose() override { bytes = {}; }

  std::string bytes;
  uint32_t encoding;
};

// The bytes of a text in another encoding. Known are 0x600 US-ASCII, 0x08000100 UTF-8, 0 Mac Roman,
// 0x100 and 0x10000100 UTF-16 (this machine's order and big-endian), 0x14000100 UTF-16
// little-endian, 0x0C000100 UTF-32, 0x201 ISO Latin 1 and 0x500 Windows Latin 1. From or to 0xFFFF
// the bytes stay as they are. Nothing when an encoding isn't known, the bytes aren't valid in
// theirs, or a character has no place in the other.
std::optional<std::string> ConvertEncoding(std::string_view bytes, uint32_t from, uint32_t to);

}  // namespace host
