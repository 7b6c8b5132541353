#include <charconv>
#include <limits>

#include "host/declaration.h"
#include "host/error.h"
#include "host/value.h"

namespace host {
namespace {

std::string_view Trim(std::string_view text) {
  const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

[[noreturn]] void Fail(std::string_view text, const char* why) {
  throw Error("\"" + std::string(text) + "\" " + why);
}

Literal ParseColour(std::string_view text) {
  const std::string_view digits = text.substr(2);
  Colour colour;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), colour.rgb, 16);
  if (error != std::errc() || end != digits.data() + digits.size() || digits.size() != 6) {
    Fail(text, "isn't a colour: six hexadecimal digits follow &c");
  }
  return colour;
}

Literal ParseText(std::string_view text) {
  std::string content;
  const std::string_view inner = text.substr(1, text.size() - 1);
  for (size_t i = 0; i < inner.size(); ++i) {
    if (inner[i] != '"') {
      content += inner[i];
    } else if (i + 1 < inner.size() && inner[i + 1] == '"') {
      content += inner[i++];
    } else if (i + 1 == inner.size()) {
      return content;
    } else {
      Fail(text, "has something behind its closing quote");
    }
  }
  Fail(text, "lacks its closing quote");
}

Literal ParseNumber(std::string_view text) {
  std::string_view digits = text;
  if (digits.starts_with('+') && !digits.starts_with("+-")) digits.remove_prefix(1);
  const char* end = digits.data() + digits.size();
  int64_t whole = 0;
  const auto [wholeEnd, wholeError] = std::from_chars(digits.data(), end, whole);
  if (wholeError != std::errc::invalid_argument && wholeEnd == end) {
    if (wholeError != std::errc() || whole < std::numeric_limits<int32_t>::min() ||
        whole > std::numeric_limits<uint32_t>::max()) {
      Fail(text, "is too large for a whole number");
    }
    return whole;
  }
  // from_chars also reads "inf" and "nan", which the language doesn't.
  const bool looksRight = digits.find_first_not_of("0123456789.eE+-") == std::string_view::npos;
  double number = 0;
  const auto [doubleEnd, doubleError] = std::from_chars(digits.data(), end, number);
  if (!looksRight || doubleError == std::errc::invalid_argument || doubleEnd != end) {
    Fail(text, "isn't a number, true, false, nil, a colour like &c88B5C4 or a \"text\"");
  }
  if (doubleError != std::errc()) Fail(text, "is a number beyond what a double holds");
  return number;
}

}  // namespace

Literal ParseLiteral(std::string_view whole) {
  const std::string_view text = Trim(whole);
  if (text.empty()) throw Error("a value is missing");
  if (SameName(text, "nil")) return Nil{};
  if (SameName(text, "true")) return true;
  if (SameName(text, "false")) return false;
  if (text.size() >= 2 && SameName(text.substr(0, 2), "&c")) return ParseColour(text);
  if (text.front() == '"') return ParseText(text);
  return ParseNumber(text);
}

}  // namespace host
