#include "runner/cube.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "places.h"
#include "runner/failure.h"

namespace runner {
namespace {

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

// Calls `check` with the channel values that each point of the grid stands for, and with the point
// without the half level that rounds its results.
void ForEachPoint(const LutGrid& grid, const std::function<void(Triple, Triple)>& check) {
  ASSERT_EQ(grid.blueFastest.size(), 16U * 16 * 16);
  for (int r = 0; r < 16; ++r)
    for (int g = 0; g < 16; ++g)
      for (int b = 0; b < 16; ++b) {
        Triple got = grid.blueFastest[size_t(r * 256 + g * 16 + b)];
        for (double& value : got) value -= 0.5;
        check({17.0 * r, 17.0 * g, 17.0 * b}, got);
      }
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
  for (size_t size = 2; size <= 256; size += size < 34 ? 1 : 37) {
    CubeFile cube;
    cube.size = size;
    for (size_t b = 0; b < size; ++b)
      for (size_t g = 0; g < size; ++g)
        for (size_t r = 0; r < size; ++r)
          cube.redFastest.push_back({double(r) / double(size - 1), double(g) / double(size - 1),
                                     double(b) / double(size - 1)});
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
      for (size_t i = 0; i < 3; ++i) ASSERT_NEAR(got[i], entry[i] * 255.0, 1e-12) << size;
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
  EXPECT_EQ(cube.domain.high, (Triple{2, 2, 2}));
  EXPECT_EQ(cube.redFastest[7], (Triple{0.5, 0.25, 0.1}));
}

TEST(Cube, ACommentMayFollowAnything) {
  std::string text =
      "TITLE \"a # b\" # LUT_3D_SIZE 9\nLUT_3D_SIZE 2 # points\nDOMAIN_MAX 2 2 2# wide\n";
  for (int i = 0; i < 8; ++i) text += "0.5 0.25 0.125 # note 7\n#0 0 0\n";
  const CubeFile cube = ParseCube(text, "notes");
  EXPECT_EQ(cube.domain.high, (Triple{2, 2, 2}));
  EXPECT_EQ(cube.redFastest, std::vector<Triple>(8, Triple{0.5, 0.25, 0.125}));
}

// The curve 0, 0.3, 1. None of its values for whole levels lies half way between two.
double Bent(double value) { return value <= 127.5 ? value * 0.6 : 76.5 + (value - 127.5) * 1.4; }

int Rounded(double value) { return std::clamp(int(std::floor(value + 0.5)), 0, 255); }

// The entries of a table of two points an axis, with the channels in this order.
std::string Corners(std::array<int, 3> order) {
  std::string text;
  for (int i = 0; i < 8; ++i)
    for (int channel = 0; channel < 3; ++channel)
      text += std::to_string(i >> order[size_t(channel)] & 1) + (channel < 2 ? " " : "\n");
  return text;
}

TEST(Cube, OneDimensionalTablesAreCurves) {
  const CubeFile cube = ParseCube("LUT_1D_SIZE 3\n0 1 -0.4\n0.3 0.5 0.5\n1 0 1.4\n", "curves");
  EXPECT_EQ(cube.size, 0U);
  const ChannelCurves curves = SampleCurves(cube);
  for (int v = 0; v < 256; ++v) {
    EXPECT_EQ(curves[0][size_t(v)], Rounded(Bent(v))) << v;
    EXPECT_EQ(curves[1][size_t(v)], 255 - v) << v;
    EXPECT_EQ(curves[2][size_t(v)], Rounded(1.8 * v - 102)) << v;
  }
}

TEST(Cube, CurvesThatChangeNothingHaveAnySize) {
  for (const size_t size : {2, 3, 16, 255, 256, 257, 1024, 4096, 65536}) {
    std::string text = "LUT_1D_SIZE " + std::to_string(size) + "\n";
    for (size_t i = 0; i < size; ++i) {
      char line[64];
      const double value = double(i) / double(size - 1);
      std::snprintf(line, sizeof line, "%.6f %.6f %.6f\n", value, value, value);
      text += line;
    }
    const ChannelCurves curves = SampleCurves(ParseCube(text, "identity"));
    for (size_t channel = 0; channel < 3; ++channel)
      for (size_t v = 0; v < 256; ++v) ASSERT_EQ(curves[channel][v], v) << size;
  }
}

TEST(Cube, CurvesHonourTheDomain) {
  for (const std::string domain :
       {"LUT_1D_SIZE 2\nDOMAIN_MIN 0.2 0.2 0.2\nDOMAIN_MAX 0.8 0.8 0.8\n",
        "LUT_1D_INPUT_RANGE 0.2 0.8\nLUT_1D_SIZE 2\n"}) {
    const ChannelCurves curves = SampleCurves(ParseCube(domain + "0 0 0\n1 1 1\n", "domain"));
    // 51 is the first entry, 204 the last.
    for (int v = 0; v < 256; ++v) EXPECT_EQ(curves[1][size_t(v)], Rounded((v - 51) * 5 / 3.0)) << v;
  }
}

TEST(Cube, CurvesComeBeforeTheTable) {
  // The inputs of the table reach to 2; it halves, and exchanges red and blue.
  const std::string curves = "0 0 0\n0.3 0.3 0.3\n1 1 1\n";
  const std::string sizes = "LUT_1D_SIZE 3\nLUT_1D_INPUT_RANGE 0 1\n";
  const std::string table = "LUT_3D_SIZE 2\nLUT_3D_INPUT_RANGE 0 2\n";
  // What says how large the table is may also follow the curves.
  for (const std::string& start : {sizes + table + curves, sizes + curves + table}) {
    const CubeFile cube = ParseCube(start + Corners({2, 1, 0}), "both");
    ForEachPoint(Resample(cube), [&](Triple in, Triple got) {
      for (size_t i = 0; i < 3; ++i) ASSERT_NEAR(got[i], Bent(in[2 - i]) / 2, 1e-9);
    });
    for (int v = 0; v < 256; ++v)
      EXPECT_EQ(SampleCurves(cube)[2][size_t(v)], Rounded(Bent(v))) << v;
  }
}

TEST(Cube, TheDomainOfAFileWithBothIsThatOfItsCurves) {
  const CubeFile cube = ParseCube(
      "LUT_1D_SIZE 2\nLUT_3D_SIZE 2\nDOMAIN_MIN 0.2 0.2 0.2\nDOMAIN_MAX 0.6 0.6 0.6\n"
      "0 0 0\n1 1 1\n" +
          Corners({0, 1, 2}),
      "domain");
  ForEachPoint(Resample(cube), [&](Triple in, Triple got) {
    for (size_t i = 0; i < 3; ++i)
      ASSERT_NEAR(got[i], std::clamp((in[i] - 51) * 2.5, 0.0, 255.0), 1e-9);
  });
}

TEST(Cube, VideoRangeBecomesFullRange) {
  const auto toVideo = [](double v) { return 16 + v * 219 / 255; };
  const auto fromVideo = [](double v) { return (v - 16) * 255 / 219; };
  const auto same = [](double v) { return v; };
  const std::string in = "LUT_IN_VIDEO_RANGE\n", out = "LUT_OUT_VIDEO_RANGE\n";
  const std::string curves = "LUT_1D_SIZE 2\n0 0 0\n1 1 1\n";
  const std::string table = "LUT_3D_SIZE 2\n" + Corners({0, 1, 2});
  const auto expect = [&](const std::string& text, const std::function<double(double)>& ofTable,
                          const std::function<double(double)>& ofCurves) {
    const CubeFile cube = ParseCube(text, "video");
    for (int v = 0; v < 256; ++v)
      EXPECT_EQ(SampleCurves(cube)[0][size_t(v)], Rounded(ofCurves(v))) << text << v;
    if (cube.size == 0) return;
    ForEachPoint(Resample(cube), [&](Triple input, Triple got) {
      for (size_t i = 0; i < 3; ++i) ASSERT_NEAR(got[i], ofTable(input[i]), 1e-9) << text;
    });
  };
  expect(in + table, toVideo, same);
  expect(out + table, fromVideo, same);
  expect(in + out + table, same, same);
  expect(in + curves, same, toVideo);
  expect(out + curves, same, fromVideo);
  expect(in + out + curves, same, same);
  // The inputs of a file with both go into its curves, its outputs come from the table.
  expect(in + curves + table, toVideo, toVideo);
  expect(out + curves + table, fromVideo, same);
}

TEST(Cube, TellsTheLineThatIsWrong) {
  std::string seven = "LUT_3D_SIZE 2\n";
  for (int i = 0; i < 7; ++i) seven += "0 0 0\n";
  const std::string start = "'film.cube' isn't a table that can be used, line ";
  EXPECT_EQ(ErrorOf(""), start + "1: there is no LUT_3D_SIZE or LUT_1D_SIZE line");
  EXPECT_EQ(ErrorOf(seven), start + "8: the file ends after 7 of 8 table lines");
  EXPECT_EQ(ErrorOf(seven + "0 0 0\n0 0 0\n"),
            start + "10: more than the 8 table lines of its size");
  EXPECT_EQ(ErrorOf(seven + "0 0\n"), start + "9: expected three numbers");
  EXPECT_EQ(ErrorOf(seven + "0 0 0 0\n"), start + "9: expected three numbers");
  EXPECT_EQ(ErrorOf(seven + "0 x 0\n"), start + "9: 'x' isn't a number");
  EXPECT_EQ(ErrorOf(seven + "0 1.5e 0\n"), start + "9: '1.5e' isn't a number");
  EXPECT_EQ(ErrorOf(seven + "0 nan 0\n"), start + "9: 'nan' isn't a number");
  EXPECT_EQ(ErrorOf(seven + "0 inf 0\n"), start + "9: 'inf' isn't a number");
  EXPECT_EQ(ErrorOf("0 0 0\n"), start + "1: the table begins before its size");
  EXPECT_EQ(ErrorOf("LUT_3D_SIZES 2\n"),
            start + "1: 'LUT_3D_SIZES' isn't a keyword of this format");
  EXPECT_EQ(ErrorOf("LUT_3D_SIZE 2\nLUT_3D_SIZE 2\n"), start + "2: a second LUT_3D_SIZE");
  EXPECT_EQ(ErrorOf("LUT_3D_SIZE 2\nDOMAIN_MIN 0 0\n"), start + "2: expected three numbers");
  EXPECT_EQ(ErrorOf(seven + "DOMAIN_MIN 0 0 0\n"), start + "9: keywords belong before the table");
  for (const char* size : {"1", "257", "-2", "2.5", "02", "", "2 2", "99999999999999999999"})
    EXPECT_EQ(ErrorOf("LUT_3D_SIZE " + std::string(size)),
              start + "1: LUT_3D_SIZE is followed by one whole number from 2 to 256");
  for (const char* size : {"1", "65537", "x"})
    EXPECT_EQ(ErrorOf("LUT_1D_SIZE " + std::string(size)),
              start + "1: LUT_1D_SIZE is followed by one whole number from 2 to 65536");
  const std::string curve = "LUT_1D_SIZE 2\n0 0 0\n";
  EXPECT_EQ(ErrorOf("LUT_1D_SIZE 2\nLUT_1D_SIZE 2\n"), start + "2: a second LUT_1D_SIZE");
  EXPECT_EQ(ErrorOf(curve), start + "2: the file ends after 1 of 2 table lines");
  EXPECT_EQ(ErrorOf(curve + "0 0 0\n0 0 0\n"),
            start + "4: more than the 2 table lines of its size");
  EXPECT_EQ(ErrorOf(curve + "0 0 0\n" + seven),
            start + "11: the file ends after 9 of 10 table lines");
  EXPECT_EQ(ErrorOf(curve + "DOMAIN_MAX 2 2 2\n"), start + "3: keywords belong before the table");
  for (const std::string keyword :
       {"LUT_1D_SIZE 2", "LUT_3D_INPUT_RANGE 0 2", "LUT_IN_VIDEO_RANGE"})
    EXPECT_EQ(ErrorOf(seven + keyword), start + "9: keywords belong before the table");
  for (const std::string keyword : {"LUT_1D_INPUT_RANGE", "LUT_3D_INPUT_RANGE"})
    for (const std::string range : {"1 0", "1 1", "0", "0 1 2", "0 x"})
      EXPECT_EQ(ErrorOf(keyword + " " + range),
                start + "1: " + keyword + " is followed by two numbers, the smaller first");
  for (const std::string keyword : {"LUT_IN_VIDEO_RANGE", "LUT_OUT_VIDEO_RANGE"})
    EXPECT_EQ(ErrorOf(keyword + " 1"), start + "1: " + keyword + " stands alone on its line");
  EXPECT_EQ(ErrorOf("DOMAIN_MAX 0 1 1\n" + seven + "0 0 0\n"),
            start + "10: DOMAIN_MIN isn't below DOMAIN_MAX");
  EXPECT_EQ(ErrorOf("DOMAIN_MIN 0 -1e308 0\nDOMAIN_MAX 1 1e308 1\n" + seven + "0 0 0\n"),
            start + "11: the inputs reach too far");
  EXPECT_EQ(ErrorOf("LUT_3D_INPUT_RANGE -1e308 1e308\n" + seven + "0 0 0\n"),
            start + "10: the inputs reach too far");
  EXPECT_EQ(ErrorOf("LUT_1D_INPUT_RANGE -8e307 9e307\nLUT_IN_VIDEO_RANGE\n" + curve + "0 0 0\n"),
            start + "5: the inputs reach too far");
  EXPECT_EQ(ErrorOf("LUT_OUT_VIDEO_RANGE\n" + curve + "1.7e308 0 0\n"),
            start + "4: a number is too large for video range");
}

TEST(Cube, ReadsTheShippedTable) {
  const CubeFile cube = LoadCube(std::string(PICTURE_SOURCE_DIR) + "/examples/luts/evening.cube");
  EXPECT_EQ(cube.redFastest.size(), cube.size * cube.size * cube.size);
  EXPECT_THROW(LoadCube("/nowhere/film.cube"), Failure);
}

}  // namespace
}  // namespace runner
