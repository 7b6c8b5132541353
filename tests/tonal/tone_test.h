// The brightness and contrast family: each method with its rule restated.
#pragma once

#include <array>
#include <cmath>
#include <limits>

#include "tests/tonal/pixel_rule.h"

namespace tone {

using namespace support;

inline constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The rules restated.

inline int32_t Truncated(double t) {
  if (std::isnan(t)) return INT32_MIN;
  const double whole = std::trunc(t);
  if (whole < -2147483648.0 || whole > 2147483647.0) return INT32_MIN;
  return static_cast<int32_t>(whole);
}

inline int Clamped(double t) {
  const int32_t whole = Truncated(t);
  if (whole > 255) return 255;
  if (whole < 0) return 0;
  return whole;
}

inline int LowEightBits(double t) {
  const uint32_t bits = static_cast<uint32_t>(Truncated(t));
  return static_cast<int>(bits % 256);
}

inline double Contrasted(int v, double contrast) {
  const double k = contrast + 1.0;
  return (v - 127) * k + 127;
}

inline double Rescaled(double value, double brightness) {
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

inline const Method kMethods[] = {
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

}  // namespace tone
