// Values of the brightness and contrast family worked out by hand.
#include <gtest/gtest.h>

#include "tests/tonal/tone_test.h"

namespace tone {
namespace {

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
}  // namespace tone
