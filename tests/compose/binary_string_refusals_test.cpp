// Strings that are no pictures, pictures that become no strings, and hosts that lack something.
#include <gtest/gtest.h>

#include "tests/compose/binary_string_fixture.h"

namespace binary_string {
namespace {

TEST_F(BinaryStringTest, WhatIsNotSuchAStringGivesNil) {
  const std::string pixels = NoisePixels(3, 2, random);
  const std::string good = WithHeader(3, 2, pixels);
  ASSERT_TRUE(Read(good));
  EXPECT_FALSE(Read(StringRef{}));
  EXPECT_FALSE(Read(std::string()));
  for (size_t byte = 0; byte < 8; ++byte) {
    std::string bytes = good;
    bytes[byte] = static_cast<char>(bytes[byte] + 1);
    EXPECT_FALSE(Read(bytes)) << "byte " << byte;
  }
  EXPECT_FALSE(Read(good + "x"));
  for (size_t length = 0; length < good.size(); ++length) {
    EXPECT_FALSE(Read(good.substr(0, length))) << length << " bytes";
    // The same with a length field that agrees.
    std::string bytes = good.substr(0, length);
    if (length >= 8) bytes.replace(4, 4, BigEndian(static_cast<uint32_t>(length)));
    EXPECT_FALSE(Read(bytes)) << length << " bytes that say so";
  }
}

// Of the header, what lies behind the first 24 bytes is never read.
TEST_F(BinaryStringTest, PixelsMayBeginWhereTheFieldsEnd) {
  for (size_t header = 24; header < 40; ++header) {
    const std::string pixels = NoisePixels(3, 2, random);
    const auto size = static_cast<uint32_t>(header + pixels.size());
    const std::string bytes =
        Header(size, 3, 2, static_cast<uint32_t>(header)).substr(0, header) + pixels;
    EXPECT_TRUE(IsPictureOf(Read(bytes), 3, 2, bytes, header)) << header << " bytes of header";
  }
  // One pixel of three bytes: a string of 27.
  const std::string bytes = Header(27, 1, 1, 24).substr(0, 24) + "RGB";
  EXPECT_TRUE(IsPictureOf(Read(bytes), 1, 1, bytes, 24));
}

// The pixels lie in the header itself, so that one byte less cuts a field and nothing else.
TEST_F(BinaryStringTest, AStringThatEndsWithinTheFieldsGivesNil) {
  EXPECT_TRUE(Read(Header(24, 1, 1, 0).substr(0, 24)));
  for (size_t length = 20; length < 24; ++length) {
    EXPECT_FALSE(Read(Header(static_cast<uint32_t>(length), 1, 1, 0).substr(0, length))) << length;
  }
}

TEST_F(BinaryStringTest, EightBytesThatSaySoGiveNil) { EXPECT_FALSE(Read("PPIC" + BigEndian(8))); }

TEST_F(BinaryStringTest, SizesOutside1To32767GiveNil) {
  // One row or column of 32768 pixels: all of it is there.
  const std::string pixels(32768 * 3, 'p');
  const auto size = static_cast<uint32_t>(40 + pixels.size());
  EXPECT_FALSE(Read(Header(size, 32768, 1) + pixels));
  EXPECT_FALSE(Read(Header(size, 1, 32768) + pixels));
  EXPECT_TRUE(Read(Header(size, 32767, 1) + pixels));
  EXPECT_TRUE(Read(Header(size, 1, 32767) + pixels));
  for (const int32_t side : {0, -1, INT_MIN, INT_MAX, 65536}) {
    EXPECT_FALSE(Read(Header(size, side, 1) + pixels)) << side;
    EXPECT_FALSE(Read(Header(size, 1, side) + pixels)) << side;
    EXPECT_FALSE(Read(Header(size, side, side) + pixels)) << side;
  }
}

TEST_F(BinaryStringTest, APictureOf32768PixelsAcrossIsWrittenAllTheSame) {
  const PictureRef picture = Noise(32768, 1, PictureLayout::BitmapContext(6));
  const StringRef string = Write(picture);
  ASSERT_TRUE(string);
  EXPECT_EQ(string->Bytes(), Written(picture));
  EXPECT_FALSE(Read(string));
}

TEST_F(BinaryStringTest, PixelsThatReachBeyondTheStringGiveNil) {
  const std::string pixels = NoisePixels(3, 2, random);
  const auto size = static_cast<uint32_t>(40 + pixels.size());
  for (const uint32_t offset :
       {41U, 58U, 59U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFD6U, 0xFFFFFFEEU, 0xFFFFFFFFU}) {
    EXPECT_FALSE(Read(Header(size, 3, 2, offset) + pixels)) << offset;
  }
  EXPECT_FALSE(Read(Header(size, 3, 3) + pixels));
  EXPECT_FALSE(Read(Header(size, 4, 2) + pixels));
  EXPECT_FALSE(Read(Header(size, 32767, 32767) + pixels));
  // 3 x 21846 x 32767 is 2^31 - 2, which the offset takes beyond 31 bits.
  EXPECT_FALSE(Read(Header(size, 21846, 32767) + pixels));
}

TEST_F(BinaryStringTest, APictureThatCannotBeOpenedGivesANullString) {
  EXPECT_FALSE(Write(nullptr));
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef refused = Noise(3, 2, pair.source);
    refused->SetLocking(host::Locking::kRefused);
    Host().faults.FailAlways("REALGetPropValueInt");
    EXPECT_FALSE(Write(refused));
    EXPECT_FALSE(Write(nullptr));
  }
}

TEST_F(BinaryStringTest, AVectorPictureIsDrawnAndThenWritten) {
  const PictureRef vector =
      Host().NewVectorPicture(1, 1, [](int32_t, int32_t) { return 0x414243U; });
  EXPECT_EQ(Write(vector)->Bytes(), WithHeader(1, 1, "ABC"));
}

// The description tells of a picture that is larger than it is; nothing of it may be touched.
TEST_F(BinaryStringTest, MoreThan31BitsOfBytesGiveANullString) {
  host::Settings settings;
  settings.application = host::Application::kConsole;
  Start(settings);
  const PictureRef picture = Noise(3, 2, PictureLayout::RowTable());
  struct Size {
    int32_t width, height;
  };
  const Size sizes[] = {
      {715827870, 1},  // 40 + 3 x 715827870 is 2^31 + 2
      {32767, 32767},  // 3221028907 bytes
      {40000, 40000},  // 4800000040 bytes, 505032744 in 32 bits
      {1 << 30, 1 << 30},
      {INT_MAX, INT_MAX},
      {INT_MIN, INT_MIN},
      {INT_MIN, INT_MAX},
      {-1, 1},  // and less than a header
      {5, -1},
      {-5, -5},  // 25 pixels that aren't there
  };
  for (const Size& size : sizes) {
    picture->SetDescriptionHook([&](REALpictureDescription& d) {
      d.width = size.width;
      d.height = size.height;
    });
    EXPECT_FALSE(Write(picture)) << size.width << " x " << size.height;
  }
}

TEST_F(BinaryStringTest, APictureWithoutPixelsIsAHeader) {
  host::Settings settings;
  settings.application = host::Application::kConsole;
  Start(settings);
  const PictureRef picture = Noise(3, 2, PictureLayout::RowTable());
  picture->SetDescriptionHook([](REALpictureDescription& d) { d.width = d.height = 0; });
  const StringRef string = Write(picture);
  ASSERT_TRUE(string);
  EXPECT_EQ(string->Bytes(), Header(40, 0, 0));
  EXPECT_FALSE(Read(string));
}

TEST_F(BinaryStringTest, WithoutABuiltStringTheResultIsNull) {
  Host().faults.FailAlways("REALBuildString");
  EXPECT_FALSE(Write(Plain(3, 2, {1, 2, 3})));

  StartWithoutPlugin().faults.Hide("REALBuildString");
  support::LoadPluginUnderTest(Host());
  EXPECT_FALSE(Write(Plain(3, 2, {1, 2, 3})));
}

TEST_F(BinaryStringTest, WithoutTheEncodingEntryTheStringKeepsTheHostsOwn) {
  StartWithoutPlugin().faults.Hide("REALSetStringEncoding");
  support::LoadPluginUnderTest(Host());
  const PictureRef picture = Plain(3, 2, {1, 2, 3});
  const StringRef string = Write(picture);
  ASSERT_TRUE(string);
  EXPECT_EQ(string->Bytes(), Written(picture));
  EXPECT_EQ(string->Encoding(), kUnknown);
}

TEST_F(BinaryStringTest, OldHostsGiveTheirBytesAnotherWay) {
  StartWithoutPlugin().faults.Hide("PluginGetStringData");
  support::LoadPluginUnderTest(Host());
  const std::string bytes = WithHeader(3, 2, NoisePixels(3, 2, random));
  EXPECT_TRUE(IsPictureOf(Read(bytes), 3, 2, bytes));

  StartWithoutPlugin().faults.Hide("PluginGetStringData");
  Host().faults.Hide("StringGetCString");
  support::LoadPluginUnderTest(Host());
  EXPECT_FALSE(Read(bytes));

  Start();
  Host().faults.FailAlways("PluginGetStringData");
  EXPECT_FALSE(Read(bytes));
}

TEST_F(BinaryStringTest, WithoutANewPictureTheResultIsNil) {
  for (const host::Application application :
       {host::Application::kDesktop, host::Application::kConsole}) {
    host::Settings settings;
    settings.application = application;
    Start(settings);
    const std::string bytes = WithHeader(3, 2, NoisePixels(3, 2, random));
    Host().faults.FailAlways("newPicture");
    EXPECT_FALSE(Read(bytes));
    Host().faults.Clear();
    Host().faults.FailAlways("REALLockPictureDescription");
    EXPECT_FALSE(Read(bytes));
    Host().faults.Clear();

    StartWithoutPlugin(settings).faults.Hide("newPicture");
    support::LoadPluginUnderTest(Host());
    EXPECT_FALSE(Read(bytes));
  }
}

}  // namespace
}  // namespace binary_string
