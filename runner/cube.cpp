#include "runner/cube.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "runner/failure.h"
#include "runner/files.h"
#include "runner/names.h"

namespace runner {
namespace {

// The format's own bounds.
constexpr size_t kSmallestSize = 2, kLargestSize = 256, kLargestCurve = 65536;

// Black and white in video range.
constexpr double kVideoBlack = 16.0 / 255, kVideoWhite = 235.0 / 255;

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
    if (Expected() == 0) Fail("there is no LUT_3D_SIZE or LUT_1D_SIZE line");
    if (Count() != Expected())
      Fail("the file ends after " + std::to_string(Count()) + " of " + std::to_string(Expected()) +
           " table lines");
    SetDomains();
    if (outputsInVideoRange)
      for (Triple& entry : cube.size == 0 ? cube.curves : cube.redFastest)
        for (double& value : entry) value = FromVideoRange(value);
    return std::move(cube);
  }

 private:
  using Domain = CubeFile::Domain;
  using Values = std::span<const std::string_view>;

  [[noreturn]] void Fail(const std::string& message) const {
    throw Failure(Quoted(name) + " isn't a table that can be used, line " +
                  std::to_string(std::max<size_t>(line, 1)) + ": " + message);
  }

  size_t TableLines() const { return cube.size * cube.size * cube.size; }
  size_t Expected() const { return curveSize + TableLines(); }
  size_t Count() const { return cube.curves.size() + cube.redFastest.size(); }

  void ReadLine(std::string_view content) {
    const std::vector<std::string_view> words = Words(content.substr(0, content.find('#')));
    if (words.empty() || words[0] == "TITLE") return;
    const bool keyword = (words[0][0] >= 'A' && words[0][0] <= 'Z') || words[0][0] == '_';
    if (!keyword) return ReadEntry(words);
    // Those of the three-dimensional table may stand between the curves and it.
    const bool ofTable = words[0].starts_with("LUT_3D_");
    if (ofTable ? !cube.redFastest.empty() : Count() > 0) Fail("keywords belong before the table");
    ReadKeyword(words[0], Values(words).subspan(1));
  }

  void ReadKeyword(std::string_view keyword, Values values) {
    if (keyword == "LUT_3D_SIZE") return ReadSize(keyword, values, kLargestSize, &cube.size);
    if (keyword == "LUT_1D_SIZE") return ReadSize(keyword, values, kLargestCurve, &curveSize);
    if (keyword == "DOMAIN_MIN") return ReadTriple(values, &fileDomain.low);
    if (keyword == "DOMAIN_MAX") return ReadTriple(values, &fileDomain.high);
    if (keyword == "LUT_3D_INPUT_RANGE") return ReadRange(keyword, values, &tableDomain);
    if (keyword == "LUT_1D_INPUT_RANGE") return ReadRange(keyword, values, &curveDomain);
    const bool in = keyword == "LUT_IN_VIDEO_RANGE", out = keyword == "LUT_OUT_VIDEO_RANGE";
    if (!in && !out) Fail(Quoted(keyword) + " isn't a keyword of this format");
    if (!values.empty()) Fail(std::string(keyword) + " stands alone on its line");
    (in ? inputsInVideoRange : outputsInVideoRange) = true;
  }

  void ReadSize(std::string_view keyword, Values values, size_t largest, size_t* target) {
    size_t size = 0;
    if (*target != 0) Fail("a second " + std::string(keyword));
    if (values.size() == 1)
      std::from_chars(values[0].data(), values[0].data() + values[0].size(), size);
    if (values.size() != 1 || std::to_string(size) != values[0] || size < kSmallestSize ||
        size > largest)
      Fail(std::string(keyword) + " is followed by one whole number from 2 to " +
           std::to_string(largest));
    *target = size;
  }

  void ReadTriple(Values values, Triple* triple) {
    if (values.size() != 3) Fail("expected three numbers");
    for (size_t i = 0; i < 3; ++i)
      if (!ReadNumber(values[i], &(*triple)[i])) Fail(Quoted(values[i]) + " isn't a number");
  }

  void ReadRange(std::string_view keyword, Values values, std::optional<Domain>* domain) {
    double low = 0, high = 0;
    if (values.size() != 2 || !ReadNumber(values[0], &low) || !ReadNumber(values[1], &high) ||
        !(low < high))
      Fail(std::string(keyword) + " is followed by two numbers, the smaller first");
    domain->emplace();
    (*domain)->low.fill(low);
    (*domain)->high.fill(high);
  }

  void ReadEntry(Values words) {
    Triple entry{};
    ReadTriple(words, &entry);
    if (Expected() == 0) Fail("the table begins before its size");
    const bool ofCurves = cube.curves.size() < curveSize;
    if (!ofCurves && cube.redFastest.size() == TableLines())
      Fail("more than the " + std::to_string(Expected()) + " table lines of its size");
    (ofCurves ? cube.curves : cube.redFastest).push_back(entry);
  }

  // DOMAIN_MIN and DOMAIN_MAX are of what goes into the file: into its curves, where it has both.
  void SetDomains() {
    for (size_t channel = 0; channel < 3; ++channel)
      if (!(fileDomain.low[channel] < fileDomain.high[channel]))
        Fail("DOMAIN_MIN isn't below DOMAIN_MAX");
    Domain& first = curveSize > 0 ? cube.curveDomain : cube.domain;
    first = fileDomain;
    if (curveDomain) cube.curveDomain = *curveDomain;
    if (tableDomain) cube.domain = *tableDomain;
    // To scale the ends has the effect of scaling each input the other way.
    if (inputsInVideoRange)
      for (Triple* end : {&first.low, &first.high})
        for (double& value : *end) value = FromVideoRange(value);
    for (const Domain* domain : {&cube.curveDomain, &cube.domain})
      for (size_t channel = 0; channel < 3; ++channel)
        if (!std::isfinite(domain->high[channel] - domain->low[channel]))
          Fail("the inputs reach too far");
  }

  double FromVideoRange(double value) const {
    const double full = (value - kVideoBlack) / (kVideoWhite - kVideoBlack);
    if (!std::isfinite(full)) Fail("a number is too large for video range");
    return full;
  }

  std::string_view name;
  size_t line = 0;
  size_t curveSize = 0;
  Domain fileDomain;
  std::optional<Domain> curveDomain, tableDomain;
  bool inputsInVideoRange = false, outputsInVideoRange = false;
  CubeFile cube;
};

// Where an input lies among `points` points that are spread over low to high.
Place PlaceIn(double low, double high, size_t points, double input) {
  const double unit = std::clamp((input - low) / (high - low), 0.0, 1.0);
  double place = unit * static_cast<double>(points - 1);
  // An input that means a point of the table gives its entry, not one a hair beside it.
  if (std::abs(place - std::round(place)) < 1e-9) place = std::round(place);
  const size_t cell = std::min(static_cast<size_t>(place), points - 2);
  return {cell, place - static_cast<double>(cell)};
}

}  // namespace

Triple CubeFile::Curved(const Triple& input) const {
  if (curves.empty()) return input;
  Triple output{};
  for (size_t channel = 0; channel < 3; ++channel) {
    const auto [cell, fraction] =
        PlaceIn(curveDomain.low[channel], curveDomain.high[channel], curves.size(), input[channel]);
    output[channel] = (1 - fraction) * curves[cell][channel] + fraction * curves[cell + 1][channel];
  }
  return output;
}

Place CubeFile::PlaceOf(size_t channel, double input) const {
  return PlaceIn(domain.low[channel], domain.high[channel], size,
                 Curved({input, input, input})[channel]);
}

Triple CubeFile::At(const Triple& input) const {
  const Place r = PlaceOf(0, input[0]), g = PlaceOf(1, input[1]), b = PlaceOf(2, input[2]);
  return Interpolate(&redFastest[(b.cell * size + g.cell) * size + r.cell], {r.fraction, 1},
                     {g.fraction, size}, {b.fraction, size * size});
}

CubeFile ParseCube(std::string_view text, std::string_view name) {
  return CubeReader(name).Read(text);
}

CubeFile LoadCube(const std::filesystem::path& path) {
  return ParseCube(ReadWholeFile(path), path.native());
}

Triple Interpolate(const Triple* lowest, CellAxis x, CellAxis y, CellAxis z) {
  // From the lowest corner to the highest along the cell's edges, the axis with the largest
  // fraction first: these four corners span the tetrahedron.
  if (x.fraction < y.fraction) std::swap(x, y);
  if (y.fraction < z.fraction) std::swap(y, z);
  if (x.fraction < y.fraction) std::swap(x, y);
  const Triple& corner1 = lowest[x.step];
  const Triple& corner2 = lowest[x.step + y.step];
  const Triple& corner3 = lowest[x.step + y.step + z.step];
  Triple output;
  for (size_t i = 0; i < 3; ++i)
    output[i] = (1 - x.fraction) * (*lowest)[i] + (x.fraction - y.fraction) * corner1[i] +
                (y.fraction - z.fraction) * corner2[i] + z.fraction * corner3[i];
  return output;
}

LutGrid Resample(const CubeFile& cube) {
  LutGrid grid;
  grid.blueFastest.reserve(kLutPoints * kLutPoints * kLutPoints);
  const auto channel = [](size_t i) { return kLutStep * static_cast<double>(i) / 255.0; };
  for (size_t r = 0; r < kLutPoints; ++r)
    for (size_t g = 0; g < kLutPoints; ++g)
      for (size_t b = 0; b < kLutPoints; ++b) {
        Triple output = cube.At({channel(r), channel(g), channel(b)});
        for (double& value : output) value = value * 255.0 + 0.5;
        grid.blueFastest.push_back(output);
      }
  return grid;
}

ChannelCurves SampleCurves(const CubeFile& cube) {
  ChannelCurves curves{};
  for (size_t level = 0; level < 256; ++level) {
    const double input = static_cast<double>(level) / 255.0;
    const Triple output = cube.Curved({input, input, input});
    for (size_t channel = 0; channel < 3; ++channel)
      curves[channel][level] = static_cast<uint8_t>(LevelOf(output[channel] * 255.0 + 0.5));
  }
  return curves;
}

}  // namespace runner
