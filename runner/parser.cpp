#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <utility>

#include "host/declaration.h"
#include "runner/arithmetic.h"
#include "runner/expression.h"
#include "runner/failure.h"
#include "runner/lexer.h"
#include "runner/names.h"

namespace runner {
namespace {

// Deeper nesting than anybody types; it bounds the recursion.
constexpr int kMaximumDepth = 32;

// What binds less comes first. Mod is '%' here.
constexpr std::array<std::string_view, 2> kOperators = {"+-", "*/\\%"};

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
    Expression expression = ParseNested(depth);
    CheckReach(expression);
    return expression;
  }

  Expression ParseNested(int depth) {
    if (depth > kMaximumDepth) Fail(token.column, "the expression is nested too deeply");
    return failed ? Expression() : ParseOperations(depth, 0);
  }

  // The operator that is the next token; 0: none.
  char Operation() const {
    if (token.kind == Token::Kind::kName) return host::SameName(token.text, "Mod") ? '%' : '\0';
    return token.kind == Token::Kind::kMark ? token.text[0] : '\0';
  }

  // What the operators from `level` on join, from the left to the right.
  Expression ParseOperations(int depth, size_t level) {
    if (level == kOperators.size()) return ParseTerm(depth);
    Expression left = ParseOperations(depth, level + 1);
    while (!failed) {
      const char operation = Operation();
      if (operation == '\0' || kOperators[level].find(operation) == std::string_view::npos) break;
      const size_t column = token.column;
      CheckNumber(left);
      Advance();
      const Expression right = ParseOperations(depth, level + 1);
      CheckNumber(right);
      if (!failed) left.content = Result(left.content, operation, right.content, column);
    }
    return left;
  }

  using Content = decltype(Expression::content);

  // Of two constants that are numbers.
  host::Literal Result(const Content& left, char operation, const Content& right, size_t column) {
    Calculated result =
        Calculate(std::get<host::Literal>(left), operation, std::get<host::Literal>(right));
    if (result.mistake != nullptr) Fail(column, result.mistake);
    return std::move(result.value);
  }

  void CheckNumber(const Expression& expression) {
    if (!CheckConstant(expression)) return;
    if (!IsNumber(std::get<host::Literal>(expression.content)))
      Fail(expression.column, "only numbers can be calculated with");
  }

  bool CheckConstant(const Expression& expression) {
    const Call* call = std::get_if<Call>(&expression.content);
    if (call != nullptr)
      Fail(expression.column,
           "only constants can be calculated with, and '" + call->name + "' is a name");
    return !failed;
  }

  // Arithmetic has 64 bits, what it comes to has those of an integer or UInt32.
  void CheckReach(const Expression& expression) {
    const auto* literal = std::get_if<host::Literal>(&expression.content);
    const auto* whole = literal == nullptr ? nullptr : std::get_if<int64_t>(literal);
    if (whole != nullptr && (*whole < INT32_MIN || *whole > UINT32_MAX))
      Fail(expression.column, kWholeReach);
  }

  // Signs stand in front of numbers; they aren't nested, however many there are.
  Expression ParseSigned(int depth) {
    const size_t column = token.column;
    bool hasSign = false;
    bool negative = false;
    for (; !failed && (token.Is('-') || token.Is('+')); Advance()) {
      hasSign = true;
      if (token.Is('-')) negative = !negative;
    }
    Expression expression =
        ParsePrimary(depth, hasSign ? "a number after the sign" : "a call or a value");
    if (hasSign) CheckNumber(expression);
    expression.column = column;
    if (negative && !failed)
      expression.content = Result(host::Literal(int64_t{-1}), '*', expression.content, column);
    return expression;
  }

  Expression ParsePrimary(int depth, const char* what) {
    Expression expression;
    expression.column = token.column;
    if (token.kind == Token::Kind::kLiteral) {
      expression.content = std::move(token.literal);
      Advance();
    } else if (token.kind == Token::Kind::kName) {
      expression.content = ParseCall(nullptr, depth);
    } else if (token.Is('(')) {
      Advance();
      Expression inner = ParseNested(depth + 1);
      if (CheckConstant(inner) && !token.Is(')')) Expected("')'");
      Advance();
      expression.content = std::move(inner.content);
    } else {
      Expected(what);
    }
    return expression;
  }

  Expression ParseTerm(int depth) {
    Expression expression = ParseSigned(depth);
    if (token.Is('.')) CheckReach(expression);
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
    std::set<std::string> names;
    while (!failed) {
      const size_t column = token.column;
      CallArgument argument = ParseArgument(depth);
      if (!argument.name.empty() && !names.insert(LowerCase(argument.name)).second)
        Fail(column, argument.name + " is given twice");
      call.arguments.push_back(std::move(argument));
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

// The text where it is short, otherwise what stands round a column of it.
std::string PartRound(std::string_view text, size_t column) {
  constexpr size_t kLongest = 60;
  std::vector<size_t> starts;  // of the characters
  for (size_t at = 0; at < text.size(); at += CharacterLength(text.substr(at)))
    starts.push_back(at);
  if (starts.size() <= kLongest) return std::string(text);
  const size_t last = starts.size() - kLongest;
  const size_t first = std::min(column - std::min(column, kLongest / 2), last);
  starts.push_back(text.size());
  const std::string part(text.substr(starts[first], starts[first + kLongest] - starts[first]));
  return (first > 0 ? "..." : "") + part + (first < last ? "..." : "");
}

}  // namespace

std::variant<Statement, SyntaxError> ParseStatement(std::string_view text) {
  return Parser(text).Parse(text);
}

Statement ParseOrFail(std::string_view text) {
  auto parsed = ParseStatement(text);
  if (const auto* error = std::get_if<SyntaxError>(&parsed))
    throw Failure("in " + Quoted(PartRound(text, error->column)) + ", column " +
                  std::to_string(error->column) + ": " + error->message);
  return std::get<Statement>(std::move(parsed));
}

}  // namespace runner
