#include "tests/tonal/pixel_rule.h"

namespace {

using namespace support;

// The low 32 bits of a whole number, as a signed one.
int64_t Wrapped(int64_t value) {
  const int64_t low = value & 0xFFFFFFFF;
  return low >= 0x80000000 ? low - 0x100000000 : low;
}

int Pushed(int channel, int grey, int64_t factor) {
  const int64_t product = Wrapped((channel - grey) * factor);
  const int64_t magnitude = (product < 0 ? -product : product) / 255;
  const int64_t value = grey + (product < 0 ? -magnitude : magnitude);
  return value < 0 ? 0 : value > 255 ? 255 : static_cast<int>(value);
}

Rgb Saturated(Rgb p, int32_t amount) {
  const int grey = (p.red + 2 * p.green + p.blue) / 4;
  const int64_t factor = Wrapped(int64_t{amount} + 255);
  return {Pushed(p.red, grey, factor), Pushed(p.green, grey, factor), Pushed(p.blue, grey, factor)};
}

class Saturation : public PixelRuleTest {
 protected:
  Operation With(int32_t amount) {
    return [=, this](const PictureRef& picture) {
      return Call<PictureRef>("ChangeSaturationKRT", picture, amount);
    };
  }
  void ExpectRule(int32_t amount, const PictureRef& picture) {
    SCOPED_TRACE(::testing::Message() << "amount " << amount << ", seed " << Seed());
    ExpectFollows(
        With(amount), [=](Rgb p) { return Saturated(p, amount); }, picture);
  }

  // Every distance from grey that a channel can have, on both sides.
  PictureRef EveryDistance() {
    PictureRef picture = Host().NewPicture(256, 6);
    for (int32_t x = 0; x < 256; ++x) {
      Put(picture, x, 0, {x, 0, 0});
      Put(picture, x, 1, {0, x, 0});
      Put(picture, x, 2, {0, 0, x});
      Put(picture, x, 3, {255, 255, x});
      Put(picture, x, 4, {255, x, 255});
      Put(picture, x, 5, {x, 255, 255});
    }
    return picture;
  }
};

int32_t AnyAmount(Random& random) {
  switch (random.Between(0, 3)) {
    case 0:
      return random.Between(-300, 300);
    case 1:
      return random.Between(-40000, 40000);
    case 2:
      return random.Between(-9000000, 9000000);  // where products begin to wrap
    default:
      return static_cast<int32_t>(random.Bits());
  }
}

TEST_F(Saturation, FollowsTheRuleInEveryLayout) {
  Random random(330);
  for (const LayoutPair& pair : AllLayoutPairs()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    for (const Size size : Sizes()) {
      ExpectRule(random.Between(-300, 300), Noise(size, pair.source, random));
      ExpectRule(AnyAmount(random), Noise(size, pair.source, random));
    }
  }
}

TEST_F(Saturation, FollowsTheRuleForAnyAmount) {
  Random random(331);
  Start();
  const PictureRef picture = EveryDistance();
  for (const int32_t amount : {0,
                               1,
                               -1,
                               254,
                               255,
                               256,
                               -254,
                               -255,
                               -256,
                               -510,
                               65025,
                               -65535,
                               32385,
                               -32895,
                               8421504,
                               8421505,
                               11243000,
                               -8421759,
                               -8421760,
                               INT32_MAX - 255,
                               INT32_MAX - 254,
                               INT32_MAX,
                               INT32_MIN,
                               INT32_MIN + 1,
                               INT32_MIN + 255}) {
    ExpectRule(amount, picture);
  }
  for (int i = 0; i < 150; ++i) ExpectRule(AnyAmount(random), picture);
}

// Factors up to 127 * 255 + 254 in size take a way of their own.
TEST_F(Saturation, FollowsTheRuleForEveryRestOfADivisionBy255) {
  Start();
  const PictureRef picture = EveryDistance();
  for (int32_t rest = 0; rest < 255; ++rest) {
    const int32_t whole = rest % 5 * 255;
    ExpectRule(whole + rest - 255, picture);
    ExpectRule(-whole - rest - 255, picture);
  }
  for (const int32_t factor : {32638, 32639, 32640, 32641, -32638, -32639, -32640, -32641}) {
    ExpectRule(factor - 255, picture);
  }
}

TEST_F(Saturation, ZeroCopiesTheColoursOpaque) {
  for (const LayoutPair& pair : AllSourceLayouts()) {
    SCOPED_TRACE(pair.name);
    Start(pair.settings);
    ExpectFollows(
        With(0), [](Rgb p) { return p; }, EveryValue(pair.source));
  }
}

TEST_F(Saturation, Minus255IsGrey) {
  Start();
  ExpectPixel(With(-255), {255, 0, 0}, {63, 63, 63});
  ExpectPixel(With(-255), {0, 255, 0}, {127, 127, 127});
}

TEST_F(Saturation, TwoHundredFiftyFiveDoublesTheDistanceFromGrey) {
  Start();
  ExpectPixel(With(255), {200, 100, 100}, {255, 75, 75});
}

TEST_F(Saturation, BelowMinus255TurnsTheColourAboutGrey) {
  Start();
  // Grey is 125; the distances 75 and -25 change sign.
  ExpectPixel(With(-510), {200, 100, 100}, {50, 150, 150});
}

TEST_F(Saturation, NegativeDistancesAreTruncatedTowardZero) {
  Start();
  ExpectPixel(With(-128), {0, 255, 0}, {64, 190, 64});
}

TEST_F(Saturation, GreyStaysGreyForAnyAmount) {
  Start();
  const PictureRef greys = Host().NewPicture(256, 1);
  for (int32_t x = 0; x < 256; ++x) Put(greys, x, 0, {x, x, x});
  for (const int32_t amount : {-255, -1000, 77, 1000000, INT32_MAX, INT32_MIN}) {
    SCOPED_TRACE(amount);
    ExpectFollows(
        With(amount), [](Rgb p) { return p; }, greys);
  }
}

TEST_F(Saturation, HugeAmountsWrapInThirtyTwoBits) {
  Start();
  // The factor is 2^24. Grey is 63: 192 * 2^24 wraps to -2^30, below 0; -63 * 2^24 doesn't wrap.
  ExpectPixel(With(16777216 - 255), {255, 0, 0}, {0, 0, 0});
  // Grey is 127: 128 * 2^24 wraps to -2^31, below 0; -127 * 2^24 doesn't wrap.
  ExpectPixel(With(16777216 - 255), {0, 255, 0}, {0, 0, 0});
  // Grey is 191: -191 * 2^24 wraps to 65 * 2^24, above 255.
  ExpectPixel(With(16777216 - 255), {255, 255, 0}, {255, 255, 255});
  // The factor itself wraps to -2^31: twice any distance is gone, an odd one leaves -2^31.
  ExpectPixel(With(INT32_MAX - 254), {129, 128, 127}, {0, 128, 0});
  ExpectPixel(With(INT32_MAX - 254), {130, 128, 126}, {130 - 2, 128, 126 + 2});
}

TEST_F(Saturation, GivesNilOnFailure) { ExpectNilOnFailure(With(10)); }

}  // namespace
