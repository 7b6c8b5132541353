#include "runner/cube.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

#include "runner/failure.h"
#include "runner/files.h"
#include "runner/names.h"

namespace runner {
namespace {

// The format's own bounds.
constexpr size_t kSmallestSize = 2, kLargestSize = 256;

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

std::vector<std::string_view> Words(std::string_view line) {
  std::vector<std::string_view> words;
  for (size_t i = 0; i < line.size();) {
    while (i < line.size() && IsBlank(line[i])) ++i;
    const size_t start = i;
    while (i < line.size() && !IsBlank(line[i])) ++i;
    if (i > start) words.push_back(line.substr(start, i - start));
  }
  return words;
}

bool ReadNumber(std::string_view word, double* number) {
  if (word.starts_with('+')) word.remove_prefix(1);
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), *number);
  return error == std::errc() && end == word.data() + word.size() && std::isfinite(*number);
}

// One pass over the lines, each in its turn.
class CubeReader {
 public:
  explicit CubeReader(std::string_view fileName) : name(fileName) {}

  CubeFile Read(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    while (!text.empty()) {
      const size_t end = std::min(text.find('\n'), text.size());
      ++line;
      ReadLine(text.substr(0, end));
      text.remove_prefix(std::min(end + 1, text.size()));
    }
    if (cube.size == 0) Fail("there is no LUT_3D_SIZE line");
    if (cube.redFastest.size() != Expected())
      Fail("the file ends after " + std::to_string(cube.redFastest.size()) + " of " +
           std::to_string(Expected()) + " table lines");
    for (size_t channel = 0; channel < 3; ++channel) {
      if (!(cube.domainMin[channel] < cube.domainMax[channel]))
        Fail("DOMAIN_MIN isn't below DOMAIN_MAX");
      if (!std::isfinite(cube.domainMax[channel] - cube.domainMin[channel]))
        Fail("DOMAIN_MIN and DOMAIN_MAX are too far apart");
    }
    return std::move(cube);
  }

 private:
  [[noreturn]] void Fail(const std::string& message) const {
    throw Failure(Quoted(name) + " isn't a table that can be used, line " +
                  std::to_string(std::max<size_t>(line, 1)) + ": " + message);
  }

  size_t Expected() const { return cube.size * cube.size * cube.size; }

  void ReadLine(std::string_view content) {
    const std::vector<std::string_view> words = Words(content);
    if (words.empty() || words[0].starts_with('#') || words[0] == "TITLE") return;
    const std::span<const std::string_view> values = std::span(words).subspan(1);
    if (words[0] == "LUT_3D_SIZE") return ReadSize(values);
    if (words[0] == "DOMAIN_MIN") return ReadTriple(values, &cube.domainMin);
    if (words[0] == "DOMAIN_MAX") return ReadTriple(values, &cube.domainMax);
    if (words[0] == "LUT_3D_INPUT_RANGE") return ReadRange(values);
    if (words[0] == "LUT_1D_SIZE") Fail("this is a one-dimensional table; LUT_3D_SIZE is needed");
    ReadEntry(words);
  }

  void ReadSize(std::span<const std::string_view> values) {
    size_t size = 0;
    if (cube.size != 0) Fail("a second LUT_3D_SIZE");
    if (values.size() == 1)
      std::from_chars(values[0].data(), values[0].data() + values[0].size(), size);
    if (values.size() != 1 || std::to_string(size) != values[0] || size < kSmallestSize ||
        size > kLargestSize)
      Fail("LUT_3D_SIZE is followed by one whole number from 2 to 256");
    cube.size = size;
  }

  void ReadTriple(std::span<const std::string_view> values, std::array<double, 3>* triple) {
    if (!cube.redFastest.empty()) Fail("keywords belong before the table");
    if (values.size() != 3) Fail("expected three numbers");
    for (size_t i = 0; i < 3; ++i)
      if (!ReadNumber(values[i], &(*triple)[i])) Fail(Quoted(values[i]) + " isn't a number");
  }

  void ReadRange(std::span<const std::string_view> values) {
    double low = 0, high = 1;
    if (values.size() != 2 || !ReadNumber(values[0], &low) || !ReadNumber(values[1], &high))
      Fail("LUT_3D_INPUT_RANGE is followed by two numbers");
    cube.domainMin.fill(low);
    cube.domainMax.fill(high);
  }

  void ReadEntry(const std::vector<std::string_view>& words) {
    std::array<double, 3> entry{};
    const bool keyword = (words[0][0] >= 'A' && words[0][0] <= 'Z') || words[0][0] == '_';
    if (keyword) Fail(Quoted(words[0]) + " isn't a keyword of this format");
    if (words.size() != 3) Fail("expected three numbers");
    for (size_t i = 0; i < 3; ++i)
      if (!ReadNumber(words[i], &entry[i])) Fail(Quoted(words[i]) + " isn't a number");
    if (cube.size == 0) Fail("the table begins before its LUT_3D_SIZE");
    if (cube.redFastest.size() == Expected())
      Fail("more than the " + std::to_string(Expected()) + " table lines that LUT_3D_SIZE " +
           std::to_string(cube.size) + " has");
    cube.redFastest.push_back(entry);
  }

  std::string_view name;
  size_t line = 0;
  CubeFile cube;
};

}  // namespace

std::array<double, 3> CubeFile::At(const std::array<double, 3>& input) const {
  // The cell, and how far the input lies inside it along each axis.
  size_t cell[3];
  double fraction[3];
  for (size_t axis = 0; axis < 3; ++axis) {
    const double span = domainMax[axis] - domainMin[axis];
    const double unit = std::clamp((input[axis] - domainMin[axis]) / span, 0.0, 1.0);
    double place = unit * static_cast<double>(size - 1);
    // An input that means a point of the table gives its entry, not one a hair beside it: what
    // becomes of the result is truncated to whole channel values later.
    if (std::abs(place - std::round(place)) < 1e-9) place = std::round(place);
    cell[axis] = std::min(static_cast<size_t>(place), size - 2);
    fraction[axis] = place - static_cast<double>(cell[axis]);
  }
  // From the cell's lowest corner to its highest along its edges, the axis with the largest
  // fraction first: these four corners span the tetrahedron that the input lies in.
  size_t order[3] = {0, 1, 2};
  std::stable_sort(order, order + 3, [&](size_t a, size_t b) { return fraction[a] > fraction[b]; });
  const auto entry = [&]() -> const std::array<double, 3>& {
    return redFastest[(cell[2] * size + cell[1]) * size + cell[0]];
  };
  std::array<double, 3> output{};
  double weight = 1 - fraction[order[0]];
  for (size_t corner = 0; corner < 4; ++corner) {
    for (size_t channel = 0; channel < 3; ++channel) output[channel] += weight * entry()[channel];
    if (corner == 3) break;
    ++cell[order[corner]];
    weight = fraction[order[corner]] - (corner < 2 ? fraction[order[corner + 1]] : 0);
  }
  return output;
}

CubeFile ParseCube(std::string_view text, std::string_view name) {
  return CubeReader(name).Read(text);
}

CubeFile LoadCube(const std::filesystem::path& path) {
  return ParseCube(ReadWholeFile(path), path.native());
}

LutGrid Resample(const CubeFile& cube) {
  LutGrid grid;
  grid.blueFastest.reserve(kLutPoints * kLutPoints * kLutPoints);
  const auto channel = [](size_t i) { return 17.0 * static_cast<double>(i) / 255.0; };
  for (size_t r = 0; r < kLutPoints; ++r)
    for (size_t g = 0; g < kLutPoints; ++g)
      for (size_t b = 0; b < kLutPoints; ++b) {
        std::array<double, 3> output = cube.At({channel(r), channel(g), channel(b)});
        for (double& value : output) value *= 255.0;
        grid.blueFastest.push_back(output);
      }
  return grid;
}

}  // namespace runner
