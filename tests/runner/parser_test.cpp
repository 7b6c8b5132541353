#include <gtest/gtest.h>

#include "runner/expression.h"
#include "runner/failure.h"

namespace runner {
namespace {

Statement Parsed(std::string_view text) {
  auto parsed = ParseStatement(text);
  if (const auto* error = std::get_if<SyntaxError>(&parsed)) {
    ADD_FAILURE() << text << ": column " << error->column << ": " << error->message;
    return {};
  }
  return std::get<Statement>(std::move(parsed));
}

SyntaxError SyntaxErrorOf(std::string_view text) {
  auto parsed = ParseStatement(text);
  if (const auto* error = std::get_if<SyntaxError>(&parsed)) return *error;
  ADD_FAILURE() << text << " was accepted";
  return {};
}

const Call& CallIn(const Expression& expression) { return std::get<Call>(expression.content); }

// The one argument of f(...), which must be a constant.
template <class T>
T Constant(const std::string& text) {
  const Statement statement = Parsed("f(" + text + ")");
  const auto* call = std::get_if<Call>(&statement.expression.content);
  if (call == nullptr || call->arguments.size() != 1) {
    ADD_FAILURE() << text;
    return {};
  }
  const auto* literal = std::get_if<host::Literal>(&call->arguments[0].value->content);
  const T* value = literal == nullptr ? nullptr : std::get_if<T>(literal);
  if (value == nullptr) {
    ADD_FAILURE() << text << " has another type";
    return {};
  }
  return *value;
}

TEST(Parser, ReadsConstantsOfEveryType) {
  EXPECT_EQ(Constant<int64_t>("12"), 12);
  EXPECT_EQ(Constant<int64_t>("+7"), 7);
  EXPECT_EQ(Constant<int64_t>("-2147483648"), INT32_MIN);
  EXPECT_EQ(Constant<int64_t>("4294967295"), UINT32_MAX);
  EXPECT_EQ(Constant<double>("-0.5"), -0.5);
  EXPECT_EQ(Constant<double>(".25"), 0.25);
  EXPECT_EQ(Constant<double>("1e3"), 1000.0);
  EXPECT_EQ(Constant<double>("2.5E-1"), 0.25);
  EXPECT_TRUE(Constant<bool>("TRUE"));
  EXPECT_FALSE(Constant<bool>("false"));
  EXPECT_EQ(Constant<host::Nil>("Nil"), host::Nil{});
  EXPECT_EQ(Constant<host::Colour>("&c274C5A").rgb, 0x274C5AU);
  EXPECT_EQ(Constant<host::Colour>("&CfFe4b0").rgb, 0xFFE4B0U);
  EXPECT_EQ(Constant<std::string>("\"two \"\"words\"\"\""), "two \"words\"");
  EXPECT_EQ(Constant<std::string>("\"\""), "");
}

TEST(Parser, ReadsArgumentsByPositionAndByName) {
  const Statement statement = Parsed(" RenderSamplesKRT( block , 10, Bits = 15,AutoScale=true ) ");
  const Call& call = CallIn(statement.expression);
  EXPECT_EQ(call.name, "RenderSamplesKRT");
  EXPECT_TRUE(call.hasParentheses);
  EXPECT_EQ(statement.expression.column, 2U);
  ASSERT_EQ(call.arguments.size(), 4U);
  EXPECT_EQ(CallIn(*call.arguments[0].value).name, "block");
  EXPECT_FALSE(CallIn(*call.arguments[0].value).hasParentheses);
  EXPECT_EQ(call.arguments[1].name, "");
  EXPECT_EQ(call.arguments[2].name, "Bits");
  EXPECT_EQ(call.arguments[3].name, "AutoScale");
  EXPECT_EQ(std::get<host::Literal>(call.arguments[3].value->content), host::Literal(true));
}

TEST(Parser, KnowsACallWithoutParenthesesFromOneWithNoArguments) {
  EXPECT_FALSE(CallIn(Parsed("InvertKRT").expression).hasParentheses);
  const Statement empty = Parsed("InvertKRT( )");
  EXPECT_TRUE(CallIn(empty.expression).hasParentheses);
  EXPECT_TRUE(CallIn(empty.expression).arguments.empty());
}

TEST(Parser, ReadsCallsInsideCalls) {
  const Statement statement = Parsed("MergePictureKRT(self, picture(\"a.png\").InvertKRT)");
  const Call& call = CallIn(statement.expression);
  ASSERT_EQ(call.arguments.size(), 2U);
  const Call& invert = CallIn(*call.arguments[1].value);
  EXPECT_EQ(invert.name, "InvertKRT");
  ASSERT_NE(invert.target, nullptr);
  EXPECT_EQ(CallIn(*invert.target).name, "picture");
  EXPECT_EQ(call.arguments[1].value->column, 23U);
}

TEST(Parser, ReadsAssignments) {
  const Statement pair = Parsed("EmbeddedMaskKRT(false) = picture(\"mask.png\")");
  EXPECT_EQ(CallIn(pair.expression).name, "EmbeddedMaskKRT");
  ASSERT_NE(pair.assigned, nullptr);
  EXPECT_EQ(CallIn(*pair.assigned).name, "picture");
  const Statement name = Parsed("mask=InvertKRT");
  EXPECT_EQ(CallIn(name.expression).name, "mask");
  EXPECT_EQ(CallIn(*name.assigned).name, "InvertKRT");
  EXPECT_EQ(name.text, "mask=InvertKRT");
}

TEST(Parser, PointsAtTheColumnThatIsWrong) {
  const struct {
    const char* text;
    size_t column;
    const char* message;
  } cases[] = {
      {"", 1, "expected a call or a value but it ends here"},
      {"InvertKRT(10, 10", 17, "expected ',' or ')' but it ends here"},
      {"InvertKRT(10 10)", 14, "expected ',' or ')' but found a constant"},
      {"InvertKRT(10,)", 14, "expected a call or a value but found ')'"},
      {"InvertKRT)", 10, "expected the end of the expression but found ')'"},
      {"InvertKRT InvertKRT", 11, "expected the end of the expression but found 'InvertKRT'"},
      {"f(\"text)", 3, "the text that begins here has no closing quotation mark"},
      {"f(&c12345)", 3, "a colour reads &cRRGGBB"},
      {"f(&c1234567)", 3, "a colour reads &cRRGGBB"},
      {"f(&cGG0000)", 3, "a colour reads &cRRGGBB"},
      {"f(&h10)", 3, "a colour reads &cRRGGBB"},
      {"f(4294967296)", 3, "whole numbers reach from -2147483648 to 4294967295"},
      {"f(-2147483649)", 3, "whole numbers reach from -2147483648 to 4294967295"},
      {"f(99999999999999999999)", 3, "whole numbers reach from -2147483648 to 4294967295"},
      {"f(1e999)", 3, "this number is too large or too small"},
      {"f(12abc)", 3, "this number isn't understood"},
      {"f(1.2.3)", 3, "this number isn't understood"},
      {"f(-)", 3, "expected a number after the sign"},
      {"f(1, #)", 6, "'#' has no meaning here"},
      {"f(a = b = c)", 9, "expected ',' or ')' but found '='"},
      {"f(g(1) = 2)", 8, "expected ',' or ')' but found '='"},
      {"12 = f", 1, "nothing can be assigned to this"},
      {"self.", 6, "expected a method's name after the dot but it ends here"},
      {"a = b = c", 7, "expected the end of the expression but found '='"},
  };
  for (const auto& [text, column, message] : cases) {
    const SyntaxError error = SyntaxErrorOf(text);
    EXPECT_EQ(error.column, column) << text;
    EXPECT_EQ(error.message, message) << text;
  }
}

TEST(Parser, BoundsNesting) {
  std::string deep, chain = "self";
  for (int i = 0; i < 100'000; ++i) {
    deep += "f(";
    chain += ".f";
  }
  EXPECT_EQ(SyntaxErrorOf(deep).message, "the expression is nested too deeply");
  EXPECT_EQ(SyntaxErrorOf(chain).message, "the expression is nested too deeply");
  Parsed("f(f(f(f(f(f(f(f(self.f.f.f.f.f))))))))");
}

TEST(Parser, TakesAnyBytes) {
  // Every pair of bytes, and every prefix of a text with all there is.
  for (int first = 0; first < 256; ++first)
    for (int second = 0; second < 256; ++second) {
      const char text[2] = {static_cast<char>(first), static_cast<char>(second)};
      const auto parsed = ParseStatement({text, 2});
      if (const auto* error = std::get_if<SyntaxError>(&parsed)) {
        EXPECT_GE(error->column, 1U);
        EXPECT_LE(error->column, 3U);
      }
    }
  const std::string whole = "a.b(c = &c00FF00, \"d\"\"\", -1.5e+3, nil).e() = true";
  for (size_t length = 0; length <= whole.size(); ++length) {
    const auto parsed = ParseStatement(std::string_view(whole).substr(0, length));
    if (const auto* error = std::get_if<SyntaxError>(&parsed)) {
      EXPECT_LE(error->column, length + 1);
    }
  }
}

TEST(Parser, FailsInOneLineThatQuotesTheText) {
  try {
    ParseOrFail("InvertKRT(10,\n10");
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_STREQ(failure.what(),
                 "in 'InvertKRT(10,\\n10', column 17: expected ',' or ')' but it ends here");
  }
}

}  // namespace
}  // namespace runner
