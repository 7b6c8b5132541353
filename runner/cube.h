// Colour tables in Adobe's .cube format, resampled to the grid of PictureLut3DKRT and to the curves
// of TransformColorsKRT.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

namespace runner {

using Triple = std::array<double, 3>;  // red, green, blue

// A place between two neighbours on an axis of a table.
struct Place {
  size_t cell = 0;      // the lower neighbour; never the last point
  double fraction = 0;  // 0 at the lower neighbour, 1 at the next
};

// A file's curves, one for each channel, its three-dimensional table, or both: then the curves come
// first, and what they give is looked up in the table. Inputs reach from `low` to `high`, and those
// outside are as the nearest end. Outputs are 1.0 at full scale and may lie outside.
struct CubeFile {
  struct Domain {
    Triple low{0, 0, 0};
    Triple high{1, 1, 1};
  };
  Domain curveDomain;
  std::vector<Triple> curves;  // empty: there are none

  Domain domain;
  size_t size = 0;  // points on each axis; 0: there is no three-dimensional table
  // Entry (r, g, b) is at (b * size + g) * size + r.
  std::vector<Triple> redFastest;

  // The output of the curves alone, by linear interpolation; without curves the input itself.
  Triple Curved(const Triple& input) const;
  // Where an input of one channel lies in the three-dimensional table, after its curve.
  Place PlaceOf(size_t channel, double input) const;
  // The output of the file by tetrahedral interpolation. It needs a three-dimensional table.
  Triple At(const Triple& input) const;
};

// Reads the text of a .cube file. Inputs and outputs in video range, where 16 of 255 is black and
// 235 is white, become full range: the domain and the entries are scaled. Throws Failure, which
// gives `name` and the number of the line.
CubeFile ParseCube(std::string_view text, std::string_view name);
CubeFile LoadCube(const std::filesystem::path& path);

// An axis of the cell that an input lies in: how far inside, and how far apart the entries are.
struct CellAxis {
  double fraction = 0;
  size_t step = 0;
};
// Interpolates between the corners of a cell, whose lowest is given: in the tetrahedron that the
// input lies in, with the sums in PictureLut3DKRT's order.
Triple Interpolate(const Triple* lowest, CellAxis x, CellAxis y, CellAxis z);

// The points of PictureLut3DKRT's grid that reach a picture: index i stands for the channel value
// 17 * i. Outputs are on the scale 0 to 255 and half a level higher, because the class truncates
// its results: so they are rounded.
constexpr size_t kLutPoints = 16;
constexpr int kLutStep = 17;
struct LutGrid {
  // At (r * 16 + g) * 16 + b.
  std::vector<Triple> blueFastest;
};
// The file has a three-dimensional table.
LutGrid Resample(const CubeFile& cube);

// The new value of each value of a channel: red, green, blue.
using ChannelCurves = std::array<std::array<uint8_t, 256>, 3>;
// Those of the file's curves, rounded and clamped.
ChannelCurves SampleCurves(const CubeFile& cube);

// What PictureLut3DKRT makes of a value: truncated, and within 0 to 255.
inline int LevelOf(double value) {
  const double positive = value > 0 ? value : 0;  // 0 where it isn't a number
  return static_cast<int>(positive < 255 ? positive : 255);
}

// The largest difference, in levels of a channel, between the file's own interpolation, rounded,
// and what PictureLut3DKRT makes of `grid`, over all colours of 8 bits a channel. Those up to
// kSmallDifference aren't told apart: it is given for each of them.
constexpr int kSmallDifference = 2;
int LargestDifference(const CubeFile& cube, const LutGrid& grid);

}  // namespace runner
