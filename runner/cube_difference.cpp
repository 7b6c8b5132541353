// How far the grid of PictureLut3DKRT is from the table that it stands for.
#include <algorithm>
#include <cmath>
#include <limits>

#include "runner/cube.h"

namespace runner {
namespace {

constexpr int kLevels = 256;
constexpr size_t kCells = kLutPoints - 1;  // of the grid, on an axis

// Where each level of each channel lies in the file's table.
using ChannelPlaces = std::array<Place, kLevels>;
using Places = std::array<ChannelPlaces, 3>;

Places PlacesIn(const CubeFile& cube) {
  Places places;
  for (size_t channel = 0; channel < 3; ++channel)
    for (size_t level = 0; level < kLevels; ++level)
      places[channel][level] = cube.PlaceOf(channel, static_cast<double>(level) / 255.0);
  return places;
}

// A cell of the grid, and a number that no difference between the file and the grid exceeds there.
struct Cell {
  std::array<size_t, 3> index{};  // red, green, blue
  double bound = 0;
};

// One axis of a cell, in points of the file.
struct Reach {
  size_t first = 0, last = 0;  // the points between which the cell's levels lie
  double bend = 0;             // how far a level lies from where it would between the cell's ends

  Reach(const ChannelPlaces& places, size_t cell) {
    const auto at = [&](size_t level) {
      return static_cast<double>(places[level].cell) + places[level].fraction;
    };
    const size_t low = kLutStep * cell, high = low + kLutStep;
    first = places[low].cell;
    for (size_t level = low; level <= high; ++level) {
      const Place& place = places[level];
      const double part = static_cast<double>(level - low) / kLutStep;
      first = std::min(first, place.cell);
      last = std::max(last, place.cell + (place.fraction > 0 ? 1 : 0));
      bend = std::max(bend, std::abs(at(level) - ((1 - part) * at(low) + part * at(high))));
    }
  }
};

// The file's colours F are interpolated between its entries, the grid's colours G between those of
// F at the cell's corners. Let M be a sum of slopes along the axes of the table. Both F - M and its
// interpolation from the corners lie between the least and the greatest entry less M, so that they
// differ by that range at most. M differs from its own interpolation only where levels don't lie
// evenly in the table: by the slope of an axis times its bend. Both together bound F - G, whatever
// M is; the bound is narrow where M takes most of the change out of the cell.
double BoundIn(const CubeFile& cube, const std::array<Reach, 3>& reach) {
  const std::array<size_t, 3> step{1, cube.size, cube.size * cube.size};
  size_t lowest = 0, highest = 0;
  for (size_t axis = 0; axis < 3; ++axis) {
    lowest += reach[axis].first * step[axis];
    highest += reach[axis].last * step[axis];
  }
  double largest = 0;
  for (size_t channel = 0; channel < 3; ++channel) {
    const auto entry = [&](size_t at) { return cube.redFastest[at][channel]; };
    std::array<double, 3> slope{};
    double bends = 0;
    for (size_t axis = 0; axis < 3; ++axis) {
      const size_t length = reach[axis].last - reach[axis].first;
      if (length == 0) continue;
      const size_t edge = length * step[axis];
      slope[axis] =
          (entry(lowest + edge) - entry(lowest) + entry(highest) - entry(highest - edge)) / 2 /
          static_cast<double>(length);
      bends += std::abs(slope[axis]) * reach[axis].bend;
    }
    double least = std::numeric_limits<double>::infinity(), greatest = -least;
    for (size_t b = reach[2].first; b <= reach[2].last; ++b)
      for (size_t g = reach[1].first; g <= reach[1].last; ++g)
        for (size_t r = reach[0].first; r <= reach[0].last; ++r) {
          const double change = slope[0] * static_cast<double>(r - reach[0].first) +
                                slope[1] * static_cast<double>(g - reach[1].first) +
                                slope[2] * static_cast<double>(b - reach[2].first);
          const double rest = entry(r + g * step[1] + b * step[2]) - change;
          least = std::min(least, rest);
          greatest = std::max(greatest, rest);
        }
    const double bound = (greatest - least + bends) * 255.0;
    // Of numbers so large that they have no difference nothing is known.
    largest = std::isfinite(bound) ? std::max(largest, bound) : HUGE_VAL;
    if (largest == HUGE_VAL) break;
  }
  return largest;
}

std::vector<Cell> CellsByBound(const CubeFile& cube, const Places& places) {
  std::array<std::vector<Reach>, 3> reaches;
  for (size_t channel = 0; channel < 3; ++channel)
    for (size_t cell = 0; cell < kCells; ++cell)
      reaches[channel].emplace_back(places[channel], cell);
  std::vector<Cell> cells;
  for (size_t r = 0; r < kCells; ++r)
    for (size_t g = 0; g < kCells; ++g)
      for (size_t b = 0; b < kCells; ++b)
        cells.push_back({{r, g, b}, BoundIn(cube, {reaches[0][r], reaches[1][g], reaches[2][b]})});
  std::sort(cells.begin(), cells.end(),
            [](const Cell& one, const Cell& other) { return one.bound > other.bound; });
  return cells;
}

// Over the colours of one cell, its faces included.
int DifferenceIn(const Cell& cell, const CubeFile& cube, const LutGrid& grid,
                 const Places& places) {
  const std::array<size_t, 3> start{kLutStep * cell.index[0], kLutStep * cell.index[1],
                                    kLutStep * cell.index[2]};
  const Triple* corner =
      &grid.blueFastest[(cell.index[0] * kLutPoints + cell.index[1]) * kLutPoints + cell.index[2]];
  int largest = 0;
  for (size_t b = start[2]; b <= start[2] + kLutStep; ++b)
    for (size_t g = start[1]; g <= start[1] + kLutStep; ++g)
      for (size_t r = start[0]; r <= start[0] + kLutStep; ++r) {
        const Place& x = places[0][r];
        const Place& y = places[1][g];
        const Place& z = places[2][b];
        const Triple wanted = Interpolate(
            &cube.redFastest[(z.cell * cube.size + y.cell) * cube.size + x.cell], {x.fraction, 1},
            {y.fraction, cube.size}, {z.fraction, cube.size * cube.size});
        const auto part = [](size_t level, size_t from) {
          return static_cast<double>(level - from) / kLutStep;
        };
        const Triple got = Interpolate(corner, {part(r, start[0]), kLutPoints * kLutPoints},
                                       {part(g, start[1]), kLutPoints}, {part(b, start[2]), 1});
        for (size_t channel = 0; channel < 3; ++channel)
          largest = std::max(
              largest, std::abs(LevelOf(wanted[channel] * 255.0 + 0.5) - LevelOf(got[channel])));
      }
  return largest;
}

}  // namespace

int LargestDifference(const CubeFile& cube, const LutGrid& grid) {
  const Places places = PlacesIn(cube);
  int largest = kSmallDifference;
  for (const Cell& cell : CellsByBound(cube, places)) {
    // Rounded values differ by more than a whole number only where the exact ones do. What the
    // arithmetic adds is far below a thousandth.
    if (cell.bound + 1e-3 <= largest) break;
    largest = std::max(largest, DifferenceIn(cell, cube, grid, places));
  }
  return largest;
}

}  // namespace runner
