#include <cstring>

#include "tests/host/host_test.h"

namespace host {
namespace {

constexpr uint32_t kMacRoman = 0;
constexpr uint32_t kUTF16 = 0x100;
constexpr uint32_t kUTF16BigEndian = 0x10000100;
constexpr uint32_t kUTF32 = 0x0C000100;
constexpr uint32_t kLatin1 = 0x201;
constexpr uint32_t kWindows = 0x500;

class StringTest : public HostTest {
 protected:
  // As a plug-in sees the bytes; "(false)" when it gets none.
  std::string Data(const Ref<String>& string, uint32_t encoding) {
    REALstringData data{};
    if (!Find<bool(REALstring, uint32_t, REALstringData*)>("PluginGetStringData")(
            string.Handle(), encoding, &data)) {
      return "(false)";
    }
    std::string bytes(static_cast<const char*>(data.data), static_cast<size_t>(data.length));
    EXPECT_EQ(std::memcmp(static_cast<const char*>(data.data) + data.length, "\0\0\0\0", 4), 0);
    EXPECT_EQ(data.encoding, encoding);
    Find<void(REALstringData*)>("PluginDisposeStringData")(&data);
    return bytes;
  }
};

TEST_F(StringTest, BuiltStringsHoldTheirBytesAndNoEncoding) {
  const Ref<String> built =
      AdoptHandle<String>(Find<REALstring(const char*, int32_t)>("REALBuildString")("a\0b", 3));
  ASSERT_TRUE(built);
  EXPECT_EQ(built->Bytes(), std::string("a\0b", 3));
  EXPECT_EQ(built->References(), 1);
  auto* encodingOf = Find<uint32_t(REALstring)>("REALGetStringEncoding");
  EXPECT_EQ(encodingOf(built.Handle()), 0xFFFFu);
  Find<void(REALstring, uint32_t)>("REALSetStringEncoding")(built.Handle(), 0x600);
  EXPECT_EQ(encodingOf(built.Handle()), 0x600u);
  EXPECT_EQ(built->Bytes(), std::string("a\0b", 3));
}

TEST_F(StringTest, NothingIsBuiltOfNothing) {
  auto* build = Find<REALstring(const char*, int32_t)>("REALBuildString");
  EXPECT_EQ(build("a", -1), nullptr);
  EXPECT_EQ(build(nullptr, 1), nullptr);
  EXPECT_EQ(host.census.Errors().size(), 2u);
  host.census.ClearErrors();
  const Ref<String> empty = AdoptHandle<String>(build(nullptr, 0));
  EXPECT_EQ(empty->Bytes(), "");
}

TEST_F(StringTest, ReferencesAreCounted) {
  const Ref<String> string = host.NewString("a");
  Find<void(REALstring)>("REALLockString")(string.Handle());
  EXPECT_EQ(string->References(), 2);
  Find<void(REALstring)>("REALUnlockString")(string.Handle());
  EXPECT_EQ(string->References(), 1);
}

TEST_F(StringTest, ConversionsKeepTheCharacters) {
  const struct {
    const char* utf8;
    uint32_t encoding;
    std::string bytes;
  } kCases[] = {
      {"ab", 0x600, "ab"},
      {"\xC3\xA4", kLatin1, "\xE4"},
      {"\xC3\xA4", kMacRoman, "\x8A"},
      {"\xE2\x82\xAC", kWindows, "\x80"},
      {"\xE2\x82\xAC", kUTF16, std::string("\xAC\x20", 2)},
      {"\xE2\x82\xAC", kUTF16BigEndian, std::string("\x20\xAC", 2)},
      {"\xF0\x9F\x98\x80", kUTF32, std::string("\x00\xF6\x01\x00", 4)},
      {"", kUTF16, ""},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.encoding);
    EXPECT_EQ(ConvertEncoding(c.utf8, kEncodingUTF8, c.encoding), c.bytes);
    EXPECT_EQ(ConvertEncoding(c.bytes, c.encoding, kEncodingUTF8), c.utf8);
  }
}

TEST_F(StringTest, WhatCannotBeConvertedIsNil) {
  EXPECT_EQ(ConvertEncoding("\xC3\xA4", kEncodingUTF8, kEncodingASCII), std::nullopt);
  EXPECT_EQ(ConvertEncoding("\xE2\x82\xAC", kEncodingUTF8, kLatin1), std::nullopt);
  EXPECT_EQ(ConvertEncoding("\xC3", kEncodingUTF8, kLatin1), std::nullopt) << "half a character";
  EXPECT_EQ(ConvertEncoding("\xFF", kEncodingUTF8, kLatin1), std::nullopt);
  EXPECT_EQ(ConvertEncoding("a", kEncodingUTF8, 0x12345), std::nullopt);
  const Ref<String> string = host.NewString("\xC3\xA4");
  auto* convert = Find<REALstring(REALstring, uint32_t)>("REALConvertString");
  EXPECT_EQ(convert(string.Handle(), kEncodingASCII), nullptr);
  EXPECT_EQ(Data(string, kEncodingASCII), "(false)");
}

TEST_F(StringTest, UnknownEncodingsLeaveTheBytes) {
  EXPECT_EQ(ConvertEncoding("\xFF", kEncodingUnknown, kEncodingUTF8), std::string("\xFF"));
  EXPECT_EQ(Data(host.NewString("\xC3\xA4"), kEncodingUnknown), "\xC3\xA4");
}

TEST_F(StringTest, AConvertedStringIsANewOne) {
  const Ref<String> string = host.NewString("\xC3\xA4");
  auto* convert = Find<REALstring(REALstring, uint32_t)>("REALConvertString");
  const Ref<String> converted = AdoptHandle<String>(convert(string.Handle(), kLatin1));
  EXPECT_EQ(converted->Bytes(), "\xE4");
  EXPECT_EQ(converted->Encoding(), kLatin1);
  EXPECT_EQ(converted->References(), 1);
  EXPECT_EQ(string->Bytes(), "\xC3\xA4");
}

TEST_F(StringTest, DataComeInTheEncodingWanted) {
  const Ref<String> string = host.NewString("\xC3\xA4");
  EXPECT_EQ(Data(string, kLatin1), "\xE4");
  EXPECT_EQ(Data(string, kEncodingUTF8), "\xC3\xA4");
}

TEST_F(StringTest, OldHostsGiveACStringAndItsLength) {
  const Ref<String> string = host.NewString(std::string_view("a\0b", 3));
  const char* text = Find<const char*(REALstring)>("StringGetCString")(string.Handle());
  EXPECT_EQ(std::memcmp(text, "a\0b", 4), 0) << "a zero follows the bytes";
  void* method = Find<void*(const char*)>("REALLoadGlobalMethod")("LenB( s as string ) as integer");
  auto* lenB = reinterpret_cast<int32_t (*)(REALstring)>(method);
  EXPECT_EQ(lenB(string.Handle()), 3);
  EXPECT_EQ(lenB(nullptr), 0);
}

}  // namespace
}  // namespace host
