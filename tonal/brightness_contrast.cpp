// ChangeContrastKRT(Contrast as double) as picture
// ChangeBrightnessAbsoluteKRT(Brightness as double) as picture
// ChangeBrightnessLinearKRT(Brightness as double) as picture
// ChangeContrastBrightnessAbsoluteKRT(Contrast as double, Brightness as double) as picture
// ChangeContrastBrightnessLinearKRT(Contrast as double, Brightness as double) as picture
// ChangeCustomKRT(a as double, b as double) as picture
// and each of them with values for red, green and blue instead of one for all.
//
// A copy whose channels went through a tone curve: contrast, where 0 changes nothing and -1 gives
// flat grey; brightness in channel steps, added (absolute) or rescaling what lies between it and
// the end of the range (linear); or v * a + b. Results are truncated toward zero, then clamped.
// What doesn't fit into an int32, NaN included, counts as the most negative int32 and gives 0. Nil
// when the picture can't be opened or the copy can't be made.

#include "pixels/frame.h"

namespace {

// The curve of one channel. Every operation sets the steps that it has; the others stay neutral and
// change no bit of a result.
struct ToneCurve {
  double contrast = 1;
  double scale = 1;
  double offset = 0;
};

// The pivot is 127, not 128 (intended). In double precision, from left to right.
constexpr double Contrast(const ToneCurve& curve, int32_t v) {
  return (v - 127) * curve.contrast + 127.0;
}

constexpr double Tone(const ToneCurve& curve, int32_t v) {
  return Contrast(curve, v) * curve.scale + curve.offset;
}

constexpr double ContrastFactor(double contrast) { return contrast + 1.0; }

// Linear brightness after `contrast`. NaN takes the second way.
constexpr ToneCurve LinearBrightness(double brightness, double contrast = 1) {
  return brightness < 0 ? ToneCurve{contrast, (brightness + 255.0) / 255.0, 0}
                        : ToneCurve{contrast, (255.0 - brightness) / 255.0, brightness};
}

struct ToneCurves {
  ToneCurve red;
  ToneCurve green;
  ToneCurve blue;

  template <class Condition>
  constexpr bool All(const Condition& holds) const {
    return holds(red) && holds(green) && holds(blue);
  }
};

// Whether every tone lies between `low` and `high`, neither included. A curve rises or falls
// throughout, in rounded arithmetic too, so its ends tell.
constexpr bool TonesLieBetween(double low, double high, const ToneCurves& curves) {
  return curves.All([&](const ToneCurve& curve) {
    const double first = Tone(curve, 0);
    const double last = Tone(curve, 255);
    return first > low && first < high && last > low && last < high;
  });
}

// A copy with `store` (ToneCurve, channel value -> channel value) of every channel.
template <class Store>
REALpicture MapChannels(REALpicture picture, const ToneCurves& curves, const Store& store) {
  return MapPicture(picture, kWholePicture, [=](Pixel p) {
    return Pixel{store(curves.red, p.red), store(curves.green, p.green),
                 store(curves.blue, p.blue)};
  });
}

// The same for a tone that is known to fit into an int32, so that the plain conversion will do; it
// takes two thirds of the time of the one that looks at every value.
template <class Tone>
REALpicture MapFittingTones(REALpicture picture, const ToneCurves& curves, const Tone& tone) {
  return MapChannels(picture, curves, [=](const ToneCurve& curve, int32_t v) {
    return ClampToByte(static_cast<int32_t>(tone(curve, v)));
  });
}

REALpicture MapTones(REALpicture picture, const ToneCurves& curves) {
  if (!TonesLieBetween(-2147483649.0, 2147483648.0, curves)) {
    return MapChannels(picture, curves, [](const ToneCurve& curve, int32_t v) {
      return ClampToByte(TruncateToInt32(Tone(curve, v)));
    });
  }
  // Loops without the steps that are neutral.
  const bool contrast = !curves.All([](const ToneCurve& curve) { return curve.contrast == 1; });
  const bool scale = !curves.All([](const ToneCurve& curve) { return curve.scale == 1; });
  const bool offset = !curves.All([](const ToneCurve& curve) { return curve.offset == 0; });
  if (contrast && !scale && !offset) {
    return MapFittingTones(picture, curves,
                           [](const ToneCurve& curve, int32_t v) { return Contrast(curve, v); });
  }
  if (contrast) {
    return MapFittingTones(picture, curves,
                           [](const ToneCurve& curve, int32_t v) { return Tone(curve, v); });
  }
  if (scale) {
    return MapFittingTones(picture, curves, [](const ToneCurve& curve, int32_t v) {
      return v * curve.scale + curve.offset;
    });
  }
  return MapFittingTones(picture, curves,
                         [](const ToneCurve& curve, int32_t v) { return v + curve.offset; });
}

}  // namespace

REALpicture ContrastPicture3(REALpicture picture, double red, double green, double blue) {
  return MapTones(picture,
                  {{ContrastFactor(red)}, {ContrastFactor(green)}, {ContrastFactor(blue)}});
}

REALpicture ContrastPicture1(REALpicture picture, double contrast) {
  return ContrastPicture3(picture, contrast, contrast, contrast);
}

REALpicture AbsBrightnessPicture3(REALpicture picture, double red, double green, double blue) {
  return MapTones(picture, {{1, 1, red}, {1, 1, green}, {1, 1, blue}});
}

REALpicture AbsBrightnessPicture1(REALpicture picture, double brightness) {
  return AbsBrightnessPicture3(picture, brightness, brightness, brightness);
}

// Not clamped (intended): the low 8 bits are stored, which shows beyond -255 to 255.
REALpicture LinBrightnessPicture3(REALpicture picture, double red, double green, double blue) {
  const ToneCurves curves{LinearBrightness(red), LinearBrightness(green), LinearBrightness(blue)};
  if (TonesLieBetween(-1, 256, curves)) return MapTones(picture, curves);
  return MapChannels(picture, curves, [](const ToneCurve& curve, int32_t v) {
    return TruncateToInt32(Tone(curve, v)) & 255;
  });
}

REALpicture LinBrightnessPicture1(REALpicture picture, double brightness) {
  return LinBrightnessPicture3(picture, brightness, brightness, brightness);
}

REALpicture ContrastAbsBrightnessPicture3(REALpicture picture, double contrastRed,
                                          double contrastGreen, double contrastBlue,
                                          double brightnessRed, double brightnessGreen,
                                          double brightnessBlue) {
  return MapTones(picture, {{ContrastFactor(contrastRed), 1, brightnessRed},
                            {ContrastFactor(contrastGreen), 1, brightnessGreen},
                            {ContrastFactor(contrastBlue), 1, brightnessBlue}});
}

REALpicture ContrastAbsBrightnessPicture1(REALpicture picture, double contrast, double brightness) {
  return ContrastAbsBrightnessPicture3(picture, contrast, contrast, contrast, brightness,
                                       brightness, brightness);
}

REALpicture ContrastLinBrightnessPicture3(REALpicture picture, double contrastRed,
                                          double contrastGreen, double contrastBlue,
                                          double brightnessRed, double brightnessGreen,
                                          double brightnessBlue) {
  return MapTones(picture, {LinearBrightness(brightnessRed, ContrastFactor(contrastRed)),
                            LinearBrightness(brightnessGreen, ContrastFactor(contrastGreen)),
                            LinearBrightness(brightnessBlue, ContrastFactor(contrastBlue))});
}

REALpicture ContrastLinBrightnessPicture1(REALpicture picture, double contrast, double brightness) {
  return ContrastLinBrightnessPicture3(picture, contrast, contrast, contrast, brightness,
                                       brightness, brightness);
}

// Numbers so small that processors take twenty times as long for them change no result: what they
// add lies beyond the last bit, or is less than 1 by far.
constexpr double WithoutSubnormal(double value) {
  constexpr double kLeast = 0x1p-1022;  // the least normal number
  return value > -kLeast && value < kLeast ? 0.0 : value;
}

// Green is multiplied by red's factor, and its own is never read (intended).
REALpicture TransformPicture3(REALpicture picture, double redFactor, double redOffset,
                              double /*greenFactor*/, double greenOffset, double blueFactor,
                              double blueOffset) {
  const double redAndGreen = WithoutSubnormal(redFactor);
  return MapTones(picture, {{1, redAndGreen, WithoutSubnormal(redOffset)},
                            {1, redAndGreen, WithoutSubnormal(greenOffset)},
                            {1, WithoutSubnormal(blueFactor), WithoutSubnormal(blueOffset)}});
}

REALpicture TransformPicture1(REALpicture picture, double factor, double offset) {
  return TransformPicture3(picture, factor, offset, factor, offset, factor, offset);
}
