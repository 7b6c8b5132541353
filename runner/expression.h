// Call expressions, as they are written on the command line:
//
//   statement = expression | name "=" expression | call "=" expression
//   expression = product { ( "+" | "-" ) product }
//   product = term { ( "*" | "/" | "\" | "Mod" ) term }
//   term = { "+" | "-" } primary { "." name [ arguments ] }
//   primary = literal | name [ arguments ] | "(" expression ")"
//   arguments = "(" [ argument { "," argument } ] ")"
//   argument = [ name "=" ] expression
//   literal = 12 | 0.5 | &hFF | &o17 | &b101 | true | false | nil | "text" | &c274C5A
//
// Operators and parentheses stand between and round constants alone, and the parser calculates, so
// that a literal is all that is left of them. Names and keywords are the host language's: ASCII
// letters, digits and underscores, in any case.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/value.h"

namespace runner {

struct Expression;

// `name = value` or just `value` inside parentheses.
struct CallArgument {
  std::string name;  // empty: by position
  std::unique_ptr<Expression> value;
};

// A call or a plain name; what the name stands for is decided when it is evaluated.
struct Call {
  std::unique_ptr<Expression> target;  // before the dot; null: none
  std::string name;
  bool hasParentheses = false;
  std::vector<CallArgument> arguments;
};

struct Expression {
  size_t column = 1;  // of its first character, in characters
  std::variant<host::Literal, Call> content;
};

struct Statement {
  std::string text;  // as typed
  Expression expression;
  std::unique_ptr<Expression> assigned;  // what stands after "="; null: nothing is assigned
};

struct SyntaxError {
  size_t column = 1;    // in characters, from 1; one past the last where the text ends too soon
  std::string message;  // "expected ',' or ')' but found '='"
};

// Never throws but for lack of memory; any bytes may be given.
std::variant<Statement, SyntaxError> ParseStatement(std::string_view text);

// The same for the command line: throws Failure, which quotes the text, a long one round the
// mistake, and names the column.
Statement ParseOrFail(std::string_view text);

}  // namespace runner
