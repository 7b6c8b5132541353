// The words of a call expression.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>

#include "host/value.h"

namespace runner {

// What a call can take; the message for what is beyond.
inline constexpr const char* kWholeReach = "whole numbers reach from -2147483648 to 4294967295";

struct Token {
  enum class Kind { kName, kLiteral, kMark, kEnd, kError };
  Kind kind = Kind::kEnd;
  size_t column = 1;      // in characters, from 1
  std::string text;       // the name, the mark, or for kError what is wrong
  host::Literal literal;  // kLiteral

  bool Is(char mark) const { return kind == Kind::kMark && text[0] == mark; }
};

// Gives one token after the other; after kEnd or kError the same one for ever.
class Lexer {
 public:
  explicit Lexer(std::string_view source) : text(source) {}
  Token Next();

 private:
  Token Name();
  Token Number();
  Token Ampersand();
  Token Colour();
  Token Radix(int base, const char* example);
  Token Text();
  Token Error(size_t at, std::string message);
  // The column of a byte that no later call may go back from.
  size_t ColumnOf(size_t byte);
  char At(size_t index) const { return index < text.size() ? text[index] : '\0'; }

  std::string_view text;
  size_t position = 0;
  size_t counted = 0;  // bytes, whose characters `column` counts
  size_t column = 1;
};

}  // namespace runner
