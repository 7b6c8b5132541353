#include "host/declaration.h"

#include "tests/host/host_test.h"

namespace host {
namespace {

TEST(DeclarationTest, ReadsNamesTypesAndResult) {
  const Declaration read = ParseDeclaration(
      "InvertKRT(left as integer,top as integer, ratio as double, on as boolean) as picture");
  EXPECT_EQ(read.name, "InvertKRT");
  ASSERT_EQ(read.parameters.size(), 4u);
  EXPECT_EQ(read.parameters[0].name, "left");
  EXPECT_EQ(read.parameters[0].type, Type::kInteger);
  EXPECT_FALSE(read.parameters[0].byref);
  EXPECT_EQ(read.parameters[2].type, Type::kDouble);
  EXPECT_EQ(read.parameters[3].type, Type::kBoolean);
  EXPECT_EQ(read.result, Type::kPicture);
  EXPECT_EQ(read.RequiredCount(), 4u);
}

TEST(DeclarationTest, ReadsEveryType) {
  const Declaration read = ParseDeclaration(
      "F(a as integer, b as UInt32, c as double, d as boolean, e as color, f as String, g as "
      "Picture, h as memoryblock, i as Widget) as Int32");
  const Type expected[] = {Type::kInteger, Type::kUInt32,      Type::kDouble,
                           Type::kBoolean, Type::kColour,      Type::kString,
                           Type::kPicture, Type::kMemoryBlock, Type::kObject};
  ASSERT_EQ(read.parameters.size(), std::size(expected));
  for (size_t i = 0; i < std::size(expected); ++i) {
    EXPECT_EQ(read.parameters[i].type, expected[i]) << read.parameters[i].name;
  }
  EXPECT_EQ(read.parameters[8].typeName, "Widget");
  EXPECT_EQ(read.result, Type::kInteger);
}

TEST(DeclarationTest, ReadsByref) {
  const Declaration read = ParseDeclaration(
      "CountColorsKRT(byref red as memoryblock, BYREF count as integer, byrefs as integer)");
  EXPECT_TRUE(read.parameters[0].byref);
  EXPECT_TRUE(read.parameters[1].byref);
  EXPECT_FALSE(read.parameters[2].byref);
  EXPECT_EQ(read.parameters[2].name, "byrefs");
  EXPECT_EQ(read.result, Type::kNone);
  EXPECT_EQ(read.RequiredCount(), 1u);
}

TEST(DeclarationTest, ReadsDefaults) {
  const Declaration read = ParseDeclaration(
      "F(a as integer = 10, b as picture = nil, c as boolean=false, d as color=&c88B5C4, "
      "e as Integer = -10000, f as double = -0.5, g as string = \"a, \"\"b\"\")\")");
  ASSERT_EQ(read.parameters.size(), 7u);
  EXPECT_EQ(read.parameters[0].defaultValue, Literal(int64_t{10}));
  EXPECT_EQ(read.parameters[1].defaultValue, Literal(Nil{}));
  EXPECT_EQ(read.parameters[2].defaultValue, Literal(false));
  EXPECT_EQ(read.parameters[3].defaultValue, Literal(Colour{0x88B5C4}));
  EXPECT_EQ(read.parameters[4].defaultValue, Literal(int64_t{-10000}));
  EXPECT_EQ(read.parameters[5].defaultValue, Literal(-0.5));
  EXPECT_EQ(read.parameters[6].defaultValue, Literal(std::string("a, \"b\")")));
  EXPECT_EQ(read.RequiredCount(), 0u);
}

TEST(DeclarationTest, KeywordsInAnyCaseAndBlanksWhereOneLikes) {
  const Declaration read = ParseDeclaration("  LenB \t( s   AS  STRING=\"\" )As\tINTEGER  ");
  EXPECT_EQ(read.name, "LenB");
  EXPECT_EQ(read.parameters.at(0).type, Type::kString);
  EXPECT_EQ(read.result, Type::kInteger);
}

TEST(DeclarationTest, ParenthesesMayBeEmptyOrLeftOut) {
  EXPECT_TRUE(ParseDeclaration("Close").parameters.empty());
  EXPECT_TRUE(ParseDeclaration("Close()").parameters.empty());
  EXPECT_EQ(ParseDeclaration("Run as boolean").result, Type::kBoolean);
  EXPECT_EQ(ParseDeclaration("Run( ) as boolean").result, Type::kBoolean);
}

TEST(DeclarationTest, SaysWhereAndWhatIsWrong) {
  const auto error = [](const char* text) { return ErrorOf([&] { ParseDeclaration(text); }); };
  EXPECT_EQ(error(""), "\"\", character 1: expected the method's name");
  EXPECT_EQ(error("F(a integer)"), "\"F(a integer)\", character 5: expected \"as\"");
  EXPECT_EQ(error("F(a as integer"), "\"F(a as integer\", character 15: expected \",\" or \")\"");
  EXPECT_EQ(error("F(a as integer,)"),
            "\"F(a as integer,)\", character 16: expected a parameter's name");
  EXPECT_EQ(error("F as"), "\"F as\", character 5: expected the result's type");
  EXPECT_EQ(error("F as integer 3"), "\"F as integer 3\", character 14: expected nothing more");
  EXPECT_EQ(error("F(a as variant)"),
            "\"F(a as variant)\", character 8: expected a type that calls can carry");
  EXPECT_TRUE(Contains(error("F(a as integer = x)"), "character 17: expected a default value"));
  EXPECT_TRUE(Contains(error("F(a as integer = 1.5)"), "a default value of type integer"));
  EXPECT_TRUE(Contains(error("F(a as integer = nil)"), "a default value of type integer"));
  EXPECT_TRUE(Contains(error("F(a as picture = 0)"), "a default value of type picture"));
  EXPECT_TRUE(Contains(error("F(byref a as integer = 1)"), "no default for a byref"));
  EXPECT_TRUE(Contains(error("F(a as integer = )"), "a value is missing"));
}

TEST(DeclarationTest, SignaturesAreTheSameButForNamesDefaultsAndCase) {
  const auto same = [](const char* a, const char* b) {
    return SameSignature(ParseDeclaration(a), ParseDeclaration(b));
  };
  EXPECT_TRUE(same("F(a as integer = 3) as picture", "f( B AS Integer )  as Picture"));
  EXPECT_FALSE(same("F(a as integer)", "G(a as integer)"));
  EXPECT_FALSE(same("F(a as integer)", "F(a as double)"));
  EXPECT_FALSE(same("F(a as integer)", "F(byref a as integer)"));
  EXPECT_FALSE(same("F(a as integer)", "F(a as integer, b as integer)"));
  EXPECT_FALSE(same("F as integer", "F"));
  EXPECT_FALSE(same("F(a as Cat)", "F(a as Dog)"));
}

TEST(LiteralTest, ReadsEveryKind) {
  EXPECT_EQ(ParseLiteral(" 12 "), Literal(int64_t{12}));
  EXPECT_EQ(ParseLiteral("-2147483648"), Literal(int64_t{-2147483648LL}));
  EXPECT_EQ(ParseLiteral("4294967295"), Literal(int64_t{4294967295LL}));
  EXPECT_EQ(ParseLiteral("+3"), Literal(int64_t{3}));
  EXPECT_EQ(ParseLiteral("-0.5"), Literal(-0.5));
  EXPECT_EQ(ParseLiteral("1e3"), Literal(1000.0));
  EXPECT_EQ(ParseLiteral("TRUE"), Literal(true));
  EXPECT_EQ(ParseLiteral("nil"), Literal(Nil{}));
  EXPECT_EQ(ParseLiteral("&C274c5a"), Literal(Colour{0x274C5A}));
  EXPECT_EQ(ParseLiteral("\"a\"\"b\""), Literal(std::string("a\"b")));
  EXPECT_EQ(ParseLiteral("\"\""), Literal(std::string()));
}

TEST(LiteralTest, RefusesTheRest) {
  for (const char* text : {"", "  ", "abc", "1x", "1.2.3", "inf", "nan", "-", "+-3", "&c12345",
                           "&c1234567", "&cGGGGGG", "\"open", "\"a\"b\"", "4294967296",
                           "-2147483649", "99999999999999999999", "1e999"}) {
    EXPECT_NE(ErrorOf([&] { ParseLiteral(text); }), "") << text;
  }
}

class ValueTest : public HostTest {};

TEST_F(ValueTest, WholeNumbersWidenAndKeepTheirValue) {
  EXPECT_EQ(ConvertValue(int32_t{7}, Type::kDouble), Value(7.0));
  EXPECT_EQ(ConvertValue(uint32_t{7}, Type::kInteger), Value(int32_t{7}));
  EXPECT_EQ(ConvertValue(int32_t{0xFF}, Type::kColour), Value(Colour{0xFF}));
  EXPECT_EQ(ConvertValue(Colour{3}, Type::kUInt32), Value(uint32_t{3}));
  EXPECT_EQ(ErrorOf([] { ConvertValue(int32_t{-1}, Type::kUInt32); }),
            "-1 doesn't fit a parameter of type uint32");
  EXPECT_EQ(ErrorOf([] { ConvertValue(uint32_t{0x80000000}, Type::kInteger); }),
            "2147483648 doesn't fit a parameter of type integer");
}

TEST_F(ValueTest, NothingNarrowsOrPretends) {
  EXPECT_NE(ErrorOf([] { ConvertValue(1.0, Type::kInteger); }), "");
  EXPECT_NE(ErrorOf([] { ConvertValue(true, Type::kInteger); }), "");
  EXPECT_NE(ErrorOf([] { ConvertValue(int32_t{1}, Type::kBoolean); }), "");
  EXPECT_NE(ErrorOf([] { ConvertValue(Nil{}, Type::kInteger); }), "");
  EXPECT_NE(ErrorOf([] { ConvertValue(Colour{1}, Type::kDouble); }), "");
  EXPECT_NE(ErrorOf([&] { ConvertValue(host.NewString("a"), Type::kPicture); }), "");
}

TEST_F(ValueTest, ObjectsFitTheirTypeAndNilFitsEvery) {
  const Ref<Picture> picture = host.NewPicture(2, 2);
  EXPECT_EQ(ConvertValue(picture, Type::kPicture), Value(picture));
  EXPECT_EQ(ConvertValue(Ref<Object>(picture), Type::kPicture), Value(picture));
  EXPECT_EQ(ConvertValue(picture, Type::kObject), Value(Ref<Object>(picture)));
  for (const Type type : {Type::kPicture, Type::kString, Type::kMemoryBlock, Type::kObject}) {
    EXPECT_EQ(ConvertValue(Nil{}, type), Value(Nil{}));
    EXPECT_EQ(ConvertValue(Ref<Picture>(), type), Value(Nil{}));
  }
}

TEST_F(ValueTest, TextIsWhatAPersonReads) {
  EXPECT_EQ(ToText(int32_t{-3}), "-3");
  EXPECT_EQ(ToText(0.1), "0.1");
  EXPECT_EQ(ToText(true), "true");
  EXPECT_EQ(ToText(Colour{0x274C5A}), "&c274C5A");
  EXPECT_EQ(ToText(Nil{}), "nil");
  EXPECT_EQ(ToText(host.NewString("\xE4", 0x201)), "\xC3\xA4");
}

TEST_F(ValueTest, ConstantsTakeTheTypeWanted) {
  EXPECT_EQ(FromLiteral(Literal(int64_t{5}), Type::kDouble), Value(5.0));
  EXPECT_EQ(FromLiteral(Literal(int64_t{5})), Value(int32_t{5}));
  EXPECT_EQ(FromLiteral(Literal(int64_t{3000000000})), Value(uint32_t{3000000000u}));
  const Value text = FromLiteral(Literal(std::string("ab")), Type::kString);
  EXPECT_EQ(std::get<Ref<String>>(text)->Bytes(), "ab");
  EXPECT_EQ(std::get<Ref<String>>(text)->Encoding(), kEncodingUTF8);
}

}  // namespace
}  // namespace host
