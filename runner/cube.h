// Colour tables in Adobe's .cube format, resampled to the grid of PictureLut3DKRT.
#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <span>
#include <string_view>
#include <vector>

namespace runner {

// A three-dimensional table as the file has it. Entry (r, g, b) is at (b * size + g) * size + r;
// inputs reach from domainMin to domainMax, outputs are 1.0 at full scale and may lie outside.
struct CubeFile {
  size_t size = 0;
  std::array<double, 3> domainMin{0, 0, 0};
  std::array<double, 3> domainMax{1, 1, 1};
  std::vector<std::array<double, 3>> redFastest;

  // The output for any input by tetrahedral interpolation; inputs outside the domain are clamped.
  std::array<double, 3> At(const std::array<double, 3>& input) const;
};

// Reads the text of a .cube file. Throws Failure, which gives `name` and the number of the line.
CubeFile ParseCube(std::string_view text, std::string_view name);
CubeFile LoadCube(const std::filesystem::path& path);

// The points of PictureLut3DKRT's grid that reach a picture: index i stands for the channel value
// 17 * i, outputs are on the scale 0 to 255.
constexpr size_t kLutPoints = 16;
struct LutGrid {
  // At (r * 16 + g) * 16 + b.
  std::vector<std::array<double, 3>> blueFastest;
};
LutGrid Resample(const CubeFile& cube);

}  // namespace runner
