// Texts of .cube files. Tables that are taken must be whole, give their own entries at their own
// points and nothing beyond them in between.
#include <algorithm>
#include <cmath>

#include "runner/cube.h"
#include "runner/failure.h"
#include "tests/fuzz/target.h"

namespace fuzz {
namespace {

struct Bounds {
  double low = HUGE_VAL, high = -HUGE_VAL;
};

Bounds BoundsOf(const std::vector<runner::Triple>& entries) {
  Bounds bounds;
  for (const auto& entry : entries) {
    for (const double value : entry) {
      Require(std::isfinite(value), "an entry that is no number");
      bounds.low = std::min(bounds.low, value);
      bounds.high = std::max(bounds.high, value);
    }
  }
  return bounds;
}

// Of the curves, of which SampleCurves takes whole levels.
void CheckCurves(const runner::CubeFile& cube) {
  Require(cube.curves.size() >= 2 && cube.curves.size() <= 65536, "a size that no curve has");
  const Bounds bounds = BoundsOf(cube.curves);
  for (const bool high : {false, true}) {
    const runner::Triple output = cube.Curved(high ? cube.curveDomain.high : cube.curveDomain.low);
    const runner::Triple& entry = high ? cube.curves.back() : cube.curves.front();
    Require(output == entry, "an end of a curve isn't its entry");
  }
  if (std::max(std::abs(bounds.low), std::abs(bounds.high)) > 1e300) return;
  for (const auto& curve : runner::SampleCurves(cube)) {
    for (const uint8_t value : curve) {
      Require(value >= std::floor(std::min(bounds.low, 1.0) * 255) &&
                  value <= std::ceil(std::max(bounds.high, 0.0) * 255),
              "a curve lies outside its entries");
    }
  }
}

void CheckCorners(const runner::CubeFile& cube) {
  for (size_t corner = 0; corner < 8; ++corner) {
    std::array<double, 3> input{};
    size_t place = 0;
    size_t step = 1;
    for (size_t axis = 0; axis < 3; ++axis) {
      const bool high = (corner >> axis & 1) != 0;
      input[axis] = high ? cube.domain.high[axis] : cube.domain.low[axis];
      if (high) place += step * (cube.size - 1);
      step *= cube.size;
    }
    const std::array<double, 3> output = cube.At(input);
    for (size_t channel = 0; channel < 3; ++channel) {
      Require(output[channel] == cube.redFastest[place][channel], "a corner isn't its entry");
    }
  }
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace fuzz;
  runner::CubeFile cube;
  try {
    cube = runner::ParseCube(TextOf(data, size), "input.cube");
  } catch (const runner::Failure& failure) {
    const std::string_view text = failure.what();
    Require(text.starts_with("'input.cube' isn't a table that can be used, line ") &&
                text.find('\n') == std::string_view::npos,
            "an error that isn't a line: " + std::string(text));
    return 0;
  }
  Require(cube.size > 0 || !cube.curves.empty(), "a file without a table");
  if (!cube.curves.empty()) CheckCurves(cube);
  if (cube.size == 0) return 0;
  Require(cube.size >= 2 && cube.size <= 256, "a size that the format doesn't have");
  Require(cube.redFastest.size() == cube.size * cube.size * cube.size, "a table that isn't whole");
  const Bounds bounds = BoundsOf(cube.redFastest);
  if (cube.curves.empty()) CheckCorners(cube);
  const double largest = std::max(std::abs(bounds.low), std::abs(bounds.high));
  const runner::LutGrid grid = runner::Resample(cube);
  Require(grid.blueFastest.size() == 16 * 16 * 16, "a grid of another size");
  for (const auto& entry : grid.blueFastest) {
    for (const double value : entry) {
      Require(!std::isnan(value), "a point of the grid is no number");
      if (largest > 1e300) continue;
      // The half rounds.
      const double output = (value - 0.5) / 255;
      const double slack = 1e-9 * std::max(largest, 1.0);
      Require(output >= bounds.low - slack && output <= bounds.high + slack,
              "a point of the grid lies outside the table's values");
    }
  }
  return 0;
}
