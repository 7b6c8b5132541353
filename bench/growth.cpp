#include "bench/growth.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace bench {

namespace {

constexpr Size kSizes[] = {{500, 500}, {1000, 1000}, {2000, 2000}, {4000, 4000}, {8000, 8000}};
// Pictures smaller than this one gain from caches.
constexpr size_t kFirstLarge = 2;
constexpr double kFlat = 1.2;

// How much more a pixel of the largest picture takes than one of the first large one. Where memory
// alone takes more there, too, that part is taken out.
double GrowthOf(const std::vector<Figures>& figures) {
  const Figures& first = figures[kFirstLarge];
  const Figures& last = figures.back();
  const double growth = last.plugin / first.plugin;
  if (last.limitTime <= 0) return growth;
  return std::min(growth, growth / (last.limitTime / first.limitTime));
}

}  // namespace

nlohmann::json MeasureGrowth(const std::vector<const Case*>& cases, const Plan& plan) {
  nlohmann::json results = nlohmann::json::array();
  std::printf("%-46s", "ns/pixel, by megapixels");
  for (const Size size : kSizes) std::printf(" %8.4g", static_cast<double>(size.Pixels()) / 1e6);
  std::printf("   largest to 4\n");
  for (const Case* each : cases) {
    const bool layoutsAlone = each->source != Layout::rgba || each->target != Layout::rgba;
    if (layoutsAlone || each->timed == Output::fresh) continue;
    std::vector<Figures> figures;
    nlohmann::json times = nlohmann::json::array();
    std::printf("%-46s", each->name.c_str());
    for (const Size size : kSizes) {
      if (size.Pixels() > each->largest) continue;
      figures.push_back(Run(*each, size, plan));
      times.push_back({{"pixels", size.Pixels()}, {"time", figures.back().plugin}});
      std::printf(" %8.3f", figures.back().plugin);
      std::fflush(stdout);
    }
    const double growth = GrowthOf(figures);
    std::printf("   %7.2f %s\n", growth, growth <= kFlat ? "flat" : "GROWS");
    results.push_back({{"operation", each->name},
                       {"per", each->per},
                       {"times", times},
                       {"growth", growth},
                       {"flat", growth <= kFlat}});
  }
  return results;
}

}  // namespace bench
