// Every method of the family beside its rule, for usual and unusual arguments.
#include <gtest/gtest.h>

#include "tests/tonal/tone_test.h"

namespace tone {
namespace {

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

}  // namespace
}  // namespace tone
