// Call expressions. What is understood must be the same when it is spelt out and read again.
#include "runner/expression.h"
#include "runner/lexer.h"
#include "tests/fuzz/spelling.h"
#include "tests/fuzz/target.h"

namespace fuzz {
namespace {

std::string Spelt(const runner::Expression& expression) {
  if (const auto* literal = std::get_if<host::Literal>(&expression.content))
    return SpeltConstant(*literal);
  const auto& call = std::get<runner::Call>(expression.content);
  std::string text;
  if (call.target != nullptr) text = Spelt(*call.target) + " .";  // a number would take the dot
  text += call.name;
  if (!call.hasParentheses) return text;
  text += '(';
  for (const runner::CallArgument& argument : call.arguments) {
    if (text.back() != '(') text += ", ";
    if (!argument.name.empty()) text += argument.name + " = ";
    text += Spelt(*argument.value);
  }
  return text + ')';
}

std::string Spelt(const runner::Statement& statement) {
  std::string text = Spelt(statement.expression);
  if (statement.assigned != nullptr) text += " = " + Spelt(*statement.assigned);
  return text;
}

void CheckTokens(std::string_view text) {
  runner::Lexer lexer(text);
  size_t column = 0;
  for (size_t count = 0;; ++count) {
    Require(count <= text.size(), "more words than characters");
    const runner::Token token = lexer.Next();
    Require(token.column >= column && token.column <= text.size() + 1, "a word stands nowhere");
    column = token.column;
    if (token.kind == runner::Token::Kind::kEnd || token.kind == runner::Token::Kind::kError) {
      Require(lexer.Next().kind == token.kind, "something follows the end");
      return;
    }
  }
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace fuzz;
  const std::string_view text = TextOf(data, size);
  CheckTokens(text);
  const auto parsed = runner::ParseStatement(text);
  if (const auto* error = std::get_if<runner::SyntaxError>(&parsed)) {
    Require(error->column >= 1 && error->column <= size + 1, "an error that stands nowhere");
    Require(!error->message.empty(), "an error without a message");
    return 0;
  }
  const std::string spelt = Spelt(std::get<runner::Statement>(parsed));
  const auto again = runner::ParseStatement(spelt);
  if (const auto* error = std::get_if<runner::SyntaxError>(&again)) {
    Require(false, spelt + ": " + error->message);
  }
  Require(Spelt(std::get<runner::Statement>(again)) == spelt, "another meaning: " + spelt);
  return 0;
}
