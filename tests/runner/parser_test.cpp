#include <gtest/gtest.h>

#include <cmath>

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

TEST(Parser, ReadsNumbersOfOtherBases) {
  EXPECT_EQ(Constant<int64_t>("&hFF"), 255);
  EXPECT_EQ(Constant<int64_t>("&HdeadBEEF"), 0xDEADBEEF);
  EXPECT_EQ(Constant<int64_t>("&h0000000000001"), 1);
  EXPECT_EQ(Constant<int64_t>("&hFFFFFFFF"), UINT32_MAX);
  EXPECT_EQ(Constant<int64_t>("&o17"), 15);
  EXPECT_EQ(Constant<int64_t>("&O37777777777"), UINT32_MAX);
  EXPECT_EQ(Constant<int64_t>("&b101"), 5);
  EXPECT_EQ(Constant<int64_t>("&B11111111111111111111111111111111"), UINT32_MAX);
  EXPECT_EQ(Constant<int64_t>("-&h10"), -16);
  EXPECT_EQ(Constant<int64_t>("&hA+&b1"), 11);
}

TEST(Parser, Calculates) {
  EXPECT_EQ(Constant<int64_t>("10 + 5"), 15);
  EXPECT_EQ(Constant<int64_t>("10+5"), 15);
  EXPECT_EQ(Constant<int64_t>("10-5"), 5);
  EXPECT_EQ(Constant<int64_t>("10 -5"), 5);
  EXPECT_EQ(Constant<int64_t>("-2 * 3"), -6);
  EXPECT_EQ(Constant<int64_t>("2 * -3"), -6);
  EXPECT_EQ(Constant<int64_t>("2 + 3 * 4"), 14);
  EXPECT_EQ(Constant<int64_t>("(2 + 3) * 4"), 20);
  EXPECT_EQ(Constant<int64_t>("10 - 3 - 2"), 5);
  EXPECT_EQ(Constant<int64_t>("10 - (3 - 2)"), 9);
  EXPECT_EQ(Constant<int64_t>("- 5"), -5);
  EXPECT_EQ(Constant<int64_t>("--5"), 5);
  EXPECT_EQ(Constant<int64_t>("-(-5)"), 5);
  EXPECT_EQ(Constant<int64_t>("+-+5"), -5);
  EXPECT_EQ(Constant<int64_t>("1--1"), 2);
  // Of the same precedence, from the left to the right.
  EXPECT_EQ(Constant<int64_t>("100 \\ 10 \\ 5"), 2);
  EXPECT_EQ(Constant<int64_t>("2 * 7 Mod 4"), 2);
  EXPECT_EQ(Constant<int64_t>("7 mOD 4 * 2"), 6);
  EXPECT_EQ(Constant<int64_t>("1 + 7 MOD 4"), 4);
  // Towards zero, and a remainder has the sign of the left.
  EXPECT_EQ(Constant<int64_t>("7 \\ 2"), 3);
  EXPECT_EQ(Constant<int64_t>("-7 \\ 2"), -3);
  EXPECT_EQ(Constant<int64_t>("7 \\ -2"), -3);
  EXPECT_EQ(Constant<int64_t>("5 \\ -1"), -5);
  EXPECT_EQ(Constant<int64_t>("7 Mod 3"), 1);
  EXPECT_EQ(Constant<int64_t>("-7 Mod 3"), -1);
  EXPECT_EQ(Constant<int64_t>("7 Mod -3"), 1);
  EXPECT_EQ(Constant<int64_t>("7 Mod -1"), 0);
  EXPECT_EQ(Constant<int64_t>("(-9223372036854775807 - 1) Mod -1"), 0);
  // 64 bits on the way.
  EXPECT_EQ(Constant<int64_t>("9223372036854775807 \\ 4294967296"), 2147483647);
  EXPECT_EQ(Constant<int64_t>("4294967295 + 1 - 1"), UINT32_MAX);
  EXPECT_EQ(Constant<int64_t>("(4294967295 + 1) \\ 2"), 2147483648);
  EXPECT_EQ(Constant<double>("10 / 4"), 2.5);
  EXPECT_EQ(Constant<double>("10 / 5"), 2.0);
  EXPECT_EQ(Constant<double>("0.5 + 1"), 1.5);
  EXPECT_EQ(Constant<double>("1 - 0.25"), 0.75);
  EXPECT_EQ(Constant<double>("-0.5 * 3"), -1.5);
  EXPECT_EQ(Constant<double>("1 / 2 * 4"), 2.0);
  EXPECT_EQ(Constant<double>("-(1.5)"), -1.5);
  EXPECT_TRUE(std::signbit(Constant<double>("-0.0")));
  // Parentheses alone change nothing.
  EXPECT_EQ(Constant<int64_t>("((12))"), 12);
  EXPECT_TRUE(Constant<bool>("(true)"));
  EXPECT_EQ(Constant<std::string>("(\"text\")"), "text");
  // Mod is a word like others where no operator can stand.
  EXPECT_EQ(CallIn(Parsed("f(Mod = 3 Mod 2)").expression).arguments[0].name, "Mod");
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
      {"f(&h)", 3, "a hexadecimal number reads &hFF"},
      {"f(&hFG)", 3, "a hexadecimal number reads &hFF"},
      {"f(&h1_0)", 3, "a hexadecimal number reads &hFF"},
      {"f(&o8)", 3, "an octal number reads &o17"},
      {"f(&O)", 3, "an octal number reads &o17"},
      {"f(&b2)", 3, "a binary number reads &b101"},
      {"f(&B)", 3, "a binary number reads &b101"},
      {"f(&h100000000)", 3, "whole numbers reach from -2147483648 to 4294967295"},
      {"f(-&hFFFFFFFF)", 3, "whole numbers reach from -2147483648 to 4294967295"},
      {"f(&x10)", 3, "'&' begins a colour, &cRRGGBB, or a number, like &hFF, &o17 and &b101"},
      {"f(1 &", 5, "'&' begins a colour, &cRRGGBB, or a number, like &hFF, &o17 and &b101"},
      {"f(4294967296)", 3, "whole numbers reach from -2147483648 to 4294967295"},
      {"f(-2147483649)", 3, "whole numbers reach from -2147483648 to 4294967295"},
      {"f(99999999999999999999)", 3, "whole numbers reach from -2147483648 to 4294967295"},
      {"f(1e999)", 3, "this number is too large or too small"},
      {"f(12abc)", 3, "this number isn't understood"},
      {"f(1.2.3)", 3, "this number isn't understood"},
      {"f(-)", 4, "expected a number after the sign but found ')'"},
      {"f(- +", 6, "expected a number after the sign but it ends here"},
      {"f(1, #)", 6, "'#' has no meaning here"},
      {"f(a = b = c)", 9, "expected ',' or ')' but found '='"},
      {"f(g(1) = 2)", 8, "expected ',' or ')' but found '='"},
      {"12 = f", 1, "nothing can be assigned to this"},
      {"self.", 6, "expected a method's name after the dot but it ends here"},
      {"a = b = c", 7, "expected the end of the expression but found '='"},
      {"f(1 +)", 6, "expected a call or a value but found ')'"},
      {"f((1, 2))", 5, "expected ')' but found ','"},
      {"f((1", 5, "expected ')' but it ends here"},
      {"f(1)) + 2", 5, "expected the end of the expression but found ')'"},
      {"f(1 Modulo 2)", 5, "expected ',' or ')' but found 'Modulo'"},
      {"f(a = 1, b = 2, A = 3)", 17, "A is given twice"},
      {"C(SepiaRed = 40, sepiared = 20)", 18, "sepiared is given twice"},
      {"f(g(a = 1, a = 2))", 12, "a is given twice"},
  };
  for (const auto& [text, column, message] : cases) {
    const SyntaxError error = SyntaxErrorOf(text);
    EXPECT_EQ(error.column, column) << text;
    EXPECT_EQ(error.message, message) << text;
  }
}

TEST(Parser, SaysWhereArithmeticIsWrong) {
  const struct {
    const char* text;
    size_t column;
    const char* message;
  } cases[] = {
      {"f(mask + 1)", 3, "only constants can be calculated with, and 'mask' is a name"},
      {"f(1 + mask)", 7, "only constants can be calculated with, and 'mask' is a name"},
      {"f(2 * g(3).h)", 7, "only constants can be calculated with, and 'h' is a name"},
      {"f(-mask)", 4, "only constants can be calculated with, and 'mask' is a name"},
      {"f((mask))", 4, "only constants can be calculated with, and 'mask' is a name"},
      {"InvertKRT - 1", 1, "only constants can be calculated with, and 'InvertKRT' is a name"},
      {"f(a Mod 2)", 3, "only constants can be calculated with, and 'a' is a name"},
      {"f(\"a\" + \"b\")", 3, "only numbers can be calculated with"},
      {"f(1 + true)", 7, "only numbers can be calculated with"},
      {"f(2 * &c000001)", 7, "only numbers can be calculated with"},
      {"f(-nil)", 4, "only numbers can be calculated with"},
      {"f(1 / 0)", 5, "division by zero"},
      {"f(1.5 / 0.0)", 7, "division by zero"},
      {"f(1 / (2 - 2))", 5, "division by zero"},
      {"f(7 \\ 0)", 5, "division by zero"},
      {"f(1 + 7 Mod 0)", 9, "division by zero"},
      {"f(7.5 \\ 2)", 7, "'\\' and Mod take whole numbers"},
      {"f(7 Mod 2.0)", 5, "'\\' and Mod take whole numbers"},
      {"f(9223372036854775807 + 1 - 1)", 23, "the result doesn't fit 64 bits"},
      {"f(-9223372036854775807 - 2)", 24, "the result doesn't fit 64 bits"},
      {"f(0 + 4294967296 * 4294967296)", 18, "the result doesn't fit 64 bits"},
      {"f(-(-9223372036854775807 - 1))", 3, "the result doesn't fit 64 bits"},
      {"f((-9223372036854775807 - 1) \\ -1)", 30, "the result doesn't fit 64 bits"},
      {"f(1e308 * 10)", 9, "the result is too large"},
      {"f(-1e308 - 1e308)", 10, "the result is too large"},
      {"f(1, 4294967295 + 1)", 6, "whole numbers reach from -2147483648 to 4294967295"},
      {"f(-2147483648 - 1)", 3, "whole numbers reach from -2147483648 to 4294967295"},
      {"a = 65536 * 65536", 5, "whole numbers reach from -2147483648 to 4294967295"},
      {"(4294967296).f", 1, "whole numbers reach from -2147483648 to 4294967295"},
      {"9223372036854775808 - 1", 1, "whole numbers reach from -2147483648 to 4294967295"},
  };
  for (const auto& [text, column, message] : cases) {
    const SyntaxError error = SyntaxErrorOf(text);
    EXPECT_EQ(error.column, column) << text;
    EXPECT_EQ(error.message, message) << text;
  }
}

TEST(Parser, CountsColumnsInCharacters) {
  const struct {
    std::string text;
    size_t column;
  } cases[] = {
      {"f(\"caf\xC3\xA9\" 1)", 10},                  // two bytes
      {"f(\"\xE2\x82\xAC\xE2\x82\xAC\" 1)", 8},      // three
      {"f(\"\xF0\x9F\x93\xB7\" 1)", 7},              // four
      {"f(\"e\xCC\x81\" 1)", 8},                     // a letter and its accent are two
      {"f(\"\xFF\xFE\x80\" 1)", 9},                  // no characters, one each
      {"f(\"\xC3\" 1)", 7},                          // the second byte is missing
      {"f(\"\xE2\x82\" 1)", 8},                      // the third
      {"f(\"\xC0\x80\" 1)", 8},                      // longer than need be
      {"f(\"\xE0\x9F\xBF\" 1)", 9},                  // the same
      {"f(\"\xF0\x8F\xBF\xBF\" 1)", 10},             // the same
      {"f(\"\xED\xA0\x80\" 1)", 9},                  // half of a pair of UTF-16
      {"f(\"\xF4\x90\x80\x80\" 1)", 10},             // beyond the last character
      {"f(\"\xC2\x85\" 1)", 7},                      // a control character
      {"f(\"\xF4\x8F\xBF\xBF\xED\x9F\xBF\" 1)", 8},  // the last of their length
      {"f(\"\xE2\x82\xAC\", 1", 9},                  // it ends too soon
      {"f(\"\xE2\x82\xAC\", \"1", 8},                // a quotation mark is missing
      {"f(\"\xE2\x82\xAC\", &x", 8},
      {"f(\"\xE2\x82\xAC\" + 1)", 3},
  };
  for (const auto& [text, column] : cases)
    EXPECT_EQ(SyntaxErrorOf(text).column, column) << testing::PrintToString(text);
  const SyntaxError strange = SyntaxErrorOf("f(1, \xE2\x82\xAC)");
  EXPECT_EQ(strange.column, 6U);
  EXPECT_EQ(strange.message, "'\xE2\x82\xAC' has no meaning here");
  EXPECT_EQ(SyntaxErrorOf("f(1, \xE2)").message, "'\\xE2' has no meaning here");
  EXPECT_EQ(Parsed("f(\"\xE2\x82\xAC\", g)").expression.column, 1U);
  EXPECT_EQ(CallIn(Parsed("f(\"\xE2\x82\xAC\", g)").expression).arguments[1].value->column, 8U);
}

TEST(Parser, BoundsNesting) {
  std::string deep, chain = "self", round, mixed;
  for (int i = 0; i < 100'000; ++i) {
    deep += "f(";
    chain += ".f";
    round += "(";
    mixed += "-(1+";
  }
  EXPECT_EQ(SyntaxErrorOf(deep).message, "the expression is nested too deeply");
  EXPECT_EQ(SyntaxErrorOf(round).message, "the expression is nested too deeply");
  EXPECT_EQ(SyntaxErrorOf(round).column, 34U);
  EXPECT_EQ(SyntaxErrorOf(mixed).message, "the expression is nested too deeply");
  EXPECT_EQ(SyntaxErrorOf(chain).message, "the expression is nested too deeply");
  Parsed("f(f(f(f(f(f(f(f(self.f.f.f.f.f))))))))");
  EXPECT_EQ(Constant<int64_t>(std::string(31, '(') + "7" + std::string(31, ')')), 7);
  EXPECT_EQ(SyntaxErrorOf("f(" + std::string(32, '(') + "7" + std::string(32, ')') + ")").column,
            35U);
}

TEST(Parser, TakesChainsOfAnyLength) {
  EXPECT_EQ(Constant<int64_t>(std::string(100'000, '-') + "7"), 7);
  EXPECT_EQ(Constant<int64_t>(std::string(99'999, '-') + "7"), -7);
  EXPECT_EQ(SyntaxErrorOf(std::string(100'000, '-')).column, 100'001U);
  std::string sum = "1", product = "1", names = "f(";
  for (int i = 0; i < 100'000; ++i) {
    sum += "+1";
    product += "*-1";
    names += "a" + std::to_string(i) + "=1,";
  }
  EXPECT_EQ(Constant<int64_t>(sum), 100'001);
  EXPECT_EQ(Constant<int64_t>(product), 1);
  EXPECT_EQ(SyntaxErrorOf(names + "A99999=2)").message, "A99999 is given twice");
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
  const std::string whole =
      "a.b(c = &c00FF00, \"d\"\"\", -1.5e+3 * (&hFF - &o7 Mod &b1) / 2 \\ 1, nil).e() = true";
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

std::string FailureOf(const std::string& text) {
  try {
    ParseOrFail(text);
  } catch (const Failure& failure) {
    return failure.what();
  }
  ADD_FAILURE() << text << " was accepted";
  return "";
}

TEST(Parser, QuotesLongTextsRoundTheMistake) {
  const std::string many = "f(11,22,33,44,55,66,77,88,99,";
  ASSERT_EQ(many.size(), 29U);
  const std::string number = ": this number isn't understood";
  // 60 characters are shown whole, and 61 aren't.
  EXPECT_EQ(FailureOf("f(1a, \"" + std::string(53, 'x')),
            "in 'f(1a, \"" + std::string(53, 'x') + "', column 3" + number);
  EXPECT_EQ(FailureOf("f(1a, \"" + std::string(54, 'x')),
            "in 'f(1a, \"" + std::string(53, 'x') + "...', column 3" + number);
  // At the beginning, in the middle, at the end.
  EXPECT_EQ(FailureOf("f(1a" + std::string(200, ')')),
            "in 'f(1a" + std::string(56, ')') + "...', column 3" + number);
  const std::string more = many.substr(2);
  EXPECT_EQ(FailureOf(many + more + "1a" + std::string(100, ')')),
            "in '...9," + more + "1a" + std::string(29, ')') + "...', column 57" + number);
  EXPECT_EQ(FailureOf(many + more + more + "1)x"),
            "in '...99," + more + more +
                "1)x', column 86: expected the end of the expression but found 'x'");
  // Characters, not bytes, and none of them is cut.
  std::string euros;
  for (int i = 0; i < 54; ++i) euros += "\xE2\x82\xAC";
  EXPECT_EQ(FailureOf("f(\"" + euros + "\")#"),
            "in 'f(\"" + euros + "\")#', column 60: '#' has no meaning here");
  EXPECT_EQ(FailureOf("f(\"" + euros + euros + "\", 1a)"),
            "in '..." + euros + "\", 1a)', column 115" + number);
}

}  // namespace
}  // namespace runner
