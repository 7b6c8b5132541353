#include <array>
#include <cmath>

#include "tests/classes/filter_test.h"

namespace {

using namespace support;

struct Tone {
  double factorR = 0.299, factorG = 0.587, factorB = 0.114;
  int32_t red = 0, green = 0, blue = 0;
};

int64_t Weight(double factor) {
  const double scaled = std::trunc(factor * 1024.0);
  const bool fits = scaled >= -2147483648.0 && scaled <= 2147483647.0;  // false for NaN
  return fits ? static_cast<int64_t>(scaled) : kLeast;
}

int64_t Wrap(int64_t value) {
  const int64_t modulus = int64_t{1} << 32;
  const int64_t rest = ((value % modulus) + modulus) % modulus;
  return rest >= modulus / 2 ? rest - modulus : rest;
}

int Channel(int64_t grey, int32_t offset) {
  const int64_t value = Wrap(grey + offset);
  return value < 0 ? 0 : value > 255 ? 255 : static_cast<int>(value);
}

Rgb Toned(Rgb p, const Tone& tone) {
  const int64_t sum =
      p.red * Weight(tone.factorR) + p.green * Weight(tone.factorG) + p.blue * Weight(tone.factorB);
  const int64_t grey = Wrap(sum) / 1024;
  return {Channel(grey, tone.red), Channel(grey, tone.green), Channel(grey, tone.blue)};
}

class Sepia : public FilterTest {
 protected:
  Sepia() : FilterTest("PictureSepiaKRT") {}

  void SetTone(const Filter& filter, const Tone& tone) {
    Set(filter, "FactorRed", tone.factorR);
    Set(filter, "FactorBlue", tone.factorG);
    Set(filter, "FactorGreen", tone.factorB);
    Set(filter, "SepiaRed", tone.red);
    Set(filter, "SepiaGreen", tone.green);
    Set(filter, "SepiaBlue", tone.blue);
  }

  void ExpectTones(const PictureRef& source, const Tone& tone, const Bounds& bounds = {}) {
    SCOPED_TRACE(::testing::Message()
                 << "factors " << tone.factorR << " " << tone.factorG << " " << tone.factorB
                 << ", offsets " << tone.red << " " << tone.green << " " << tone.blue);
    const Filter filter = NewFilter(source);
    SetTone(filter, tone);
    ExpectFilters(filter, bounds, false, [&](Rgb p) { return Toned(p, tone); });
  }

  // What becomes of a picture of one colour.
  Rgb ToneOfColour(Rgb colour, const Tone& tone) {
    const PictureRef source = Host().NewPicture(2, 2);
    Fill(source, colour);
    const Filter filter = NewFilter(source);
    SetTone(filter, tone);
    EXPECT_TRUE(Run(filter));
    return At(Destination(filter), 1, 1);
  }
};

TEST_F(Sepia, FollowsTheRuleInEveryLayout) {
  Random random(810);
  for (const LayoutPair& pair : AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (const auto& [width, height] :
         {std::array{1, 1}, {1, 7}, {5, 1}, {16, 3}, {33, 5}, {130, 2}}) {
      const PictureRef source = Noise(width, height, pair.source, random);
      ExpectTones(source, {});
      ExpectTones(source, {0.299, 0.587, 0.114, 40, 20, -30});
    }
    ExpectTones(Noise(19, 9, pair.source, random), {}, {3, 2, 15, 8});
  }
}

TEST_F(Sepia, FollowsTheRuleForAnyFactorsAndOffsets) {
  Random random(811);
  Start();
  const PictureRef source = Noise(61, 7, {}, random);
  const double infinity = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double factor :
       {0.0, -0.0, 1.0, -1.0, 0.0009, 32.0, -32.0, 8224.0, 2097151.0, 2097151.9995, 2097152.0,
        -2097152.0, -2097152.0009, -2097153.0, 1e10, -1e10, infinity, -infinity, nan}) {
    ExpectTones(source, {factor, 0.587, 0.114, 1, 2, 3});
    ExpectTones(source, {0.299, factor, 0.114, 1, 2, 3});
    ExpectTones(source, {0.299, 0.587, factor, 1, 2, 3});
    ExpectTones(source, {factor, factor, factor, 0, kLeast, kMost});
  }
  for (int i = 0; i < 60; ++i) {
    const double reach = std::pow(10.0, random.Real(-1, 7));
    const auto offset = [&] {
      return random.OneIn(4) ? static_cast<int32_t>(random.Bits()) : random.Between(-300, 300);
    };
    ExpectTones(source, {random.Real(-reach, reach), random.Real(-reach, reach),
                         random.Real(-reach, reach), offset(), offset(), offset()});
  }
}

TEST_F(Sepia, BoundsSayHowManyPixelsAndNotWhere) {
  Random random(812);
  for (const auto application : {host::Application::kDesktop, host::Application::kConsole}) {
    host::Settings settings;
    settings.application = application;
    Start(settings);
    const host::PictureLayout layout =
        application == host::Application::kDesktop ? settings.opaqueLayout : settings.consoleLayout;
    const PictureRef source = Noise(25, 15, layout, random);
    for (const Bounds& bounds : ManyBounds(random)) ExpectTones(source, {}, bounds);
  }
}

TEST_F(Sepia, MinX10AndMaxX50ProcessColumns0To39) {
  Start();
  const PictureRef source = Host().NewPicture(100, 1);
  Fill(source, {0, 0, 0});
  const Filter filter = NewFilter(source);
  SetBounds(filter, {10, 0, 50, 0});
  ASSERT_TRUE(Run(filter));
  EXPECT_EQ(At(Destination(filter), 0, 0), (Rgb{0, 0, 0}));
  EXPECT_EQ(At(Destination(filter), 39, 0), (Rgb{0, 0, 0}));
  EXPECT_EQ(At(Destination(filter), 40, 0), (Rgb{255, 255, 255}));
  EXPECT_EQ(At(Destination(filter), 49, 0), (Rgb{255, 255, 255}));
}

TEST_F(Sepia, NoRowsAreStillASuccess) {
  Start();
  const Filter filter = NewFilter(Host().NewPicture(3, 4));
  SetBounds(filter, {0, 4, 0, 0});
  EXPECT_TRUE(Run(filter));
  EXPECT_TRUE(IsNewPicture(Destination(filter), 3, 4, false,
                           [](int32_t, int32_t) { return std::nullopt; }));
}

TEST_F(Sepia, DefaultsMakeRed76) { EXPECT_EQ(ToneOfColour({255, 0, 0}, {}), (Rgb{76, 76, 76})); }

TEST_F(Sepia, DefaultsMakeWhite254) {
  EXPECT_EQ(ToneOfColour({255, 255, 255}, {}), (Rgb{254, 254, 254}));
}

TEST_F(Sepia, OffsetsAreClamped) {
  EXPECT_EQ(ToneOfColour({0, 0, 0}, {0.299, 0.587, 0.114, 300, 0, -300}), (Rgb{255, 0, 0}));
  EXPECT_EQ(ToneOfColour({255, 255, 255}, {0.299, 0.587, 0.114, 300, 1, -300}), (Rgb{255, 255, 0}));
}

// -306 * 255 / 1024 is -76.2; the offsets go on top of -76.
TEST_F(Sepia, NegativeSumsAreTruncatedBeforeTheOffsets) {
  EXPECT_EQ(ToneOfColour({255, 0, 0}, {-0.299, 0, 0, 76, 77, 100}), (Rgb{0, 1, 24}));
}

TEST_F(Sepia, SumsAndOffsetsWrap) {
  // Weight 0x7FFFFC00: times 2 is 0xFFFFF800, which is -2048 and makes a grey of -2.
  EXPECT_EQ(ToneOfColour({2, 0, 0}, {2097151.0, 0, 0, 3, 2, 102}), (Rgb{1, 0, 100}));
  // A grey of 1 takes the greatest offset past the end.
  EXPECT_EQ(ToneOfColour({1, 0, 0}, {1.0, 0, 0, kMost, kMost - 1, 0}), (Rgb{0, 255, 1}));
}

TEST_F(Sepia, FactorBlueIsTheWeightOfGreenAndFactorGreenThatOfBlue) {
  Start();
  const PictureRef source = Host().NewPicture(1, 1);
  Put(source, 0, 0, {0, 200, 0});
  const Filter withoutGreen = NewFilter(source);
  Set(withoutGreen, "FactorBlue", 0.0);
  ASSERT_TRUE(Run(withoutGreen));
  EXPECT_EQ(At(Destination(withoutGreen), 0, 0), (Rgb{0, 0, 0}));

  Put(source, 0, 0, {0, 0, 200});
  const Filter withoutBlue = NewFilter(source);
  Set(withoutBlue, "FactorGreen", 0.0);
  ASSERT_TRUE(Run(withoutBlue));
  EXPECT_EQ(At(Destination(withoutBlue), 0, 0), (Rgb{0, 0, 0}));
}

TEST_F(Sepia, ANewObjectHasTheDefaults) {
  Start();
  const Filter filter = NewFilter();
  EXPECT_EQ(GetDouble(filter, "FactorRed"), 0.299);
  EXPECT_EQ(GetDouble(filter, "FactorBlue"), 0.587);
  EXPECT_EQ(GetDouble(filter, "FactorGreen"), 0.114);
  for (const char* property :
       {"MinX", "MinY", "MaxX", "MaxY", "SepiaRed", "SepiaGreen", "SepiaBlue"}) {
    EXPECT_EQ(GetInteger(filter, property), 0) << property;
  }
  EXPECT_FALSE(GetPicture(filter, "SourcePicture"));
  EXPECT_FALSE(Destination(filter));
}

TEST_F(Sepia, PropertiesKeepWhatIsSet) {
  Start();
  const Filter filter = NewFilter();
  int32_t value = -7;
  for (const char* property :
       {"MinX", "MinY", "MaxX", "MaxY", "SepiaRed", "SepiaGreen", "SepiaBlue"}) {
    Set(filter, property, value++);
  }
  Set(filter, "FactorRed", 0.25);
  Set(filter, "FactorGreen", 0.5);
  Set(filter, "FactorBlue", 0.75);
  value = -7;
  for (const char* property :
       {"MinX", "MinY", "MaxX", "MaxY", "SepiaRed", "SepiaGreen", "SepiaBlue"}) {
    EXPECT_EQ(GetInteger(filter, property), value++) << property;
  }
  EXPECT_EQ(GetDouble(filter, "FactorRed"), 0.25);
  EXPECT_EQ(GetDouble(filter, "FactorGreen"), 0.5);
  EXPECT_EQ(GetDouble(filter, "FactorBlue"), 0.75);
}

TEST_F(Sepia, ThePreviousDestinationKeepsItsReference) {
  Start();
  ExpectLeft(1);
  const Filter filter = NewFilter(Host().NewPicture(2, 2));
  ASSERT_TRUE(Run(filter));
  const PictureRef first = Destination(filter);
  ASSERT_TRUE(Run(filter));
  EXPECT_FALSE(Destination(filter) == first);
  EXPECT_EQ(first->References(), 2);
}

TEST_F(Sepia, CloseDropsBothPicturesAndMayBeRepeated) {
  Start();
  const PictureRef source = Host().NewPicture(2, 2);
  const Filter filter = NewFilter(source);
  ASSERT_TRUE(Run(filter));
  const PictureRef destination = Destination(filter);
  EXPECT_EQ(source->References(), 2);
  for (int i = 0; i < 2; ++i) {
    Close(filter);
    EXPECT_EQ(source->References(), 1);
    EXPECT_EQ(destination->References(), 1);
    EXPECT_FALSE(GetPicture(filter, "SourcePicture"));
    EXPECT_FALSE(Destination(filter));
  }
  EXPECT_FALSE(Run(filter));
}

TEST_F(Sepia, AFailureLeavesTheDestinationAsItWas) {
  Start();
  const PictureRef source = Host().NewPicture(2, 2);
  const Filter filter = NewFilter(source);
  ASSERT_TRUE(Run(filter));
  const PictureRef destination = Destination(filter);
  const auto expectFailure = [&](const char* why) {
    EXPECT_FALSE(Run(filter)) << why;
    EXPECT_TRUE(Destination(filter) == destination) << why;
    EXPECT_EQ(destination->References(), 2) << why;
  };

  Set(filter, "SourcePicture", host::Nil{});
  expectFailure("no source");
  Set(filter, "SourcePicture", Host().NewPicture(40000, 1));
  expectFailure("a source 40000 wide");
  Set(filter, "SourcePicture", Host().NewPicture(1, 32768));
  expectFailure("a source 32768 high");
  Set(filter, "SourcePicture",
      Host().NewPicture(2, 2, host::PictureLayout::BitmapContext(5, 0, 16)));
  expectFailure("a source of 16 bits");
  Set(filter, "SourcePicture", source);
  Host().faults.FailCall("newPicture");
  expectFailure("no new picture");
  Host().faults.FailCall("REALLockPictureDescription", 2);
  expectFailure("the new picture can't be opened");
}

TEST_F(Sepia, AHostWithoutNewPictureMakesRunFail) {
  StartWithoutPlugin();
  Host().faults.Hide("newPicture");
  LoadPluginUnderTest(Host());
  const Filter filter = NewFilter(Host().NewPicture(2, 2));
  EXPECT_FALSE(Run(filter));
  EXPECT_FALSE(Destination(filter));
}

TEST_F(Sepia, TheGreatestWidthIsProcessed) {
  Start();
  const PictureRef source = Host().NewPicture(32767, 1);
  Fill(source, {255, 0, 0});
  const Filter filter = NewFilter(source);
  ASSERT_TRUE(Run(filter));
  EXPECT_EQ(At(Destination(filter), 32766, 0), (Rgb{76, 76, 76}));
}

TEST_F(Sepia, AVectorPictureIsDrawnFirst) {
  Start();
  const PictureRef source = Host().NewVectorPicture(3, 2, [](int32_t x, int32_t) {
    return std::optional<uint32_t>(x == 0 ? 0xFF0000 : 0xFFFFFF);
  });
  const Filter filter = NewFilter(source);
  ASSERT_TRUE(Run(filter));
  EXPECT_EQ(At(Destination(filter), 0, 1), (Rgb{76, 76, 76}));
  EXPECT_EQ(At(Destination(filter), 2, 1), (Rgb{254, 254, 254}));
}

}  // namespace
