#include <array>
#include <cmath>
#include <limits>

#include "tests/tonal/pixel_rule.h"

namespace {

using namespace support;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The rules restated.

int32_t Truncated(double t) {
  if (std::isnan(t)) return INT32_MIN;
  const double whole = std::trunc(t);
  if (whole < -2147483648.0 || whole > 2147483647.0) return INT32_MIN;
  return static_cast<int32_t>(whole);
}

int Clamped(double t) {
  const int32_t whole = Truncated(t);
  if (whole > 255) return 255;
  if (whole < 0) return 0;
  return whole;
}

int LowEightBits(double t) {
  const uint32_t bits = static_cast<uint32_t>(Truncated(t));
  return static_cast<int>(bits % 256);
}

double Contrasted(int v, double contrast) {
  const double k = contrast + 1.0;
  return (v - 127) * k + 127;
}

double Rescaled(double value, double brightness) {
  double scale = (255.0 - brightness) / 255.0;
  double offset = brightness;
  if (brightness < 0) {
    scale = (brightness + 255.0) / 255.0;
    offset = 0;
  }
  return value * scale + offset;
}

using Arguments = std::vector<double>;

// A method of the family: what channel `c` (0 red, 1 green, 2 blue) makes of v.
struct Method {
  const char* name;
  size_t parameters;
  int (*rule)(const Arguments& a, size_t c, int v);
};

const Method kMethods[] = {
    {"ChangeContrastKRT", 1,
     [](const Arguments& a, size_t, int v) { return Clamped(Contrasted(v, a[0])); }},
    {"ChangeContrastKRT", 3,
     [](const Arguments& a, size_t c, int v) { return Clamped(Contrasted(v, a[c])); }},
    {"ChangeBrightnessAbsoluteKRT", 1,
     [](const Arguments& a, size_t, int v) { return Clamped(v + a[0]); }},
    {"ChangeBrightnessAbsoluteKRT", 3,
     [](const Arguments& a, size_t c, int v) { return Clamped(v + a[c]); }},
    {"ChangeBrightnessLinearKRT", 1,
     [](const Arguments& a, size_t, int v) { return LowEightBits(Rescaled(v, a[0])); }},
    {"ChangeBrightnessLinearKRT", 3,
     [](const Arguments& a, size_t c, int v) { return LowEightBits(Rescaled(v, a[c])); }},
    {"ChangeContrastBrightnessAbsoluteKRT", 2,
     [](const Arguments& a, size_t, int v) { return Clamped(Contrasted(v, a[0]) + a[1]); }},
    {"ChangeContrastBrightnessAbsoluteKRT", 6,
     [](const Arguments& a, size_t c, int v) { return Clamped(Contrasted(v, a[c]) + a[3 + c]); }},
    {"ChangeContrastBrightnessLinearKRT", 2,
     [](const Arguments& a, size_t, int v) {
       return Clamped(Rescaled(Contrasted(v, a[0]), a[1]));
     }},
    {"ChangeContrastBrightnessLinearKRT", 6,
     [](const Arguments& a, size_t c, int v) {
       return Clamped(Rescaled(Contrasted(v, a[c]), a[3 + c]));
     }},
    {"ChangeCustomKRT", 2,
     [](const Arguments& a, size_t, int v) { return Clamped(v * a[0] + a[1]); }},
    // Ra, Rb, Ga, Gb, Ba, Bb; green has red's factor.
    {"ChangeCustomKRT", 6,
     [](const Arguments& a, size_t c, int v) {
       const double factor = c == 2 ? a[4] : a[0];
       return Clamped(v * factor + a[2 * c + 1]);
     }},
};

class BrightnessContrast : public PixelRuleTest {
 protected:
  PictureRef Apply(const char* name, const PictureRef& picture, const Arguments& a) {
    switch (a.size()) {
      case 1:
        return Call<PictureRef>(name, picture, a[0]);
      case 2:
        return Call<PictureRef>(name, picture, a[0], a[1]);
      case 3:
        return Call<PictureRef>(name, picture, a[0], a[1], a[2]);
      default:
        return Call<PictureRef>(name, picture, a[0], a[1], a[2], a[3], a[4], a[5]);
    }
  }

  Operation With(const char* name, const Arguments& a) {
    return [=, this](const PictureRef& picture) { return Apply(name, picture, a); };
  }

  // The call's result beside the restated rule.
  void ExpectRule(const Method& method, const Arguments& a, const PictureRef& picture) {
    ::testing::Message message;
    message << method.name << "(";
    for (const double value : a) message << " " << value;
    SCOPED_TRACE(message << " ), seed " << Seed());
    ExpectFollows(
        With(method.name, a),
        [&](Rgb p) {
          return Rgb{method.rule(a, 0, p.red), method.rule(a, 1, p.green),
                     method.rule(a, 2, p.blue)};
        },
        picture);
  }
};

// What programs give: contrast about 0, brightness within the range.
Arguments Usual(const Method& method, Random& random) {
  Arguments a(method.parameters);
  for (double& value : a) value = random.OneIn(2) ? random.Real(-2, 4) : random.Real(-280, 280);
  return a;
}

// What they give by mistake, where the int32 range ends in the middle of a curve, and everything
// that a double can be.
Arguments Unusual(const Method& method, Random& random) {
  static const double special[] = {0.0,
                                   -0.0,
                                   1.0,
                                   -1.0,
                                   0.9,
                                   -0.9,
                                   255.0,
                                   -255.0,
                                   255.5,
                                   -255.5,
                                   256.0,
                                   -256.0,
                                   300.0,
                                   -300.0,
                                   1e10,
                                   -1e10,
                                   1e300,
                                   -1e300,
                                   1e308,
                                   5e-324,
                                   kNan,
                                   kInfinity,
                                   -kInfinity,
                                   2147483647.0,
                                   -2147483648.0,
                                   2147483647.0 - 128,
                                   -2147483648.0 - 128,
                                   std::numeric_limits<double>::max(),
                                   std::numeric_limits<double>::lowest()};
  Arguments a(method.parameters);
  for (double& value : a) {
    switch (random.Between(0, 4)) {
      case 0:
        value = special[random.Between(0, std::size(special) - 1)];
        break;
      case 1:  // by 128, by 255
        value = random.Real(-1.01, 1.01) * (random.OneIn(2) ? 16777216.0 : 8421504.6);
        break;
      case 2:
        value = std::ldexp(random.Real(-1, 1), random.Between(-60, 70));
        break;
      case 3:
        value = random.Between(-600, 600);
        break;
      default:
        value = random.Real(-2, 4);
    }
  }
  return a;
}

TEST_F(BrightnessContrast, FollowsTheRulesInEveryLayout) {
  Random random(320);
  for (const LayoutPair& pair : AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (const Method& method : kMethods) {
      for (const Size size : Sizes()) {
        ExpectRule(method, Usual(method, random), Noise(size, pair.source, random));
      }
      const PictureRef ramp = EveryValue(pair.source);
      ExpectRule(method, Usual(method, random), ramp);
      ExpectRule(method, Unusual(method, random), ramp);
      ExpectRule(method, Unusual(method, random), ramp);
    }
  }
}

TEST_F(BrightnessContrast, FollowsTheRulesForAnyArguments) {
  Random random(321);
  Start();
  const PictureRef ramp = EveryValue(host::PictureLayout::BitmapContext(host::kAlphaNoneSkipLast));
  for (const Method& method : kMethods) {
    for (int i = 0; i < 150; ++i) ExpectRule(method, Unusual(method, random), ramp);
    for (int i = 0; i < 50; ++i) ExpectRule(method, Usual(method, random), ramp);
  }
}

// Each argument in turn takes every value that could go wrong, while the others do nothing.
TEST_F(BrightnessContrast, FollowsTheRulesAroundEveryThreshold) {
  Start();
  const PictureRef ramp =
      EveryValue(host::PictureLayout::BitmapContext(host::kAlphaPremultipliedLast));
  for (const Method& method : kMethods) {
    for (size_t i = 0; i < method.parameters; ++i) {
      for (const double value : {-256.0,        -255.0001,     -255.0,
                                 -254.9999,     -128.0,        -127.0,
                                 -1.0000001,    -1.0,          -0.9999999,
                                 -0.0,          0.0,           0.9,
                                 1.0,           127.0,         128.0,
                                 254.9999,      255.0,         255.0001,
                                 256.0,         511.0,         512.0,
                                 1e10,          -1e10,         2147483392.0,
                                 2147483393.0,  2147483520.0,  2147483647.0,
                                 2147483648.0,  -2147483648.0, -2147483649.0,
                                 -2147483776.0, -2147483904.0, 16777214.0,
                                 16777215.0,    16777216.0,    -16777217.0,
                                 8421504.0,     8421505.0,     9007199254740993.0,
                                 kNan,          kInfinity,     -kInfinity}) {
        Arguments a(method.parameters, 0.5);
        a[i] = value;
        ExpectRule(method, a, ramp);
      }
    }
  }
}

TEST_F(BrightnessContrast, OneValueGivesWhatThreeEqualValuesGive) {
  Random random(322);
  Start();
  const PictureRef ramp = EveryValue(host::PictureLayout::BitmapContext(1));
  for (int i = 0; i < 100; ++i) {
    const Arguments pair = i % 2 == 0 ? Usual(kMethods[6], random) : Unusual(kMethods[6], random);
    const double c = pair[0];
    const double b = pair[1];
    for (const char* name :
         {"ChangeContrastKRT", "ChangeBrightnessAbsoluteKRT", "ChangeBrightnessLinearKRT"}) {
      EXPECT_EQ(Bytes(Apply(name, ramp, {c})), Bytes(Apply(name, ramp, {c, c, c})))
          << name << " " << c;
    }
    for (const char* name :
         {"ChangeContrastBrightnessAbsoluteKRT", "ChangeContrastBrightnessLinearKRT"}) {
      EXPECT_EQ(Bytes(Apply(name, ramp, {c, b})), Bytes(Apply(name, ramp, {c, c, c, b, b, b})))
          << name << " " << c << " " << b;
    }
    EXPECT_EQ(Bytes(Apply("ChangeCustomKRT", ramp, {c, b})),
              Bytes(Apply("ChangeCustomKRT", ramp, {c, b, c, b, c, b})))
        << c << " " << b;
  }
}

TEST_F(BrightnessContrast, NeutralArgumentsCopyTheColoursOpaque) {
  const auto same = [](Rgb p) { return p; };
  for (const LayoutPair& pair : AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    const PictureRef ramp = EveryValue(pair.source);
    ExpectFollows(With("ChangeContrastKRT", {0}), same, ramp);
    ExpectFollows(With("ChangeBrightnessAbsoluteKRT", {0}), same, ramp);
    ExpectFollows(With("ChangeBrightnessLinearKRT", {0}), same, ramp);
    ExpectFollows(With("ChangeContrastBrightnessAbsoluteKRT", {0, 0}), same, ramp);
    ExpectFollows(With("ChangeContrastBrightnessLinearKRT", {0, 0}), same, ramp);
    ExpectFollows(With("ChangeCustomKRT", {1, 0}), same, ramp);
  }
}

TEST_F(BrightnessContrast, NoContrastIsFlatGrey) {
  Start();
  ExpectFollows(
      With("ChangeContrastKRT", {-1}),
      [](Rgb) {
        return Rgb{127, 127, 127};
      },
      EveryValue({}));
}

TEST_F(BrightnessContrast, ContrastTurnsAbout127) {
  Start();
  ExpectPixel(With("ChangeContrastKRT", {1}), {0, 127, 255}, {0, 127, 255});
  ExpectPixel(With("ChangeContrastKRT", {1}), {63, 64, 190}, {0, 1, 253});
  ExpectPixel(With("ChangeContrastKRT", {1}), {191, 192, 128}, {255, 255, 129});
}

TEST_F(BrightnessContrast, LinearBrightnessEndsInWhiteAndBlack) {
  Start();
  const PictureRef ramp = EveryValue({});
  ExpectFollows(
      With("ChangeBrightnessLinearKRT", {255}),
      [](Rgb) {
        return Rgb{255, 255, 255};
      },
      ramp);
  ExpectFollows(
      With("ChangeBrightnessLinearKRT", {-255}),
      [](Rgb) {
        return Rgb{0, 0, 0};
      },
      ramp);
}

TEST_F(BrightnessContrast, LinearBrightnessRescalesWhatIsLeft) {
  Start();
  // 155.0 / 255 * 51 falls just short of 31.
  ExpectPixel(With("ChangeBrightnessLinearKRT", {-100}), {255, 0, 51}, {155, 0, 30});
  ExpectPixel(With("ChangeBrightnessLinearKRT", {100}), {0, 255, 51}, {100, 255, 131});
}

TEST_F(BrightnessContrast, LinearBrightnessIsNotClamped) {
  Start();
  ExpectPixel(With("ChangeBrightnessLinearKRT", {300}), {0, 0, 0}, {44, 44, 44});
  ExpectPixel(With("ChangeBrightnessAbsoluteKRT", {300}), {0, 0, 0}, {255, 255, 255});
  // 255 * (-300 + 255) / 255 = -45, the low byte of which is 211.
  ExpectPixel(With("ChangeBrightnessLinearKRT", {-300}), {255, 0, 255}, {211, 0, 211});
  ExpectPixel(With("ChangeBrightnessLinearKRT", {300, 0, 0}), {0, 9, 255}, {44, 9, 255});
}

TEST_F(BrightnessContrast, FractionsAreTruncatedTowardZero) {
  Start();
  ExpectPixel(With("ChangeBrightnessAbsoluteKRT", {0.9}), {5, 0, 254}, {5, 0, 254});
  ExpectPixel(With("ChangeBrightnessAbsoluteKRT", {-0.9}), {5, 0, 255}, {4, 0, 254});
  ExpectPixel(With("ChangeCustomKRT", {0.5, 0}), {255, 1, 3}, {127, 0, 1});
}

TEST_F(BrightnessContrast, CustomNeverReadsGreensOwnFactor) {
  Start();
  for (const double ga : {0.0, 1.0, -7.5, 1e300, kNan, kInfinity}) {
    SCOPED_TRACE(ga);
    ExpectPixel(With("ChangeCustomKRT", {2, 1, ga, 3, 0.5, 4}), {10, 20, 30}, {21, 43, 19});
  }
}

TEST_F(BrightnessContrast, WhatExceedsAnInt32IsBlackNotWhite) {
  Start();
  const Rgb black{0, 0, 0};
  for (const double beyond : {1e10, -1e10, kInfinity, -kInfinity, kNan}) {
    SCOPED_TRACE(beyond);
    ExpectPixel(With("ChangeBrightnessAbsoluteKRT", {beyond}), {9, 127, 255}, black);
    ExpectPixel(With("ChangeBrightnessLinearKRT", {beyond}), {60, 127, 200}, black);
    ExpectPixel(With("ChangeCustomKRT", {1, beyond}), {9, 127, 255}, black);
  }
  // 2147483520 + 127 is the largest int32.
  ExpectPixel(With("ChangeBrightnessAbsoluteKRT", {2147483520.0}), {127, 128, 126}, {255, 0, 255});
  // One channel beyond the range leaves the others alone.
  ExpectPixel(With("ChangeBrightnessAbsoluteKRT", {1e10, 1, -1}), {9, 9, 9}, {0, 10, 8});
  // The pivot stays where it is under any finite contrast.
  ExpectPixel(With("ChangeContrastKRT", {1e10}), {126, 127, 128}, {0, 127, 0});
}

TEST_F(BrightnessContrast, CombinationsApplyContrastFirst) {
  Start();
  // (100 - 127) * 2 + 127 = 73; then + 10; or 73 * 155 / 255 = 44.3 and 73 * 155 / 255 + 100.
  ExpectPixel(With("ChangeContrastBrightnessAbsoluteKRT", {1, 10}), {100, 0, 255}, {83, 0, 255});
  ExpectPixel(With("ChangeContrastBrightnessLinearKRT", {1, -100}), {100, 0, 255}, {44, 0, 232});
  ExpectPixel(With("ChangeContrastBrightnessLinearKRT", {1, 100}), {100, 127, 255},
              {144, 177, 255});
}

TEST_F(BrightnessContrast, GivesNilOnFailure) {
  for (const Method& method : kMethods) {
    SCOPED_TRACE(method.name);
    ExpectNilOnFailure(With(method.name, Arguments(method.parameters, 0.25)));
  }
}

}  // namespace
