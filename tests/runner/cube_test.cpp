#include "runner/cube.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "places.h"
#include "runner/failure.h"

namespace runner {
namespace {

using Triple = std::array<double, 3>;

// A .cube file of a function of the inputs, which are spread over the domain.
std::string CubeText(size_t size, const std::function<Triple(Triple)>& function,
                     Triple low = {0, 0, 0}, Triple high = {1, 1, 1}) {
  char line[128];
  std::string text = "TITLE \"made\"\n# a comment\nLUT_3D_SIZE " + std::to_string(size) + "\n";
  std::snprintf(line, sizeof line, "DOMAIN_MIN %.17g %.17g %.17g\n", low[0], low[1], low[2]);
  text += line;
  std::snprintf(line, sizeof line, "DOMAIN_MAX %.17g %.17g %.17g\n", high[0], high[1], high[2]);
  text += line;
  for (size_t b = 0; b < size; ++b)
    for (size_t g = 0; g < size; ++g)
      for (size_t r = 0; r < size; ++r) {
        const size_t at[3] = {r, g, b};
        Triple input{};
        for (size_t i = 0; i < 3; ++i)
          input[i] = low[i] + (high[i] - low[i]) * double(at[i]) / double(size - 1);
        const Triple output = function(input);
        std::snprintf(line, sizeof line, "%.17g %.17g %.17g\n", output[0], output[1], output[2]);
        text += line;
      }
  return text;
}

// Calls `check` with every point of the grid and the channel values that it stands for.
void ForEachPoint(const LutGrid& grid, const std::function<void(Triple, Triple)>& check) {
  ASSERT_EQ(grid.blueFastest.size(), 16U * 16 * 16);
  for (int r = 0; r < 16; ++r)
    for (int g = 0; g < 16; ++g)
      for (int b = 0; b < 16; ++b)
        check({17.0 * r, 17.0 * g, 17.0 * b}, grid.blueFastest[size_t(r * 256 + g * 16 + b)]);
}

// What is wrong with a text.
std::string ErrorOf(const std::string& text) {
  try {
    ParseCube(text, "film.cube");
  } catch (const Failure& failure) {
    return failure.what();
  }
  ADD_FAILURE() << "accepted: " << text;
  return "";
}

TEST(Cube, AnIdentityOfAnySizeGivesTheChannelValues) {
  for (const size_t size : {2, 3, 16, 17, 18, 33, 64}) {
    const CubeFile cube = ParseCube(CubeText(size, [](Triple in) { return in; }), "identity");
    EXPECT_EQ(cube.size, size);
    ForEachPoint(Resample(cube), [&](Triple expected, Triple got) {
      for (size_t i = 0; i < 3; ++i) ASSERT_NEAR(got[i], expected[i], 1e-9) << size;
    });
  }
}

TEST(Cube, PointsOfTheFileAreTakenAsTheyStand) {
  // 16 and 31 points an axis both have every point of the grid among theirs.
  for (const size_t size : {16, 31}) {
    const auto wild = [](Triple in) -> Triple {
      return {std::round(in[0] * 255) * 3 - 90, std::round(in[1] * in[2] * 255), 1 - in[0]};
    };
    const CubeFile cube = ParseCube(CubeText(size, wild), "wild");
    ForEachPoint(Resample(cube), [&](Triple in, Triple got) {
      // 17 * i is a whole number of steps of the file.
      size_t at[3];
      for (size_t i = 0; i < 3; ++i) at[i] = size_t(in[i]) / 17 * ((size - 1) / 15);
      const Triple& entry = cube.redFastest[(at[2] * size + at[1]) * size + at[0]];
      for (size_t i = 0; i < 3; ++i) ASSERT_EQ(got[i], entry[i] * 255.0) << size;
    });
  }
}

TEST(Cube, InterpolatesInTetrahedra) {
  // Eight corners with nothing in common; red fastest.
  const double corner[8] = {0.1, 0.9, 0.3, 0.2, 0.75, 0.4, 0.05, 0.6};
  std::string text = "LUT_3D_SIZE 2\n";
  for (const double value : corner) text += std::to_string(value) + " 0 1\n";
  const CubeFile cube = ParseCube(text, "corners");
  const auto c = [&](int r, int g, int b) { return corner[b * 4 + g * 2 + r]; };
  ForEachPoint(Resample(cube), [&](Triple in, Triple got) {
    const double x = in[0] / 255, y = in[1] / 255, z = in[2] / 255;
    double expected = 0;
    if (x >= y && y >= z)
      expected =
          (1 - x) * c(0, 0, 0) + (x - y) * c(1, 0, 0) + (y - z) * c(1, 1, 0) + z * c(1, 1, 1);
    else if (x >= z && z >= y)
      expected =
          (1 - x) * c(0, 0, 0) + (x - z) * c(1, 0, 0) + (z - y) * c(1, 0, 1) + y * c(1, 1, 1);
    else if (z >= x && x >= y)
      expected =
          (1 - z) * c(0, 0, 0) + (z - x) * c(0, 0, 1) + (x - y) * c(1, 0, 1) + y * c(1, 1, 1);
    else if (z >= y && y >= x)
      expected =
          (1 - z) * c(0, 0, 0) + (z - y) * c(0, 0, 1) + (y - x) * c(0, 1, 1) + x * c(1, 1, 1);
    else if (y >= z && z >= x)
      expected =
          (1 - y) * c(0, 0, 0) + (y - z) * c(0, 1, 0) + (z - x) * c(0, 1, 1) + x * c(1, 1, 1);
    else
      expected =
          (1 - y) * c(0, 0, 0) + (y - x) * c(0, 1, 0) + (x - z) * c(1, 1, 0) + z * c(1, 1, 1);
    ASSERT_NEAR(got[0], expected * 255, 1e-9) << in[0] << " " << in[1] << " " << in[2];
    ASSERT_NEAR(got[1], 0, 1e-12);
    ASSERT_NEAR(got[2], 255, 1e-12);
  });
}

TEST(Cube, HonoursTheDomain) {
  // Inputs outside the domain are as those at its ends.
  const Triple low{0.2, -1, 0}, high{0.6, 3, 2};
  const CubeFile cube = ParseCube(CubeText(
                                      5, [](Triple in) { return in; }, low, high),
                                  "domain");
  ForEachPoint(Resample(cube), [&](Triple in, Triple got) {
    for (size_t i = 0; i < 3; ++i)
      ASSERT_NEAR(got[i], std::clamp(in[i] / 255, low[i], high[i]) * 255, 1e-9);
  });
}

TEST(Cube, TakesWhatEditorsWrite) {
  std::string body;
  for (int i = 0; i < 8; ++i) body += "\t+0.5  .25 1e-1 \r\n";
  const CubeFile cube = ParseCube(
      "\xEF\xBB\xBFTITLE \"a # b\"\r\n\r\n  # note\r\nLUT_3D_SIZE 2\r\n"
      "LUT_3D_INPUT_RANGE 0.0 2.0\r\n" +
          body,
      "editor");
  EXPECT_EQ(cube.domainMax, (Triple{2, 2, 2}));
  EXPECT_EQ(cube.redFastest[7], (Triple{0.5, 0.25, 0.1}));
}

TEST(Cube, TellsTheLineThatIsWrong) {
  std::string seven = "LUT_3D_SIZE 2\n";
  for (int i = 0; i < 7; ++i) seven += "0 0 0\n";
  const std::string start = "'film.cube' isn't a table that can be used, line ";
  EXPECT_EQ(ErrorOf(""), start + "1: there is no LUT_3D_SIZE line");
  EXPECT_EQ(ErrorOf(seven), start + "8: the file ends after 7 of 8 table lines");
  EXPECT_EQ(ErrorOf(seven + "0 0 0\n0 0 0\n"),
            start + "10: more than the 8 table lines that LUT_3D_SIZE 2 has");
  EXPECT_EQ(ErrorOf(seven + "0 0\n"), start + "9: expected three numbers");
  EXPECT_EQ(ErrorOf(seven + "0 0 0 0\n"), start + "9: expected three numbers");
  EXPECT_EQ(ErrorOf(seven + "0 x 0\n"), start + "9: 'x' isn't a number");
  EXPECT_EQ(ErrorOf(seven + "0 1.5e 0\n"), start + "9: '1.5e' isn't a number");
  EXPECT_EQ(ErrorOf(seven + "0 nan 0\n"), start + "9: 'nan' isn't a number");
  EXPECT_EQ(ErrorOf(seven + "0 inf 0\n"), start + "9: 'inf' isn't a number");
  EXPECT_EQ(ErrorOf("0 0 0\n"), start + "1: the table begins before its LUT_3D_SIZE");
  EXPECT_EQ(ErrorOf("# only\nLUT_1D_SIZE 16\n"),
            start + "2: this is a one-dimensional table; LUT_3D_SIZE is needed");
  EXPECT_EQ(ErrorOf("LUT_3D_SIZES 2\n"),
            start + "1: 'LUT_3D_SIZES' isn't a keyword of this format");
  EXPECT_EQ(ErrorOf("LUT_3D_SIZE 2\nLUT_3D_SIZE 2\n"), start + "2: a second LUT_3D_SIZE");
  EXPECT_EQ(ErrorOf("LUT_3D_SIZE 2\nDOMAIN_MIN 0 0\n"), start + "2: expected three numbers");
  EXPECT_EQ(ErrorOf(seven + "DOMAIN_MIN 0 0 0\n"), start + "9: keywords belong before the table");
  for (const char* size : {"1", "257", "-2", "2.5", "02", "", "2 2", "99999999999999999999"})
    EXPECT_EQ(ErrorOf("LUT_3D_SIZE " + std::string(size)),
              start + "1: LUT_3D_SIZE is followed by one whole number from 2 to 256");
  EXPECT_EQ(ErrorOf("DOMAIN_MAX 0 1 1\n" + seven + "0 0 0\n"),
            start + "10: DOMAIN_MIN isn't below DOMAIN_MAX");
  EXPECT_EQ(ErrorOf("DOMAIN_MIN 0 -1e308 0\nDOMAIN_MAX 1 1e308 1\n" + seven + "0 0 0\n"),
            start + "11: DOMAIN_MIN and DOMAIN_MAX are too far apart");
}

TEST(Cube, ReadsTheShippedTable) {
  const CubeFile cube = LoadCube(std::string(PICTURE_SOURCE_DIR) + "/examples/luts/evening.cube");
  EXPECT_EQ(cube.redFastest.size(), cube.size * cube.size * cube.size);
  EXPECT_THROW(LoadCube("/nowhere/film.cube"), Failure);
}

}  // namespace
}  // namespace runner
