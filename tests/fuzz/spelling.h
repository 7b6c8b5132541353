// Constants as source code spells them, so that each reads back as itself.
#pragma once

#include <array>
#include <charconv>
#include <cstdio>
#include <string>

#include "host/value.h"

namespace fuzz {

inline std::string SpeltConstant(const host::Literal& literal) {
  if (std::holds_alternative<host::Nil>(literal)) return "nil";
  if (const auto* whole = std::get_if<int64_t>(&literal)) return std::to_string(*whole);
  if (const auto* truth = std::get_if<bool>(&literal)) return *truth ? "true" : "false";
  std::array<char, 40> digits{};
  if (const auto* real = std::get_if<double>(&literal)) {
    std::to_chars(digits.begin(), digits.end() - 1, *real, std::chars_format::scientific);
    return digits.data();
  }
  if (const auto* colour = std::get_if<host::Colour>(&literal)) {
    std::snprintf(digits.data(), digits.size(), "&c%06X", colour->rgb);
    return digits.data();
  }
  std::string text = "\"";
  for (const char c : std::get<std::string>(literal)) {
    text += c;
    if (c == '"') text += c;
  }
  return text + '"';
}

}  // namespace fuzz
