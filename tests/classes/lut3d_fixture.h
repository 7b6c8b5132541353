// What the tests of PictureLut3DKRT share: the interpolation by its table of conditions.
#pragma once

#include <array>
#include <cmath>

#include "tests/classes/filter_test.h"

namespace lut3d {

using namespace support;

inline constexpr int kGrid = 18;
inline constexpr size_t kEntries = size_t{kGrid} * kGrid * kGrid * 3;
using Table = std::vector<double>;  // the last index fastest

inline size_t Index(int r, int g, int b, int x) {
  return ((static_cast<size_t>(r) * kGrid + g) * kGrid + b) * 3 + x;
}

// The six tetrahedra of the unit cube, as the table of conditions has them.
inline double Interpolated(const Table& table, Rgb p, int x) {
  const int r0 = p.red / 17, g0 = p.green / 17, b0 = p.blue / 17;
  const int r1 = p.red == 255 ? 15 : r0 + 1;
  const int g1 = p.green == 255 ? 15 : g0 + 1;
  const int b1 = p.blue == 255 ? 15 : b0 + 1;
  const double fx = (p.red - 17 * r0) / 17.0;
  const double fy = (p.green - 17 * g0) / 17.0;
  const double fz = (p.blue - 17 * b0) / 17.0;
  const double c000 = table[Index(r0, g0, b0, x)], c100 = table[Index(r1, g0, b0, x)];
  const double c110 = table[Index(r1, g1, b0, x)], c111 = table[Index(r1, g1, b1, x)];
  const double c101 = table[Index(r1, g0, b1, x)], c001 = table[Index(r0, g0, b1, x)];
  const double c011 = table[Index(r0, g1, b1, x)], c010 = table[Index(r0, g1, b0, x)];
  std::array<double, 4> t;
  if (fx > fy && fy > fz) {
    t = {(1 - fx) * c000, (fx - fy) * c100, (fy - fz) * c110, fz * c111};
  } else if (fx > fy && fx > fz) {
    t = {(1 - fx) * c000, (fx - fz) * c100, (fz - fy) * c101, fy * c111};
  } else if (fx > fy) {
    t = {(1 - fz) * c000, (fz - fx) * c001, (fx - fy) * c101, fy * c111};
  } else if (fz > fy) {
    t = {(1 - fz) * c000, (fz - fy) * c001, (fy - fx) * c011, fx * c111};
  } else if (fz > fx) {
    t = {(1 - fy) * c000, (fy - fz) * c010, (fz - fx) * c011, fx * c111};
  } else {
    t = {(1 - fy) * c000, (fy - fx) * c010, (fx - fz) * c110, fz * c111};
  }
  return ((t[0] + t[1]) + t[2]) + t[3];
}

inline int ToByte(double v) {
  if (std::isnan(v) || v < 0) return 0;
  return v > 255.0 ? 255 : static_cast<int>(v);
}

inline Rgb LookedUp(const Table& table, Rgb p) {
  return {ToByte(Interpolated(table, p, 0)), ToByte(Interpolated(table, p, 1)),
          ToByte(Interpolated(table, p, 2))};
}

inline Table Identity() {
  Table table(kEntries);
  for (int r = 0; r < kGrid; ++r) {
    for (int g = 0; g < kGrid; ++g) {
      for (int b = 0; b < kGrid; ++b) {
        table[Index(r, g, b, 0)] = 17 * r;
        table[Index(r, g, b, 1)] = 17 * g;
        table[Index(r, g, b, 2)] = 17 * b;
      }
    }
  }
  return table;
}

inline Table RandomTable(Random& random, double least, double most) {
  Table table(kEntries);
  for (double& entry : table) entry = random.Real(least, most);
  return table;
}

class Lut3D : public FilterTest {
 protected:
  Lut3D() : FilterTest("PictureLut3DKRT") {}

  void SetEntry(const Filter& filter, uint32_t r, uint32_t g, uint32_t b, uint32_t x, double v) {
    Assign(Find("PictureLut3DKRT", "Table", 4), filter, r, g, b, x, v);
  }
  double GetEntry(const Filter& filter, uint32_t r, uint32_t g, uint32_t b, uint32_t x) {
    return CallOn<double>(filter, "Table", r, g, b, x);
  }
  // Calls the registered functions straight away: a table has many entries.
  void SetTable(const Filter& filter, const Table& table) {
    using Setter = void(REALobject, uint32_t, uint32_t, uint32_t, uint32_t, double);
    auto* set = reinterpret_cast<Setter*>(Find("PictureLut3DKRT", "Table", 4).setter);
    size_t index = 0;
    for (uint32_t r = 0; r < kGrid; ++r) {
      for (uint32_t g = 0; g < kGrid; ++g) {
        for (uint32_t b = 0; b < kGrid; ++b) {
          for (uint32_t x = 0; x < 3; ++x) set(filter.Handle(), r, g, b, x, table[index++]);
        }
      }
    }
  }
  Table GetTable(const Filter& filter) {
    using Getter = double(REALobject, uint32_t, uint32_t, uint32_t, uint32_t);
    auto* get = reinterpret_cast<Getter*>(Find("PictureLut3DKRT", "Table", 4).function);
    Table table;
    for (uint32_t r = 0; r < kGrid; ++r) {
      for (uint32_t g = 0; g < kGrid; ++g) {
        for (uint32_t b = 0; b < kGrid; ++b) {
          for (uint32_t x = 0; x < 3; ++x) table.push_back(get(filter.Handle(), r, g, b, x));
        }
      }
    }
    return table;
  }
  void ExpectLooksUp(const Filter& filter, const Table& table, const PictureRef& source,
                     const Bounds& bounds = {}) {
    Set(filter, "SourcePicture", source);
    ExpectFilters(filter, bounds, HasAlpha(source->Layout()),
                  [&](Rgb p) { return LookedUp(table, p); });
  }
  // Every combination of fractions, each in `cells` cells at random, those at the ends of the axes
  // more often than others.
  PictureRef EveryFraction(int cells, Random& random) {
    const PictureRef picture = Host().NewPicture(17 * 17, 17 * cells);
    const auto channel = [&](int part) {
      const int cell = random.OneIn(3) ? 15 * random.Between(0, 1) : random.Between(0, 14);
      return cell == 15 ? 255 - 17 * (part > 0) + part : 17 * cell + part;
    };
    for (int y = 0; y < 17 * cells; ++y) {
      for (int x = 0; x < 17 * 17; ++x) {
        Put(picture, x, y, {channel(x / 17), channel(x % 17), channel(y % 17)}, random.Byte());
      }
    }
    return picture;
  }
  Rgb LookUp(const Filter& filter, Rgb colour) {
    const PictureRef source = Host().NewPicture(1, 1);
    Put(source, 0, 0, colour);
    Set(filter, "SourcePicture", source);
    EXPECT_TRUE(Run(filter));
    return At(Destination(filter), 0, 0);
  }
};

}  // namespace lut3d
