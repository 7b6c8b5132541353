// Numbers in the headers of files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace runner {

// Bytes behind the end count as 0.
inline uint32_t Byte(std::string_view bytes, size_t at) {
  return at < bytes.size() ? static_cast<uint8_t>(bytes[at]) : 0;
}
inline uint32_t BigEndian16(std::string_view bytes, size_t at) {
  return Byte(bytes, at) << 8 | Byte(bytes, at + 1);
}
inline uint32_t BigEndian32(std::string_view bytes, size_t at) {
  return BigEndian16(bytes, at) << 16 | BigEndian16(bytes, at + 2);
}
inline uint32_t LittleEndian32(std::string_view bytes, size_t at) {
  return Byte(bytes, at) | Byte(bytes, at + 1) << 8 | Byte(bytes, at + 2) << 16 |
         Byte(bytes, at + 3) << 24;
}

}  // namespace runner
