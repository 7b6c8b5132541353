#include "runner/lexer.h"

#include <charconv>
#include <cmath>
#include <cstdint>

#include "host/declaration.h"
#include "runner/names.h"

namespace runner {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

}  // namespace

Token Lexer::Next() {
  while (IsSpace(At(position))) ++position;
  if (position >= text.size()) return {Token::Kind::kEnd, ColumnOf(text.size()), "", {}};
  const char c = text[position];
  if (IsLetter(c)) return Name();
  if (IsDigit(c) || (c == '.' && IsDigit(At(position + 1)))) return Number();
  if (c == '"') return Text();
  if (c == '&') return Ampersand();
  if (c != '\0' && std::string_view("(),=.+-*/\\").find(c) != std::string_view::npos)
    return {Token::Kind::kMark, ColumnOf(position++), std::string(1, c), {}};
  const std::string_view rest = text.substr(position);
  return Error(position, Quoted(rest.substr(0, CharacterLength(rest))) + " has no meaning here");
}

Token Lexer::Name() {
  const size_t start = position;
  while (IsLetter(At(position)) || IsDigit(At(position))) ++position;
  Token token{
      Token::Kind::kName, ColumnOf(start), std::string(text.substr(start, position - start)), {}};
  const bool isTrue = host::SameName(token.text, "true");
  if (isTrue || host::SameName(token.text, "false")) {
    token.kind = Token::Kind::kLiteral;
    token.literal = isTrue;
  } else if (host::SameName(token.text, "nil")) {
    token.kind = Token::Kind::kLiteral;
    token.literal = host::Nil{};
  }
  return token;
}

Token Lexer::Number() {
  const size_t start = position;
  bool whole = true;
  while (IsDigit(At(position))) ++position;
  if (At(position) == '.' && IsDigit(At(position + 1))) {
    whole = false;
    ++position;
    while (IsDigit(At(position))) ++position;
  }
  if (At(position) == 'e' || At(position) == 'E') {
    size_t exponent = position + 1;
    if (At(exponent) == '-' || At(exponent) == '+') ++exponent;
    if (IsDigit(At(exponent))) {
      whole = false;
      position = exponent;
      while (IsDigit(At(position))) ++position;
    }
  }
  if (IsLetter(At(position)) || At(position) == '.')
    return Error(start, "this number isn't understood");

  Token token{Token::Kind::kLiteral, ColumnOf(start), "", {}};
  const char* first = text.data() + start;
  const char* last = text.data() + position;
  if (whole) {
    int64_t value = 0;
    if (std::from_chars(first, last, value).ec != std::errc()) return Error(start, kWholeReach);
    token.literal = value;
  } else {
    double value = 0;
    if (std::from_chars(first, last, value).ec != std::errc() || !std::isfinite(value))
      return Error(start, "this number is too large or too small");
    token.literal = value;
  }
  return token;
}

Token Lexer::Ampersand() {
  switch (At(position + 1) | 0x20) {
    case 'c':
      return Colour();
    case 'h':
      return Radix(16, "a hexadecimal number reads &hFF");
    case 'o':
      return Radix(8, "an octal number reads &o17");
    case 'b':
      return Radix(2, "a binary number reads &b101");
    default:
      return Error(position,
                   "'&' begins a colour, &cRRGGBB, or a number, like &hFF, &o17 and &b101");
  }
}

Token Lexer::Radix(int base, const char* example) {
  const size_t start = position;
  for (position += 2; IsDigit(At(position)) || IsLetter(At(position));) ++position;
  const char* first = text.data() + start + 2;
  const char* last = text.data() + position;
  uint32_t value = 0;
  const auto [end, error] = std::from_chars(first, last, value, base);
  if (error == std::errc::invalid_argument || end != last) return Error(start, example);
  if (error != std::errc()) return Error(start, kWholeReach);
  return {Token::Kind::kLiteral, ColumnOf(start), "", static_cast<int64_t>(value)};
}

Token Lexer::Colour() {
  const size_t start = position;
  uint32_t rgb = 0;
  size_t digits = 0;
  for (position += 2; IsDigit(At(position)) || IsLetter(At(position)); ++position, ++digits) {
    const char c = static_cast<char>(At(position) | 0x20);  // digits have that bit already
    if (!IsDigit(c) && (c < 'a' || c > 'f')) return Error(start, "a colour reads &cRRGGBB");
    rgb = rgb << 4 | static_cast<uint32_t>(IsDigit(c) ? c - '0' : c - 'a' + 10);
  }
  if (digits != 6) return Error(start, "a colour reads &cRRGGBB");
  return {Token::Kind::kLiteral, ColumnOf(start), "", host::Colour{rgb}};
}

Token Lexer::Text() {
  const size_t start = position++;
  std::string content;
  for (; position < text.size(); ++position) {
    if (text[position] == '"') {
      if (At(position + 1) != '"') {
        ++position;
        return {Token::Kind::kLiteral, ColumnOf(start), "", std::move(content)};
      }
      ++position;  // a doubled quote stands for one
    }
    content += text[position];
  }
  return Error(start, "the text that begins here has no closing quotation mark");
}

Token Lexer::Error(size_t at, std::string message) {
  position = at;
  return {Token::Kind::kError, ColumnOf(at), std::move(message), {}};
}

size_t Lexer::ColumnOf(size_t byte) {
  for (; counted < byte; ++column) counted += CharacterLength(text.substr(counted));
  return column;
}

}  // namespace runner
