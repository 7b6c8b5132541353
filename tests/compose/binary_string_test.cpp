#include <climits>

#include "tests/support/fixture.h"

namespace {

using host::PictureLayout;
using support::At;
using support::Bytes;
using support::FillWithNoise;
using support::IsNewPicture;
using support::LayoutPair;
using support::PictureRef;
using support::Random;
using support::Rgb;

using Result = host::Ref<host::Picture>;
using StringRef = host::Ref<host::String>;

constexpr uint32_t kAscii = 0x600;
constexpr uint32_t kUnknown = 0xFFFF;

std::string BigEndian(uint32_t value) {
  return {static_cast<char>(value >> 24), static_cast<char>(value >> 16),
          static_cast<char>(value >> 8), static_cast<char>(value)};
}

std::string Header(uint32_t size, int32_t width, int32_t height, uint32_t offset = 40) {
  return "PPIC" + BigEndian(size) + BigEndian(static_cast<uint32_t>(width)) +
         BigEndian(static_cast<uint32_t>(height)) + BigEndian(32) + BigEndian(offset) +
         std::string(16, '\0');
}

// The header of a string that this follows, and it.
std::string WithHeader(int32_t width, int32_t height, const std::string& pixels) {
  return Header(static_cast<uint32_t>(40 + pixels.size()), width, height) + pixels;
}

// What the writer makes of a picture.
std::string Written(const PictureRef& picture) {
  std::string pixels;
  for (int32_t y = 0; y < picture->Height(); ++y) {
    for (int32_t x = 0; x < picture->Width(); ++x) {
      const Rgb colour = At(picture, x, y);
      pixels += static_cast<char>(colour.red);
      pixels += static_cast<char>(colour.green);
      pixels += static_cast<char>(colour.blue);
    }
  }
  return WithHeader(picture->Width(), picture->Height(), pixels);
}

// Random bytes for a picture of this size.
std::string NoisePixels(int32_t width, int32_t height, Random& random) {
  std::string pixels(static_cast<size_t>(width) * static_cast<size_t>(height) * 3, '\0');
  for (char& byte : pixels) byte = static_cast<char>(random.Byte());
  return pixels;
}

class BinaryStringTest : public support::PluginTest {
 protected:
  PictureRef Noise(int32_t width, int32_t height, const PictureLayout& layout) {
    PictureRef picture = Host().NewPicture(width, height, layout);
    FillWithNoise(picture, random);
    return picture;
  }
  PictureRef Plain(int32_t width, int32_t height, Rgb colour) {
    PictureRef picture = Host().NewPicture(width, height);
    support::Fill(picture, colour);
    return picture;
  }

  StringRef Write(const PictureRef& picture) {
    return CallGlobal<StringRef>("PicturetoBinaryStringKRT", picture);
  }
  Result Read(const StringRef& data) {
    return CallGlobal<Result>("BinaryStringtoPictureKRT", data);
  }
  Result Read(const std::string& bytes) { return Read(Host().NewString(bytes, kUnknown)); }

  // A picture whose pixels are those that stand in `bytes` from `offset` on.
  static ::testing::AssertionResult IsPictureOf(const Result& actual, int32_t width, int32_t height,
                                                const std::string& bytes, size_t offset = 40) {
    return IsNewPicture(actual, width, height, false, [&](int32_t x, int32_t y) {
      const size_t place =
          offset +
          (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)) * 3;
      return Rgb{static_cast<uint8_t>(bytes[place]), static_cast<uint8_t>(bytes[place + 1]),
                 static_cast<uint8_t>(bytes[place + 2])};
    });
  }

  Random random{0xB1A5};
};

TEST_F(BinaryStringTest, OnePixelIs43BytesAsWorkedOut) {
  const StringRef string = Write(Plain(1, 1, {0xC8, 0x02, 0x7F}));
  const unsigned char expected[] = {
      0x50, 0x50, 0x49, 0x43, 0, 0, 0, 0x2B, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0,    0x20, 0,   0,
      0,    0x28, 0,    0,    0, 0, 0, 0,    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xC8, 2,    0x7F};
  ASSERT_TRUE(string);
  EXPECT_EQ(string->Bytes(), std::string(reinterpret_cast<const char*>(expected), 43));
}

TEST_F(BinaryStringTest, EveryLayoutIsWrittenByTheTable) {
  for (const LayoutPair& pair : support::AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (int32_t round = 0; round < 20; ++round) {
      const int32_t width = random.OneIn(3) ? random.Between(1, 4) : random.Between(5, 67);
      const PictureRef picture = Noise(width, random.Between(1, 5), pair.source);
      const std::vector<uint8_t> before = Bytes(picture);
      const StringRef string = Write(picture);
      ASSERT_TRUE(string);
      EXPECT_EQ(string->Bytes(), Written(picture)) << "seed " << support::Seed();
      EXPECT_EQ(Bytes(picture), before);
      ASSERT_FALSE(HasFailure());
    }
  }
}

TEST_F(BinaryStringTest, EveryLayoutIsReadByTheTable) {
  for (const LayoutPair& pair : support::AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (int32_t round = 0; round < 8; ++round) {
      const int32_t width = random.OneIn(3) ? random.Between(1, 4) : random.Between(5, 67);
      const int32_t height = random.Between(1, 5);
      const std::string bytes = WithHeader(width, height, NoisePixels(width, height, random));
      EXPECT_TRUE(IsPictureOf(Read(bytes), width, height, bytes));
      ASSERT_FALSE(HasFailure());
    }
  }
}

TEST_F(BinaryStringTest, ARoundTripLosesAlphaAndMaskOnly) {
  for (const LayoutPair& pair : support::AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef picture = Noise(23, 3, pair.source);
    picture->SetMask(Noise(23, 3, pair.source));
    const Result back = Read(Write(picture));
    EXPECT_TRUE(
        IsNewPicture(back, 23, 3, false, [&](int32_t x, int32_t y) { return At(picture, x, y); }));
    EXPECT_FALSE(back->Mask());
  }
}

TEST_F(BinaryStringTest, TheEncodingIsAsciiWhereEveryByteIsBelow128) {
  const StringRef low = Write(Plain(2, 2, {0, 64, 127}));
  EXPECT_EQ(low->Encoding(), kAscii);
  for (const Rgb& colour : {Rgb{128, 0, 0}, Rgb{0, 128, 0}, Rgb{0, 0, 128}}) {
    EXPECT_EQ(Write(Plain(2, 2, colour))->Encoding(), kUnknown);
  }
  // 40 + 3 x 30 is 130: the length field itself has a byte above 127.
  EXPECT_EQ(Write(Plain(29, 1, {}))->Encoding(), kAscii);
  EXPECT_EQ(Write(Plain(30, 1, {}))->Encoding(), kUnknown);
}

TEST_F(BinaryStringTest, OneHighByteAnywhereMakesTheEncodingUnknown) {
  // 40 + 3 x 64 x 67 is 0x3268, so that the header has no byte above 127.
  const PictureRef picture = Plain(64, 67, {0, 0, 0});
  EXPECT_EQ(Write(picture)->Encoding(), kAscii);
  // The first and the last pixel, and those on either side of byte 4096.
  for (const auto& [x, y] :
       {std::pair{0, 0}, std::pair{7, 21}, std::pair{8, 21}, std::pair{63, 66}}) {
    for (const Rgb& colour : {Rgb{128, 0, 0}, Rgb{0, 0, 128}}) {
      support::Put(picture, x, y, colour);
      EXPECT_EQ(Write(picture)->Encoding(), kUnknown) << x << ", " << y;
    }
    support::Put(picture, x, y, {127, 127, 127});
    EXPECT_EQ(Write(picture)->Encoding(), kAscii) << x << ", " << y;
    support::Put(picture, x, y, {0, 0, 0});
  }
}

TEST_F(BinaryStringTest, DepthAndReservedBytesAreIgnored) {
  std::string bytes = WithHeader(2, 2, NoisePixels(2, 2, random));
  for (const size_t place : {16U, 17U, 18U, 19U, 24U, 30U, 39U}) bytes[place] = '\x99';
  EXPECT_TRUE(IsPictureOf(Read(bytes), 2, 2, bytes));
}

TEST_F(BinaryStringTest, PixelsAreReadFromTheOffset) {
  const std::string pixels = NoisePixels(3, 2, random);
  for (const uint32_t offset : {41U, 60U, 1000U}) {
    const auto size = static_cast<uint32_t>(offset + pixels.size());
    const std::string bytes =
        Header(size, 3, 2, offset) + std::string(offset - 40, '\x77') + pixels;
    EXPECT_TRUE(IsPictureOf(Read(bytes), 3, 2, bytes, offset)) << offset;
  }
  // An offset into the header is as good as any other.
  const std::string inside = Header(58, 3, 2, 20) + pixels;
  EXPECT_TRUE(IsPictureOf(Read(inside), 3, 2, inside, 20));
}

TEST_F(BinaryStringTest, BytesBehindThePixelsAreIgnored) {
  const std::string bytes = WithHeader(2, 2, NoisePixels(2, 3, random));
  EXPECT_TRUE(IsPictureOf(Read(bytes), 2, 2, bytes));
}

TEST_F(BinaryStringTest, AnyEncodingIsReadAsStored) {
  const std::string bytes = WithHeader(3, 2, NoisePixels(3, 2, random));
  for (const uint32_t encoding : {kAscii, kUnknown, 0x08000100U, 0x100U, 0U}) {
    EXPECT_TRUE(IsPictureOf(Read(Host().NewString(bytes, encoding)), 3, 2, bytes)) << encoding;
  }
}

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
