// Tetrahedral interpolation in a three-dimensional table of colours.
#pragma once

#include "classes/lut3d.h"
#include "pixels/layout.h"

// From a grid point to the next one on each axis, in doubles.
inline constexpr int32_t kStrideB = 3;
inline constexpr int32_t kStrideG = kLutGrid * kStrideB;
inline constexpr int32_t kStrideR = kLutGrid * kStrideG;

// Channel values from a grid point to the next one.
inline constexpr int32_t kGridStep = 17;

// How far a channel value can lie above the grid point below it.
struct Fractions {
  double of[kGridStep];
};
inline constexpr Fractions kFractions = [] {
  Fractions fractions{};
  for (int32_t i = 0; i < kGridStep; ++i) fractions.of[i] = i / 17.0;
  return fractions;
}();

// One axis of the cell of the grid in which a colour lies: in one number, so that numbers in
// descending order are axes in the order of the fractions; after these stand who goes first where
// fractions are equal, and the way to the cell's other side.
constexpr int32_t kFractionBit = 16;
constexpr int32_t kTieBit = 14;
constexpr int32_t kStrideMask = (1 << kTieBit) - 1;

// The last grid point that a picture reaches has no next one: there the cell is flat.
constexpr int32_t CellAxis(int32_t value, int32_t lower, int32_t tie, int32_t stride) {
  return (value - kGridStep * lower) << kFractionBit | tie << kTieBit | (value == 255 ? 0 : stride);
}
constexpr double FractionOf(int32_t axis) { return kFractions.of[axis >> kFractionBit]; }
constexpr int32_t StrideOf(int32_t axis) { return axis & kStrideMask; }

constexpr int32_t Lesser(int32_t a, int32_t b) { return a < b ? a : b; }
constexpr int32_t Greater(int32_t a, int32_t b) { return a < b ? b : a; }

// The tetrahedron of a cell in which a colour lies: it runs from the lowest corner along the three
// axes, that of the greatest fraction first, to the highest.
struct Tetrahedron {
  int32_t lowest;  // where the lowest corner is in the table
  int32_t first;   // axes
  int32_t second;
  int32_t third;
};

// Where fractions are equal, tetrahedra meet and corners of weight 0 differ, which shows where the
// table isn't finite. Green then goes before red; blue goes before both if red is above green, and
// after both if not.
constexpr Tetrahedron TetrahedronOf(Pixel p) {
  const int32_t r = p.red / kGridStep;
  const int32_t g = p.green / kGridStep;
  const int32_t b = p.blue / kGridStep;
  const int32_t red = CellAxis(p.red, r, 1, kStrideR);
  const int32_t green = CellAxis(p.green, g, 2, kStrideG);
  const int32_t blue = CellAxis(p.blue, b, red > green ? 3 : 0, kStrideB);

  const int32_t greater = Greater(red, green);
  const int32_t lesser = Lesser(red, green);
  const int32_t middle = Lesser(greater, blue);
  return {r * kStrideR + g * kStrideG + b * kStrideB, Greater(greater, blue),
          Greater(middle, lesser), Lesser(middle, lesser)};
}

// Four doubles of the table, which may lie at any address: the three channels of a grid point, and
// one more that nobody looks at, so that they are computed together.
using Quad = double __attribute__((vector_size(32)));
using QuadInTable __attribute__((aligned(1), may_alias)) = Quad;
using QuadOfInt32 = int32_t __attribute__((vector_size(16)));

// The colour that `table` gives for `p`:
//
//   (1 - f1) * C0 + (f1 - f2) * C1 + (f2 - f3) * C2 + f3 * C3
//
// with the fractions f in descending order and the corners C along the tetrahedron, truncated, and
// clamped to 0 to 255; what isn't a number gives 0.
inline Pixel SumXYZ(const double* table, Pixel p) {
  const Tetrahedron t = TetrahedronOf(p);
  const double* corner0 = table + t.lowest;
  const double* corner1 = corner0 + StrideOf(t.first);
  const double* corner2 = corner1 + StrideOf(t.second);
  const double* corner3 = corner2 + StrideOf(t.third);
  const double f1 = FractionOf(t.first);
  const double f2 = FractionOf(t.second);
  const double f3 = FractionOf(t.third);

  const Quad sum = (1.0 - f1) * *reinterpret_cast<const QuadInTable*>(corner0) +
                   (f1 - f2) * *reinterpret_cast<const QuadInTable*>(corner1) +
                   (f2 - f3) * *reinterpret_cast<const QuadInTable*>(corner2) +
                   f3 * *reinterpret_cast<const QuadInTable*>(corner3);
  constexpr Quad kLeast{0.0, 0.0, 0.0, 0.0};
  constexpr Quad kMost{255.0, 255.0, 255.0, 255.0};
  const Quad positive = sum > kLeast ? sum : kLeast;
  const Quad clamped = positive < kMost ? positive : kMost;
  const QuadOfInt32 channels = __builtin_convertvector(clamped, QuadOfInt32);
  return {channels[0], channels[1], channels[2]};
}
