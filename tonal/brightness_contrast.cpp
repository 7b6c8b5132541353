// ChangeContrastKRT(Contrast as double) as picture
// ChangeBrightnessAbsoluteKRT(Brightness as double) as picture
// ChangeBrightnessLinearKRT(Brightness as double) as picture
// ChangeContrastBrightnessAbsoluteKRT(Contrast as double, Brightness as double) as picture
// ChangeContrastBrightnessLinearKRT(Contrast as double, Brightness as double) as picture
// ChangeCustomKRT(a as double, b as double) as picture
// and each with one value per channel: all reds, greens and blues in turn; the custom one with the
// pairs of red, green and blue.
//
// A copy whose channels went through a tone curve: contrast, where 0 changes nothing and -1 gives
// flat grey; brightness in channel steps, added (absolute) or rescaling what lies between it and
// the end of the range (linear); or v * a + b. Results are truncated toward zero, then clamped.
// What doesn't fit into an int32, NaN included, counts as the most negative int32: black. Nil when
// the picture can't be opened or the copy can't be made.

#include "pixels/frame.h"

namespace {

// The curves: double precision, evaluated as written, from left to right.

struct Contrast {
  double contrast;
  // The pivot is 127, not 128 (intended).
  constexpr double operator()(int32_t v) const { return (v - 127) * (contrast + 1.0) + 127.0; }
};

struct Offset {
  double brightness;
  constexpr double operator()(int32_t v) const { return v + brightness; }
};

struct Linear {
  double scale;
  double offset;
  constexpr double operator()(int32_t v) const { return v * scale + offset; }
};

// NaN takes the second way.
constexpr Linear LinearBrightness(double brightness) {
  return brightness < 0 ? Linear{(brightness + 255.0) / 255.0, 0}
                        : Linear{(255.0 - brightness) / 255.0, brightness};
}

struct ContrastThenOffset {
  Contrast contrast;
  double brightness;
  constexpr double operator()(int32_t v) const { return contrast(v) + brightness; }
};

struct ContrastThenLinear {
  Contrast contrast;
  Linear linear;
  constexpr double operator()(int32_t v) const {
    return contrast(v) * linear.scale + linear.offset;
  }
};

constexpr int32_t LowByte(int32_t value) { return value & 255; }

// Every curve rises or falls throughout, in rounded arithmetic too: between ends that fit into an
// int32 everything does.
template <class Curve>
constexpr bool FitsInt32(const Curve& curve) {
  const auto fits = [](double t) { return t > -2147483649.0 && t < 2147483648.0; };
  return fits(curve(0)) && fits(curve(255));
}

// A copy with `red`, `green` and `blue` of the channels, which `store` brings into 0 to 255.
template <class Curve, class Store>
REALpicture MapChannels(REALpicture picture, const Curve& red, const Curve& green,
                        const Curve& blue, const Store& store) {
  const auto map = [&](const auto& truncate) {
    return MapPicture(picture, kWholePicture, [=](Pixel p) {
      return Pixel{store(truncate(red(p.red))), store(truncate(green(p.green))),
                   store(truncate(blue(p.blue)))};
    });
  };
  // The plain conversion takes two thirds of the time of the one that looks at every value.
  if (FitsInt32(red) && FitsInt32(green) && FitsInt32(blue)) {
    return map([](double t) { return static_cast<int32_t>(t); });
  }
  return map([](double t) { return TruncateToInt32(t); });
}

template <class Curve>
REALpicture MapClamped(REALpicture picture, const Curve& red, const Curve& green,
                       const Curve& blue) {
  return MapChannels(picture, red, green, blue, [](int32_t value) { return ClampToByte(value); });
}

}  // namespace

REALpicture ContrastPicture3(REALpicture picture, double red, double green, double blue) {
  return MapClamped(picture, Contrast{red}, Contrast{green}, Contrast{blue});
}

REALpicture ContrastPicture1(REALpicture picture, double contrast) {
  return ContrastPicture3(picture, contrast, contrast, contrast);
}

REALpicture AbsBrightnessPicture3(REALpicture picture, double red, double green, double blue) {
  return MapClamped(picture, Offset{red}, Offset{green}, Offset{blue});
}

REALpicture AbsBrightnessPicture1(REALpicture picture, double brightness) {
  return AbsBrightnessPicture3(picture, brightness, brightness, brightness);
}

// Not clamped: the low 8 bits are stored (intended), which shows beyond -255 to 255.
REALpicture LinBrightnessPicture3(REALpicture picture, double red, double green, double blue) {
  return MapChannels(picture, LinearBrightness(red), LinearBrightness(green),
                     LinearBrightness(blue), [](int32_t value) { return LowByte(value); });
}

REALpicture LinBrightnessPicture1(REALpicture picture, double brightness) {
  return LinBrightnessPicture3(picture, brightness, brightness, brightness);
}

REALpicture ContrastAbsBrightnessPicture3(REALpicture picture, double contrastRed,
                                          double contrastGreen, double contrastBlue,
                                          double brightnessRed, double brightnessGreen,
                                          double brightnessBlue) {
  return MapClamped(picture, ContrastThenOffset{{contrastRed}, brightnessRed},
                    ContrastThenOffset{{contrastGreen}, brightnessGreen},
                    ContrastThenOffset{{contrastBlue}, brightnessBlue});
}

REALpicture ContrastAbsBrightnessPicture1(REALpicture picture, double contrast, double brightness) {
  return ContrastAbsBrightnessPicture3(picture, contrast, contrast, contrast, brightness,
                                       brightness, brightness);
}

REALpicture ContrastLinBrightnessPicture3(REALpicture picture, double contrastRed,
                                          double contrastGreen, double contrastBlue,
                                          double brightnessRed, double brightnessGreen,
                                          double brightnessBlue) {
  return MapClamped(picture, ContrastThenLinear{{contrastRed}, LinearBrightness(brightnessRed)},
                    ContrastThenLinear{{contrastGreen}, LinearBrightness(brightnessGreen)},
                    ContrastThenLinear{{contrastBlue}, LinearBrightness(brightnessBlue)});
}

REALpicture ContrastLinBrightnessPicture1(REALpicture picture, double contrast, double brightness) {
  return ContrastLinBrightnessPicture3(picture, contrast, contrast, contrast, brightness,
                                       brightness, brightness);
}

// Green has red's factor, and its own is never read (intended).
REALpicture TransformPicture3(REALpicture picture, double redFactor, double redOffset,
                              double /*greenFactor*/, double greenOffset, double blueFactor,
                              double blueOffset) {
  return MapClamped(picture, Linear{redFactor, redOffset}, Linear{redFactor, greenOffset},
                    Linear{blueFactor, blueOffset});
}

REALpicture TransformPicture1(REALpicture picture, double factor, double offset) {
  return TransformPicture3(picture, factor, offset, factor, offset, factor, offset);
}
