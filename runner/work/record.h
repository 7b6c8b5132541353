// Numbers and texts one after the other, between processes of one program and in its temporary
// files.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace runner {

inline void PutNumber(std::string* record, uint64_t number) {
  record->append(reinterpret_cast<const char*>(&number), sizeof number);
}

inline void PutText(std::string* record, std::string_view text) {
  PutNumber(record, text.size());
  record->append(text);
}

// Each takes from the front what was put there.
inline uint64_t TakeNumber(std::string_view* record) {
  uint64_t number = 0;
  std::memcpy(&number, record->data(), sizeof number);
  record->remove_prefix(sizeof number);
  return number;
}

inline std::string TakeText(std::string_view* record) {
  const uint64_t size = TakeNumber(record);
  std::string text(record->substr(0, size));
  record->remove_prefix(size);
  return text;
}

}  // namespace runner
