// Inversion, brightness and contrast, saturation, tint, colorness.
#include <algorithm>
#include <cmath>

#include "bench/contents.h"
#include "bench/parameters.h"
#include "bench/value_case.h"

namespace bench {

namespace {

constexpr Goal kCopyGoal{1.15, 1.15, 1.1};
constexpr Goal kInvertGrayGoal{1.15, 1.15, 8};
constexpr Goal kContrastGoal{2.5, 1.9, 1.5};
constexpr Goal kBrightnessGoal{2.5, 1.6, 1.2};
constexpr Goal kChannelsGoal{3.0, 2.3, 3.4};
constexpr Goal kSaturationGoal{1.9, 1.4, 1.5};
constexpr Goal kTintGoal{2.6, 2.0, 1.3};
constexpr Goal kColornessGoal{1.4, 1.4, 14};

// Other layouts may take a quarter longer.
constexpr Goal ForLayouts(Goal goal, Layout source, Layout target) {
  const bool first = source == Layout::rgba && target == Layout::rgba;
  return first ? goal : Goal{goal.limitAvx2 * 1.25, goal.limitAvx512 * 1.25, 0};
}

int Stored(double value) {
  if (!(value > -2147483649.0 && value < 2147483648.0)) return 0;
  return std::clamp(static_cast<int>(std::trunc(value)), 0, 255);
}

template <class Channel>
auto Each(const Channel& channel) {
  return [=](Rgb c) { return Rgb{channel(c.red), channel(c.green), channel(c.blue)}; };
}

// `call` is given the stage and the source and binds the plug-in's call.
template <class Call, class Rule>
Case Whole(std::string name, Goal goal, std::string peers, const Call& call, const Rule& rule,
           Layout source = Layout::rgba, Layout target = Layout::rgba) {
  Case made;
  made.name = std::move(name);
  made.limit = Limit::copy;
  made.goal = ForLayouts(goal, source, target);
  made.peers = source == Layout::rgba && target == Layout::rgba ? std::move(peers) : "";
  made.source = source;
  made.target = target;
  made.prepare = [=](Stage& stage, Size size) {
    const Picture picture = stage.Paint(size, Photo);
    return MapWork<1>(stage, size, {picture}, WholeOf(size), call(stage, picture), rule);
  };
  return made;
}

auto Method(std::string declaration, auto... arguments) {
  return [=](Stage& stage, const Picture& picture) {
    return stage.Bind<Picture>("Picture", declaration, picture, arguments...);
  };
}

Rgb Invert(Rgb c) { return {255 - c.red, 255 - c.green, 255 - c.blue}; }

Rgb InvertGray(Rgb c) {
  const bool grey = c.red == c.green && c.green == c.blue;
  return grey ? Invert(c) : c;
}

int Contrast(int v, double contrast) { return Stored((v - 127) * (contrast + 1.0) + 127.0); }

int LinearBrightness(int v, double brightness) {
  const double value = brightness < 0 ? v * ((brightness + 255.0) / 255.0)
                                      : v * ((255.0 - brightness) / 255.0) + brightness;
  return static_cast<int>(std::trunc(value)) & 255;
}

int ContrastBrightness(int v, double contrast, double brightness) {
  return Stored((v - 127) * (contrast + 1.0) + 127.0 + brightness);
}

int ContrastLinear(int v, double contrast, double brightness) {
  const double value = (v - 127) * (contrast + 1.0) + 127.0;
  return Stored(brightness < 0 ? value * ((brightness + 255.0) / 255.0)
                               : value * ((255.0 - brightness) / 255.0) + brightness);
}

auto SaturationRule(int32_t amount) {
  return [=](Rgb c) {
    const int grey = (c.red + 2 * c.green + c.blue) >> 2;
    const auto factor = static_cast<int32_t>(static_cast<uint32_t>(amount) + 255U);
    const auto push = [=](int v) {
      const auto product =
          static_cast<int32_t>(static_cast<uint32_t>(v - grey) * static_cast<uint32_t>(factor));
      return std::clamp(grey + product / 255, 0, 255);
    };
    return Rgb{push(c.red), push(c.green), push(c.blue)};
  };
}

Rgb Tint(Rgb c) {
  const auto part = [](uint32_t colour, int shift) { return (colour >> shift & 255) / 255.0; };
  const double brightness =
      c.blue * part(kGreyBase, 0) + (c.green * part(kGreyBase, 8) + c.red * part(kGreyBase, 16));
  const auto shade = [&](int shift) { return Stored(part(kSepiaBase, shift) * brightness); };
  return {shade(16), shade(8), shade(0)};
}

// One operation in the other layouts that a picture and its result can have.
template <class Call, class Rule>
void AddLayouts(std::vector<Case>& cases, const std::string& name, Goal goal, const Call& call,
                const Rule& rule) {
  constexpr Layout kPairs[][2] = {{Layout::rgba, Layout::argb},
                                  {Layout::argb, Layout::rgba},
                                  {Layout::argb, Layout::argb},
                                  {Layout::rows, Layout::rows}};
  for (const auto& [source, target] : kPairs) {
    const std::string layouts = std::string(NameOf(source)) + " to " + NameOf(target);
    cases.push_back(Whole(name + " " + layouts, goal, "", call, rule, source, target));
  }
}

// The middle quarter of the picture.
Case InvertRectangle() {
  Case made;
  made.name = "InvertKRT rectangle";
  made.limit = Limit::copy;
  made.goal = {kCopyGoal.limitAvx2, kCopyGoal.limitAvx512, 0};
  made.prepare = [](Stage& stage, Size size) {
    const Window window{size.width / 4, size.height / 4, size.width / 4 + size.width / 2,
                        size.height / 4 + size.height / 2};
    const Picture picture = stage.Paint(size, Photo);
    const auto call = stage.Bind<Picture>("Picture", "InvertKRT", picture, window.left, window.top,
                                          window.right - window.left, window.bottom - window.top);
    return MapWork<1>(stage, size, {picture}, window, call, Invert);
  };
  return made;
}

Case Colorness() {
  Case made;
  made.name = "ColornessKRT";
  made.limit = Limit::read;
  made.goal = kColornessGoal;
  made.peers = "ColornessKRT";
  made.prepare = [](Stage& stage, Size size) {
    const Picture picture = stage.Paint(size, Photo);
    const auto call =
        stage.Bind<double>("Picture", "ColornessKRT", picture, int32_t{kColornessThreshold});
    const auto coloured = [](Rgb c) {
      const bool dark = c.red < 30 && c.green < 30 && c.blue < 30;
      return !dark && (std::abs(c.green - c.red) > kColornessThreshold ||
                       std::abs(c.green - c.blue) > kColornessThreshold);
    };
    return ValueWork<double>(size, {picture}, call, [=] {
      return static_cast<double>(CountPixels(picture, coloured)) /
             static_cast<double>(size.Pixels());
    });
  };
  return made;
}

}  // namespace

std::vector<Case> TonalCases() {
  const auto contrast = Each([](int v) { return Contrast(v, kContrast); });
  const auto contrastBrightness =
      Each([](int v) { return ContrastBrightness(v, kContrast, kBrightness); });
  const auto contrastLinear = Each([](int v) { return ContrastLinear(v, kContrast, kBrightness); });
  const auto custom = Each([](int v) { return Stored(v * kFactor + kOffset); });
  const auto brightness = Each([](int v) { return Stored(v + kBrightness); });
  const auto brightnessLinear = Each([](int v) { return LinearBrightness(v, kBrightness); });
  const double r = kPerChannel[0];
  const double g = kPerChannel[1];
  const double b = kPerChannel[2];

  const auto invert = Method("InvertKRT");
  const auto contrastCall = Method("ChangeContrastKRT", kContrast);
  const auto saturation = Method("ChangeSaturationKRT", int32_t{kSaturation});
  Case whole = Whole("InvertKRT fresh output", {3, 3, 0}, "", invert, Invert);
  whole.timed = Output::fresh;

  std::vector<Case> cases = {
      Whole("InvertKRT", kCopyGoal, "InvertKRT", invert, Invert),
      whole,
      InvertRectangle(),
      Whole("InvertGrayKRT", kInvertGrayGoal, "InvertGrayKRT", Method("InvertGrayKRT"), InvertGray),
      Whole("ChangeContrastKRT", kContrastGoal, "ChangeContrastKRT", contrastCall, contrast),
      Whole("ChangeContrastKRT channels", kContrastGoal, "ChangeContrastKRT channels",
            Method("ChangeContrastKRT", r, g, b),
            [=](Rgb c) {
              return Rgb{Contrast(c.red, r), Contrast(c.green, g), Contrast(c.blue, b)};
            }),
      Whole("ChangeCustomKRT", kContrastGoal, "ChangeCustomKRT",
            Method("ChangeCustomKRT", kFactor, kOffset), custom),
      Whole("ChangeBrightnessAbsoluteKRT", kBrightnessGoal, "ChangeBrightnessAbsoluteKRT",
            Method("ChangeBrightnessAbsoluteKRT", kBrightness), brightness),
      Whole("ChangeBrightnessLinearKRT", kBrightnessGoal, "ChangeBrightnessLinearKRT",
            Method("ChangeBrightnessLinearKRT", kBrightness), brightnessLinear),
      Whole("ChangeContrastBrightnessAbsoluteKRT", kChannelsGoal, "",
            Method("ChangeContrastBrightnessAbsoluteKRT", kContrast, kBrightness),
            contrastBrightness),
      Whole("ChangeContrastBrightnessAbsoluteKRT channels", kChannelsGoal,
            "ChangeContrastBrightnessAbsoluteKRT channels",
            Method("ChangeContrastBrightnessAbsoluteKRT", r, g, b, kBrightness, 0.0, -kBrightness),
            [=](Rgb c) {
              return Rgb{ContrastBrightness(c.red, r, kBrightness),
                         ContrastBrightness(c.green, g, 0),
                         ContrastBrightness(c.blue, b, -kBrightness)};
            }),
      Whole("ChangeContrastBrightnessLinearKRT", kChannelsGoal, "",
            Method("ChangeContrastBrightnessLinearKRT", kContrast, kBrightness), contrastLinear),
      Whole("ChangeContrastBrightnessLinearKRT channels", kChannelsGoal, "",
            Method("ChangeContrastBrightnessLinearKRT", r, g, b, kBrightness, 0.0, -kBrightness),
            [=](Rgb c) {
              return Rgb{ContrastLinear(c.red, r, kBrightness), ContrastLinear(c.green, g, 0),
                         ContrastLinear(c.blue, b, -kBrightness)};
            }),
      Whole("ChangeSaturationKRT", kSaturationGoal, "ChangeSaturationKRT", saturation,
            SaturationRule(kSaturation)),
      Whole("ChangeSaturationKRT wild amount", {}, "",
            Method("ChangeSaturationKRT", int32_t{100'000'000}), SaturationRule(100'000'000)),
      Whole(
          "TintPictureKRT", kTintGoal, "TintPictureKRT",
          [](Stage& stage, const Picture& picture) {
            return stage.Bind<Picture>("", "TintPictureKRT", picture, kGreyBase, kSepiaBase);
          },
          Tint),
      Colorness(),
  };
  AddLayouts(cases, "InvertKRT", kCopyGoal, invert, Invert);
  AddLayouts(cases, "ChangeContrastKRT", kContrastGoal, contrastCall, contrast);
  AddLayouts(cases, "ChangeSaturationKRT", kSaturationGoal, saturation,
             SaturationRule(kSaturation));
  return cases;
}

}  // namespace bench
