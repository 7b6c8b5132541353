// libvips makes its results in memory of its own.
#include <vips/vips.h>

#include <array>
#include <memory>

#include "bench/parameters.h"
#include "bench/peers/peers.h"

namespace bench {

namespace {

using Run = std::function<void()>;

struct Unref {
  void operator()(VipsImage* image) const { g_object_unref(image); }
};
using Image = std::unique_ptr<VipsImage, Unref>;

// The library as it is fair to compare with: one thread, and nothing remembered from the last call.
void Start() {
  static const bool started = [] {
    if (VIPS_INIT("picture_bench") != 0) return false;
    vips_concurrency_set(1);
    vips_cache_set_max(0);
    return true;
  }();
  static_cast<void>(started);
}

// `apply` makes an image of a source; all of its pixels are then asked for.
template <class Apply>
Peer Make(const char* operation, const Apply& apply) {
  return {operation, "libvips", [apply](const Area& area) -> Run {
            Start();
            return [=] {
              const Image in(vips_image_new_from_memory(
                  area.sources[0], area.rowSize * area.rows, static_cast<int>(area.rowSize / 4),
                  static_cast<int>(area.rows), 4, VIPS_FORMAT_UCHAR));
              VipsImage* result = nullptr;
              if (in == nullptr || apply(in.get(), &result) != 0) return;
              const Image out(result);
              size_t size = 0;
              g_free(vips_image_write_to_memory(out.get(), &size));
            };
          }};
}

int Linear(VipsImage* in, VipsImage** out, std::array<double, 3> factors,
           std::array<double, 3> offsets) {
  const double a[] = {factors[0], factors[1], factors[2], 1};
  const double b[] = {offsets[0], offsets[1], offsets[2], 0};
  return vips_linear(in, out, a, b, 4, "uchar", TRUE, nullptr);
}

constexpr double PivotOffset(double contrast) { return 127 - 127 * (contrast + 1); }

int Tables(VipsImage* in, VipsImage** out) {
  std::array<uint8_t, 1024> tables;
  for (int value = 0; value < 256; ++value) {
    for (int channel = 0; channel < 4; ++channel) {
      tables[static_cast<size_t>(value * 4 + channel)] =
          channel == 3 ? static_cast<uint8_t>(value) : TableEntry(channel, value);
    }
  }
  const Image lut(
      vips_image_new_from_memory_copy(tables.data(), tables.size(), 256, 1, 4, VIPS_FORMAT_UCHAR));
  return vips_maplut(in, out, lut.get(), nullptr);
}

}  // namespace

std::vector<Peer> VipsPeers() {
  return {
      Make("InvertKRT",
           [](VipsImage* in, VipsImage** out) {
             return Linear(in, out, {-1, -1, -1}, {255, 255, 255});
           }),
      Make("ChangeContrastKRT channels",
           [](VipsImage* in, VipsImage** out) {
             const auto& c = kPerChannel;
             return Linear(in, out, {c[0] + 1, c[1] + 1, c[2] + 1},
                           {PivotOffset(c[0]), PivotOffset(c[1]), PivotOffset(c[2])});
           }),
      Make("CountColorsKRT",
           [](VipsImage* in, VipsImage** out) { return vips_hist_find(in, out, nullptr); }),
      Make("TransformColorsKRT", Tables),
  };
}

}  // namespace bench
