#include "runner/work/json_text.h"

#include <charconv>
#include <nlohmann/json.hpp>

#include "runner/names.h"

namespace runner {
namespace {

bool IsUtf8(std::string_view bytes) {
  for (size_t i = 0; i < bytes.size();) {
    const size_t length = CharacterLength(bytes.substr(i));
    if (length == 1 && static_cast<unsigned char>(bytes[i]) >= 0x80) return false;
    i += length;
  }
  return true;
}

}  // namespace

Json TextAsJson(std::string_view bytes) {
  if (IsUtf8(bytes)) return bytes;
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string digits;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    digits.append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 15]);
  }
  Json json = Json::object();
  json["bytes"] = digits;
  return json;
}

std::optional<std::string> BytesIn(const Json& json) {
  if (json.is_string()) return json.get<std::string>();
  if (!json.is_object() || !json.contains("bytes") || !json["bytes"].is_string()) return {};
  const auto digits = json["bytes"].get<std::string>();
  if (digits.size() % 2 != 0) return {};
  std::string bytes;
  for (size_t i = 0; i < digits.size(); i += 2) {
    unsigned value = 0;
    const char* const end = digits.data() + i + 2;
    const auto [stopped, problem] = std::from_chars(digits.data() + i, end, value, 16);
    if (problem != std::errc() || stopped != end) return {};
    bytes += static_cast<char>(value);
  }
  return bytes;
}

std::string Compact(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace runner
