// The filter classes, and waveforms.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

#include "bench/contents.h"
#include "bench/map_case.h"
#include "bench/parameters.h"

namespace bench {

namespace {

using Instance = host::Ref<host::Instance>;

constexpr Goal kSepiaGoal{1.2, 1.2, 1.6};
constexpr Goal kLutGoal{11, 11, 5};
constexpr Goal kWaveformGoal{0, 0, 15};

// Takes the picture that a run has left in an object out of it. The classes don't agree on who lets
// go of an earlier one, so none is left.
std::function<Picture()> TakeResult(Stage& stage, const Instance& object,
                                    const std::function<bool()>& run) {
  const host::Property& property =
      *stage.Host().registry.FindProperty(object->ClassName(), "DestinationPicture");
  auto* field =
      reinterpret_cast<REALpicture*>(reinterpret_cast<uint8_t*>(object.Get()) + property.offset);
  return [object, run, field] {
    return run() ? host::AdoptHandle<host::Picture>(std::exchange(*field, nullptr)) : Picture();
  };
}

Work Sepia(Stage& stage, Size size) {
  const Picture picture = stage.Paint(size, Photo);
  const Instance object = stage.Host().New("PictureSepiaKRT");
  stage.Host().Set(object, "SourcePicture", picture);
  stage.Host().Set(object, "SepiaRed", kSepiaOffsets[0]);
  stage.Host().Set(object, "SepiaGreen", kSepiaOffsets[1]);
  stage.Host().Set(object, "SepiaBlue", kSepiaOffsets[2]);
  const auto run = stage.Bind<bool>("PictureSepiaKRT", "Run", object);
  return MapWork<1>(
      stage, size, {picture}, WholeOf(size), TakeResult(stage, object, run), [](Rgb c) {
        const auto weight = [](double factor) { return static_cast<int>(factor * 1024.0); };
        const int grey =
            (c.red * weight(0.299) + c.green * weight(0.587) + c.blue * weight(0.114)) / 1024;
        return Rgb{std::clamp(grey + kSepiaOffsets[0], 0, 255),
                   std::clamp(grey + kSepiaOffsets[1], 0, 255),
                   std::clamp(grey + kSepiaOffsets[2], 0, 255)};
      });
}

// What the table gives at a grid point.
double GridValue(uint32_t r, uint32_t g, uint32_t b, uint32_t channel) {
  const double at[3] = {r * 17.0, g * 17.0, b * 17.0};
  const double grey = 0.3 * at[0] + 0.59 * at[1] + 0.11 * at[2];
  return 255.0 * std::pow((0.8 * at[channel] + 0.2 * grey) / 289.0, 0.8) - 3.0 * channel;
}

// The tetrahedron of the cube of grid points that holds the colour, by strict comparisons.
double Interpolate(Rgb c, const std::function<double(uint32_t, uint32_t, uint32_t)>& table) {
  const auto lower = [](int v) { return static_cast<uint32_t>(v / 17); };
  const auto upper = [](int v) { return v == 255 ? 15U : static_cast<uint32_t>(v / 17 + 1); };
  const auto fraction = [](int v) { return (v - 17 * (v / 17)) / 17.0; };
  const double x = fraction(c.red);
  const double y = fraction(c.green);
  const double z = fraction(c.blue);
  const auto at = [&](bool i, bool j, bool k) {
    return table(i ? upper(c.red) : lower(c.red), j ? upper(c.green) : lower(c.green),
                 k ? upper(c.blue) : lower(c.blue));
  };
  const double c000 = at(false, false, false);
  const double c111 = at(true, true, true);
  if (x > y) {
    const double c100 = at(true, false, false);
    const double c101 = at(true, false, true);
    if (y > z) return (1 - x) * c000 + (x - y) * c100 + (y - z) * at(true, true, false) + z * c111;
    if (x > z) return (1 - x) * c000 + (x - z) * c100 + (z - y) * c101 + y * c111;
    return (1 - z) * c000 + (z - x) * at(false, false, true) + (x - y) * c101 + y * c111;
  }
  const double c010 = at(false, true, false);
  const double c011 = at(false, true, true);
  if (z > y) return (1 - z) * c000 + (z - y) * at(false, false, true) + (y - x) * c011 + x * c111;
  if (z > x) return (1 - y) * c000 + (y - z) * c010 + (z - x) * c011 + x * c111;
  return (1 - y) * c000 + (y - x) * c010 + (x - z) * at(true, true, false) + z * c111;
}

auto Lut(Rgb (*content)(int32_t, int32_t)) {
  return [content](Stage& stage, Size size) {
    constexpr uint32_t kGrid = 18;
    const Picture picture = stage.Paint(size, content);
    const Instance object = stage.Host().New("PictureLut3DKRT");
    stage.Host().Set(object, "SourcePicture", picture);
    auto table = std::make_shared<std::vector<double>>();
    for (uint32_t r = 0; r < kGrid; ++r) {
      for (uint32_t g = 0; g < kGrid; ++g) {
        for (uint32_t b = 0; b < kGrid; ++b) {
          for (uint32_t x = 0; x < 3; ++x) {
            table->push_back(GridValue(r, g, b, x));
            stage.BindSetter("PictureLut3DKRT", "Table", object, r, g, b, x, table->back())();
          }
        }
      }
    }
    const auto run = stage.Bind<bool>("PictureLut3DKRT", "Run", object);
    return MapWork<1>(stage, size, {picture}, WholeOf(size), TakeResult(stage, object, run),
                      [table](Rgb c) {
                        const auto channel = [&](uint32_t x) {
                          const double v = Interpolate(c, [&](uint32_t r, uint32_t g, uint32_t b) {
                            return (*table)[((r * kGrid + g) * kGrid + b) * 3 + x];
                          });
                          return v < 0 ? 0 : v > 255.0 ? 255 : static_cast<int>(v);
                        };
                        return Rgb{channel(0), channel(1), channel(2)};
                      });
  };
}

// A tone with an envelope, from -1 to 1.
double Tone(int64_t at) {
  const double t = static_cast<double>(at);
  return std::sin(t * 0.05) * std::sin(t * 0.00013) * 0.9;
}

constexpr uint32_t kBack = 0x88B5C4;
constexpr uint32_t kFore = 0x274C5A;

// As many samples as pixels, drawn without outline or average into a picture that costs little.
template <class Sample>
auto Waveform(int32_t bits, double fullScale, int middle) {
  return [=](Stage& stage, Size size) {
    const int64_t count = size.Pixels();
    const Size picture{std::min(size.width, 400), std::min(size.height, 60)};
    const auto samples = stage.Host().NewMemoryBlock(static_cast<size_t>(count) * sizeof(Sample));
    std::vector<Sample> values;
    for (int64_t i = 0; i < count; ++i) {
      values.push_back(static_cast<Sample>(Tone(i) * fullScale + middle));
    }
    std::memcpy(samples->Bytes().data(), values.data(), samples->Bytes().size());
    const auto call = stage.Bind<Picture>(
        "", "RenderSamplesKRT", samples, static_cast<int32_t>(count), int32_t{-1}, picture.width,
        picture.height, int32_t{0}, kBack, kFore, uint32_t{0}, bits, false);

    Work work;
    work.area.sources = {samples->Bytes().data()};
    work.area.rowSize = work.area.stride = samples->Bytes().size();
    work.area.rows = 1;
    work.pixels = count;
    const Picture target = stage.Target(picture);
    work.call = [call] { call(); };
    work.check = [=, &stage]() -> std::string {
      stage.SpoilTarget();
      const Picture drawn = call();
      if (!drawn) return "there is no result";
      const auto begins = [&](int32_t c) {
        return static_cast<int64_t>(static_cast<double>(c) / picture.width *
                                    static_cast<double>(count));
      };
      for (int32_t x = 0; x < picture.width; ++x) {
        double sums[2] = {0, 0};  // of the negative samples, and of all others
        const int64_t end = begins(x + 1);
        for (int64_t i = begins(x); i < end; ++i) {
          const double value = static_cast<double>(values[static_cast<size_t>(i)]) - middle;
          sums[value < 0 ? 0 : 1] += value;
        }
        const double half = static_cast<double>(end - begins(x)) * 0.5;
        const int32_t centre = picture.height / 2;
        for (int32_t y = 0; y < picture.height; ++y) {
          bool bar = false;
          for (const double sum : sums) {
            const double value = half > 0 ? sum / half * picture.height / fullScale : 0;
            const auto row = static_cast<int32_t>(std::trunc(value + centre));
            const int32_t first = std::clamp(std::min(row, centre), 0, picture.height - 1);
            const int32_t last = std::clamp(std::max(row, centre), 0, picture.height - 1);
            bar = bar || (y >= first && y <= last);
          }
          const uint32_t colour = bar ? kFore : kBack;
          const Rgb wanted{static_cast<int>(colour >> 16), static_cast<int>(colour >> 8 & 255),
                           static_cast<int>(colour & 255)};
          if (IsOpaquePixel(drawn->Layout(), drawn->Row(y), x, wanted)) continue;
          return "pixel (" + std::to_string(x) + ", " + std::to_string(y) + ") differs";
        }
      }
      return {};
    };
    return work;
  };
}

Case Make(std::string name, Limit limit, Goal goal, std::function<Work(Stage&, Size)> prepare,
          const char* per = "pixel") {
  Case made;
  made.name = std::move(name);
  made.limit = limit;
  made.goal = goal;
  made.prepare = std::move(prepare);
  made.peers = made.name;
  made.per = per;
  return made;
}

}  // namespace

std::vector<Case> ClassCases() {
  return {
      Make("PictureSepiaKRT", Limit::copy, kSepiaGoal, Sepia),
      Make("PictureLut3DKRT", Limit::copy, kLutGoal, Lut(Photo)),
      Make("PictureLut3DKRT noise", Limit::copy, kLutGoal, Lut(Noise)),
      Make("RenderSamplesKRT", Limit::read, kWaveformGoal, Waveform<uint8_t>(8, 127, 128),
           "sample"),
      Make("RenderSamplesKRT 16 bits", Limit::read, kWaveformGoal, Waveform<int16_t>(15, 32767, 0),
           "sample"),
      Make("RenderSamplesKRT float", Limit::read, {}, Waveform<float>(-32, 1, 0), "sample"),
  };
}

}  // namespace bench
