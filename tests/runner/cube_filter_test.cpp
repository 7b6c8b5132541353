// What PictureLut3DKRT makes of every colour there is, with tables from .cube files.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>

#include "places.h"
#include "runner/cube.h"
#include "runner/filter_class.h"
#include "runner/host_setup.h"

namespace runner {
namespace {

constexpr int32_t kSide = 4096;
constexpr size_t kColours = size_t{kSide} * kSide;

size_t Level(size_t colour, size_t channel) { return colour >> (8 * channel) & 255; }

// A file with six decimals: `start`, then the values of a function of the inputs.
CubeFile Table(size_t size, const std::function<Triple(Triple)>& function,
               const std::string& start = "") {
  std::string text = start + "LUT_3D_SIZE " + std::to_string(size) + "\n";
  const double last = double(size - 1);
  for (size_t b = 0; b < size; ++b)
    for (size_t g = 0; g < size; ++g)
      for (size_t r = 0; r < size; ++r) {
        const Triple entry = function({double(r) / last, double(g) / last, double(b) / last});
        char line[96];
        std::snprintf(line, sizeof line, "%.6f %.6f %.6f\n", entry[0], entry[1], entry[2]);
        text += line;
      }
  return ParseCube(text, "made");
}

class CubeFilter : public ::testing::Test {
 protected:
  CubeFilter() : setup(StartHost(WithPlugin())) {}

  static Options WithPlugin() {
    Options options;
    options.plugin = PICTURE_PLUGIN;
    return options;
  }

  // The results for all colours, R, G, B, A each; red is the fastest.
  std::vector<uint8_t> Filtered(const CubeFile& cube) {
    std::vector<uint8_t> bytes(4 * kColours, 255);
    for (size_t colour = 0; colour < kColours; ++colour)
      for (size_t i = 0; i < 3; ++i) bytes[4 * colour + i] = uint8_t(Level(colour, i));
    const auto source = setup.host->NewPicture(kSide, kSide, setup.images.opaqueLayout);
    source->FromRgba(bytes);
    std::vector<std::pair<std::string, Operand>> arguments;
    arguments.emplace_back(
        "table",
        Operand{host::Nil{}, std::make_shared<const LutGrid>(Resample(cube)), std::nullopt});
    const host::RegisteredClass* type = setup.host->registry.FindClass("PictureLut3DKRT");
    return RunFilter(*setup.host, *type, arguments, source)->ToRgba();
  }

  // Compares all results with the file's own interpolation. `place` says where a level lies on an
  // axis of the file's table.
  int LargestByTrial(const CubeFile& cube, const std::function<double(double level)>& place) {
    std::array<size_t, 256> cells{};
    std::array<double, 256> fractions{};
    for (size_t level = 0; level < 256; ++level) {
      cells[level] = std::min(size_t(place(double(level))), cube.size - 2);
      fractions[level] = place(double(level)) - double(cells[level]);
    }
    const std::vector<uint8_t> got = Filtered(cube);
    int largest = 0;
    for (size_t colour = 0; colour < kColours; ++colour) {
      size_t at[3], order[3] = {0, 1, 2};
      double part[3];
      for (size_t i = 0; i < 3; ++i) {
        at[i] = cells[Level(colour, i)];
        part[i] = fractions[Level(colour, i)];
      }
      std::sort(order, order + 3,
                [&](size_t one, size_t other) { return part[one] > part[other]; });
      const double weights[4] = {1 - part[order[0]], part[order[0]] - part[order[1]],
                                 part[order[1]] - part[order[2]], part[order[2]]};
      Triple sum{};
      for (size_t corner = 0; corner < 4; ++corner) {
        if (corner > 0) ++at[order[corner - 1]];
        const Triple& entry = cube.redFastest[(at[2] * cube.size + at[1]) * cube.size + at[0]];
        for (size_t i = 0; i < 3; ++i) sum[i] += weights[corner] * entry[i];
      }
      for (size_t i = 0; i < 3; ++i) {
        const int wanted = int(std::clamp(sum[i], 0.0, 1.0) * 255 + 0.5);
        largest = std::max(largest, std::abs(int(got[4 * colour + i]) - wanted));
      }
    }
    return largest;
  }

  HostSetup setup;
};

// To look at all colours takes minutes with the sanitizers, and shows them nothing that a few
// don't.
#ifndef PICTURE_SANITIZED
// Of a photographic look: contrast, and channels that depend on each other.
Triple Film(Triple in) {
  const double light = 0.3 * in[0] + 0.6 * in[1] + 0.1 * in[2];
  return {std::pow(0.9 * in[0] + 0.1 * light, 2.2), 1.2 * (0.8 * in[1] + 0.2 * light) - 0.1,
          std::pow(0.7 * in[2] + 0.3 * light, 0.45)};
}

TEST_F(CubeFilter, AnIdentityOfAnySizeChangesNoColour) {
  for (const size_t size : {2, 3, 16, 17, 33, 64, 65}) {
    const std::vector<uint8_t> got = Filtered(Table(size, [](Triple in) { return in; }));
    size_t changed = 0;
    for (size_t colour = 0; colour < kColours; ++colour)
      for (size_t i = 0; i < 3; ++i) changed += got[4 * colour + i] != Level(colour, i);
    EXPECT_EQ(changed, 0U) << size;
  }
}

TEST_F(CubeFilter, TheLargestDifferenceIsThatOfAllColours) {
  // Of a table that has the grid's own points nothing is lost.
  for (const size_t size : {16, 6})
    EXPECT_EQ(LargestDifference(Table(size, Film), Resample(Table(size, Film))), 2) << size;

  for (const size_t size : {9, 33}) {
    const CubeFile cube = Table(size, Film);
    const int largest =
        LargestByTrial(cube, [&](double level) { return level / 255 * double(size - 1); });
    EXPECT_GT(largest, 2);
    EXPECT_EQ(LargestDifference(cube, Resample(cube)), largest) << size;
  }
}

TEST_F(CubeFilter, TheLargestDifferenceHonoursCurvesAndDomains) {
  // Curves that lift the shadows, into a table whose inputs reach from 0.1 to 0.9.
  const CubeFile cube =
      Table(9, Film, "LUT_1D_SIZE 3\nLUT_3D_INPUT_RANGE 0.1 0.9\n0 0 0\n0.7 0.7 0.7\n1 1 1\n");
  const int largest = LargestByTrial(cube, [](double level) {
    const double curved = level < 127.5 ? level / 127.5 * 0.7 : 0.4 + level / 255 * 0.6;
    return std::clamp((curved - 0.1) / 0.8, 0.0, 1.0) * 8;
  });
  EXPECT_GT(largest, 2);
  EXPECT_EQ(LargestDifference(cube, Resample(cube)), largest);
}
#endif

TEST_F(CubeFilter, OneEntryBetweenThePointsOfTheGridIsFound) {
  // 52 points, five levels apart. The entry at level 25 lies between the grid's 17 and 34 and plays
  // no part in them: all that the file adds there is lost. Curves that turn round bring it to 230.
  for (const std::string curves : {"", "LUT_1D_SIZE 2\n1 1 1\n0 0 0\n"}) {
    CubeFile cube = Table(
        52,
        [](Triple) {
          return Triple{0.2, 0.2, 0.2};
        },
        curves);
    EXPECT_EQ(LargestDifference(cube, Resample(cube)), 2);
    cube.redFastest[(5 * 52 + 5) * 52 + 5][1] = (51 + 77) / 255.0;
    EXPECT_EQ(LargestDifference(cube, Resample(cube)), 77);
  }
}

TEST_F(CubeFilter, ACurveThatBendsBetweenThePointsOfTheGridIsSeen) {
  // The table changes nothing, and the curves level 25 alone, by 40.
  std::string curves;
  for (int level = 0; level < 256; ++level) {
    const std::string value = std::to_string((level == 25 ? 65 : level) / 255.0);
    curves += value + " " + value + " " + value + "\n";
  }
  const CubeFile cube = Table(
      2, [](Triple in) { return in; }, "LUT_1D_SIZE 256\n" + curves);
  EXPECT_EQ(LargestDifference(cube, Resample(cube)), 40);
}

TEST_F(CubeFilter, NumbersWithoutADifferenceAreClamped) {
  // Their differences are beyond the largest number.
  const auto wild = [](Triple in) { return in[0] + in[1] > 0.9 ? Triple{1, 1, 1} : Triple{}; };
  CubeFile cube = Table(5, wild);
  for (Triple& entry : cube.redFastest)
    for (double& value : entry) value = value > 0 ? 1.7e308 : -1.7e308;
  const int largest = LargestDifference(cube, Resample(cube));
  EXPECT_GT(largest, 2);
  EXPECT_LE(largest, 255);
}

}  // namespace
}  // namespace runner
