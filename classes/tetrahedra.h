// Tetrahedral interpolation in a three-dimensional table of colours.
#pragma once

#include "classes/lut3d.h"
#include "pixels/rows.h"

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
constexpr int32_t FractionOf(int32_t axis) { return axis >> kFractionBit; }
constexpr int32_t StrideOf(int32_t axis) { return axis & kStrideMask; }

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

  const int32_t greater = Larger(red, green);
  const int32_t lesser = Smaller(red, green);
  const int32_t middle = Smaller(greater, blue);
  return {r * kStrideR + g * kStrideG + b * kStrideB, Larger(greater, blue), Larger(middle, lesser),
          Smaller(middle, lesser)};
}

// The tetrahedra of a strip of colours: where their corners are in the table, and the fractions in
// descending order, in 17ths.
struct Tetrahedra {
  int32_t corner0[kStripLength];
  int32_t corner1[kStripLength];
  int32_t corner2[kStripLength];
  int32_t corner3[kStripLength];
  int32_t fraction1[kStripLength];
  int32_t fraction2[kStripLength];
  int32_t fraction3[kStripLength];
};

template <Layout kFrom, class Count>
void FindTetrahedra(Count count, const Word* colours, Tetrahedra& found) {
  for (int32_t i = 0; i < count; ++i) {
    const Tetrahedron t = TetrahedronOf(Unpack<kFrom>(colours[i]));
    const int32_t corner1 = t.lowest + StrideOf(t.first);
    const int32_t corner2 = corner1 + StrideOf(t.second);
    found.corner0[i] = t.lowest;
    found.corner1[i] = corner1;
    found.corner2[i] = corner2;
    found.corner3[i] = corner2 + StrideOf(t.third);
    found.fraction1[i] = FractionOf(t.first);
    found.fraction2[i] = FractionOf(t.second);
    found.fraction3[i] = FractionOf(t.third);
  }
}

// The three channels of a grid point, and one double more that nobody looks at, so that they are
// computed together. (The last point that a picture reaches isn't the last of the table.)
inline constexpr int32_t kQuad = 4;
using Quad = double __attribute__((vector_size(kQuad * sizeof(double))));

inline void LoadGridPoint(const double* point, Quad& channels) {
  __builtin_memcpy(&channels, point, sizeof(channels));
}

inline void LoadFraction(int32_t seventeenths, Quad& fraction) {
  const double value = kFractions.of[seventeenths];
  fraction = Quad{value, value, value, value};
}

// Interpolates in tetrahedron i:
//
//   (1 - f1) * C0 + (f1 - f2) * C1 + (f2 - f3) * C2 + f3 * C3
//
// with the fractions f and the corners C of `table`.
inline void SumXYZ(const double* table, const Tetrahedra& t, int32_t i, double* channels) {
  Quad c0;
  Quad c1;
  Quad c2;
  Quad c3;
  LoadGridPoint(table + t.corner0[i], c0);
  LoadGridPoint(table + t.corner1[i], c1);
  LoadGridPoint(table + t.corner2[i], c2);
  LoadGridPoint(table + t.corner3[i], c3);
  Quad f1;
  Quad f2;
  Quad f3;
  LoadFraction(t.fraction1[i], f1);
  LoadFraction(t.fraction2[i], f2);
  LoadFraction(t.fraction3[i], f3);
  const Quad sum = (1.0 - f1) * c0 + (f1 - f2) * c1 + (f2 - f3) * c2 + f3 * c3;
  __builtin_memcpy(channels, &sum, sizeof(sum));
}

// Takes each colour of a strip through a table. Several passes over the strip are what makes it
// fast: all but the sum fill vectors, each is so short that a processor works on many pixels at
// once, and there are no branches, which it would guess wrong at every other pixel of a photograph.
struct TableLookup {
  const double* table = nullptr;

  // Channels are clamped to these and truncated; what isn't a number gives the least. They are kept
  // here, because only of limits that it doesn't know does g++ 12 make one operation each.
  double least = 0.0;
  double most = 255.0;

  template <Layout kTo, Layout kFrom, class Count>
  void operator()(Count count, Word* target, const Word* source) const {
    // NOLINTBEGIN(cppcoreguidelines-pro-type-member-init): filled for `count`
    Tetrahedra tetrahedra;
    double sums[kStripLength][kQuad];
    int32_t channels[kStripLength][kQuad];
    // NOLINTEND(cppcoreguidelines-pro-type-member-init)
    FindTetrahedra<kFrom>(count, source, tetrahedra);
    for (int32_t i = 0; i < count; ++i) SumXYZ(table, tetrahedra, i, sums[i]);
    const double* sum = sums[0];
    int32_t* channel = channels[0];
    for (int32_t i = 0; i < count * kQuad; ++i) {
      const double positive = sum[i] > least ? sum[i] : least;
      channel[i] = static_cast<int32_t>(positive < most ? positive : most);
    }
    for (int32_t i = 0; i < count; ++i) {
      target[i] = Pack<kTo>({channels[i][0], channels[i][1], channels[i][2]});
    }
  }
};
