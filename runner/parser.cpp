#include <utility>

#include "runner/expression.h"
#include "runner/failure.h"
#include "runner/lexer.h"
#include "runner/names.h"

namespace runner {
namespace {

// Deeper nesting than anybody types; it bounds the recursion.
constexpr int kMaximumDepth = 32;

// Recursive descent, one token ahead. After the first error every step only returns.
class Parser {
 public:
  explicit Parser(std::string_view text) : lexer(text), token(lexer.Next()) {}

  std::variant<Statement, SyntaxError> Parse(std::string_view text) {
    Statement statement;
    statement.text = text;
    statement.expression = ParseExpression(0);
    if (token.Is('=')) {
      const Call* call = std::get_if<Call>(&statement.expression.content);
      if (call == nullptr) Fail(statement.expression.column, "nothing can be assigned to this");
      Advance();
      statement.assigned = std::make_unique<Expression>(ParseExpression(0));
    }
    if (token.kind != Token::Kind::kEnd) Expected("the end of the expression");
    if (failed) return std::move(error);
    return statement;
  }

 private:
  void Advance() {
    if (!failed) token = lexer.Next();
  }

  void Fail(size_t column, std::string message) {
    if (!failed) error = {column, std::move(message)};
    failed = true;
  }

  void Expected(const std::string& what) {
    switch (token.kind) {
      case Token::Kind::kError:
        return Fail(token.column, token.text);
      case Token::Kind::kEnd:
        return Fail(token.column, "expected " + what + " but it ends here");
      case Token::Kind::kLiteral:
        return Fail(token.column, "expected " + what + " but found a constant");
      default:
        return Fail(token.column, "expected " + what + " but found '" + token.text + "'");
    }
  }

  Expression ParseExpression(int depth) {
    Expression expression;
    expression.column = token.column;
    if (depth > kMaximumDepth) Fail(token.column, "the expression is nested too deeply");
    if (failed) return expression;
    if (token.kind == Token::Kind::kLiteral) {
      expression.content = std::move(token.literal);
      Advance();
    } else if (token.kind == Token::Kind::kName) {
      expression.content = ParseCall(nullptr, depth);
    } else {
      Expected("a call or a value");
    }
    // Each dot wraps what stands before it, so a chain is as deep as it is long.
    for (int links = depth; !failed && token.Is('.'); ++links) {
      if (links > kMaximumDepth) Fail(token.column, "the expression is nested too deeply");
      Advance();
      if (token.kind != Token::Kind::kName) Expected("a method's name after the dot");
      if (failed) break;
      Expression link;
      link.column = expression.column;
      link.content = ParseCall(std::make_unique<Expression>(std::move(expression)), depth);
      expression = std::move(link);
    }
    return expression;
  }

  Call ParseCall(std::unique_ptr<Expression> target, int depth) {
    Call call;
    call.target = std::move(target);
    call.name = std::move(token.text);
    Advance();
    if (!token.Is('(')) return call;
    call.hasParentheses = true;
    Advance();
    if (token.Is(')')) {
      Advance();
      return call;
    }
    while (!failed) {
      call.arguments.push_back(ParseArgument(depth));
      if (failed) break;
      if (token.Is(')')) {
        Advance();
        break;
      }
      if (!token.Is(',')) Expected("',' or ')'");
      Advance();
    }
    return call;
  }

  CallArgument ParseArgument(int depth) {
    CallArgument argument;
    Expression value = ParseExpression(depth + 1);
    if (token.Is('=')) {
      Call* call = std::get_if<Call>(&value.content);
      if (call == nullptr || call->hasParentheses || call->target != nullptr)
        Expected("',' or ')'");
      else
        argument.name = std::move(call->name);
      Advance();
      value = ParseExpression(depth + 1);
    }
    argument.value = std::make_unique<Expression>(std::move(value));
    return argument;
  }

  Lexer lexer;
  Token token;
  bool failed = false;
  SyntaxError error;
};

}  // namespace

std::variant<Statement, SyntaxError> ParseStatement(std::string_view text) {
  return Parser(text).Parse(text);
}

Statement ParseOrFail(std::string_view text) {
  auto parsed = ParseStatement(text);
  if (const auto* error = std::get_if<SyntaxError>(&parsed))
    throw Failure("in " + Quoted(text) + ", column " + std::to_string(error->column) + ": " +
                  error->message);
  return std::get<Statement>(std::move(parsed));
}

}  // namespace runner
