// What the tests of PictureSepiaKRT share: its rule restated.
#pragma once

#include <array>
#include <cmath>

#include "tests/classes/filter_test.h"

namespace sepia {

using namespace support;

struct Tone {
  double factorR = 0.299, factorG = 0.587, factorB = 0.114;
  int32_t red = 0, green = 0, blue = 0;
};

inline int64_t Weight(double factor) {
  const double scaled = std::trunc(factor * 1024.0);
  const bool fits = scaled >= -2147483648.0 && scaled <= 2147483647.0;  // false for NaN
  return fits ? static_cast<int64_t>(scaled) : kLeast;
}

inline int64_t Wrap(int64_t value) {
  const int64_t modulus = int64_t{1} << 32;
  const int64_t rest = ((value % modulus) + modulus) % modulus;
  return rest >= modulus / 2 ? rest - modulus : rest;
}

inline int Channel(int64_t grey, int32_t offset) {
  const int64_t value = Wrap(grey + offset);
  return value < 0 ? 0 : value > 255 ? 255 : static_cast<int>(value);
}

inline Rgb Toned(Rgb p, const Tone& tone) {
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

}  // namespace sepia
