// Waveforms drawn as their description has it, on a picture in memory.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "tests/render/canvas.h"

namespace waveform {

using namespace support;

inline constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
inline constexpr int32_t kMost = std::numeric_limits<int32_t>::max();

using Block = std::vector<uint8_t>;

template <class T>
T Load(const std::vector<uint8_t>& block, int64_t index) {
  T value;
  std::memcpy(&value, &block.at(static_cast<size_t>(index) * sizeof(T)), sizeof(T));
  return value;
}

inline double Sample(const std::vector<uint8_t>& block, int64_t index, int32_t bits) {
  switch (bits) {
    case 7:
      return Load<int8_t>(block, index);
    case 8:
      return Load<uint8_t>(block, index) - 128;
    case 15:
      return Load<int16_t>(block, index);
    case 16:
      return Load<uint16_t>(block, index) - 32768;
    case -32:
      return Load<float>(block, index);
    default:
      return Load<double>(block, index);
  }
}

inline double FullScale(int32_t bits) {
  if (bits < 0) return 1.0;
  return bits > 8 ? 32767.0 : 127.0;
}

inline int32_t Truncate(double value) {
  const double whole = std::trunc(value);
  if (whole >= -2147483648.0 && whole <= 2147483647.0) return static_cast<int32_t>(whole);
  return std::numeric_limits<int32_t>::min();
}

struct Waveform {
  int32_t sampleCount = 0, smooth = -2, width = 0, height = 0, outlineWidth = 0;
  uint32_t backColour = 0x88B5C4, foreColour = 0x274C5A, outlineColour = 0x203F4E;
  int32_t bits = 8;
  bool autoScale = false;
};

// The columns' rows, not clamped.
struct CurveRows {
  int32_t middle = 0;
  std::vector<int32_t> lower, upper;
};

inline CurveRows RowsOf(const std::vector<uint8_t>& block, const Waveform& wave) {
  const size_t columns = static_cast<size_t>(wave.width);
  std::vector<double> lower(columns), upper(columns);
  double peak = 0;
  for (int32_t c = 0; c < wave.width; ++c) {
    const double width = wave.width;
    const auto first = static_cast<int64_t>(std::trunc(c / width * wave.sampleCount));
    const auto last = static_cast<int64_t>(std::trunc((c + 1) / width * wave.sampleCount));
    const int64_t n = last - first;
    if (n <= 0) continue;
    double positive = 0, negative = 0;
    for (int64_t i = first; i < last; ++i) {
      const double value = Sample(block, i, wave.bits);
      if (value >= 0) positive += value;
      if (value < 0) negative += value;
    }
    const double half = static_cast<double>(n) * 0.5;
    lower[static_cast<size_t>(c)] = negative / half;
    upper[static_cast<size_t>(c)] = positive / half;
    peak = std::max({peak, positive / half, -(negative / half)});
  }
  double scale = wave.autoScale ? 2 * peak : FullScale(wave.bits);
  const double alpha = 2.0 / (static_cast<double>(wave.smooth) + 1);
  const double beta = 1.0 - alpha;
  if (wave.smooth != -1 && alpha > 0) {
    for (std::vector<double>* values : {&lower, &upper}) {
      double previous = values->front();
      for (double& value : *values) {
        value = previous * beta + value * alpha;
        previous = value;
      }
    }
    scale = beta * scale + alpha * scale;
  }
  CurveRows rows;
  rows.middle = wave.height / 2;
  for (size_t c = 0; c < columns; ++c) {
    const double down = scale == 0 ? 0 : lower[c] * wave.height / scale;
    const double up = scale == 0 ? 0 : upper[c] * wave.height / scale;
    rows.lower.push_back(Truncate(down + rows.middle));
    rows.upper.push_back(Truncate(up + rows.middle));
  }
  return rows;
}

// Everything but outlines of two pixels and more. Width, height and count are those of the picture:
// none is a default.
inline Canvas Draw(const std::vector<uint8_t>& block, const Waveform& wave) {
  const CurveRows rows = RowsOf(block, wave);
  Canvas canvas(wave.width, wave.height, Channels(wave.backColour), Channels(wave.outlineColour));
  for (int32_t c = 0; c < wave.width; ++c) {
    for (const int32_t v :
         {rows.lower[static_cast<size_t>(c)], rows.upper[static_cast<size_t>(c)]}) {
      const int32_t from = std::clamp(std::min(rows.middle, v), 0, wave.height - 1);
      const int32_t to = std::clamp(std::max(rows.middle, v), 0, wave.height - 1);
      for (int32_t y = from; y <= to; ++y) canvas.At(c, y) = Channels(wave.foreColour);
    }
  }
  if (wave.outlineWidth != 1) return canvas;
  int32_t x = 0, lower = rows.middle, upper = rows.middle;
  for (int32_t c = 0; c < wave.width; ++c) {
    const size_t column = static_cast<size_t>(c);
    canvas.DrawWuLine(x, lower, c, rows.lower[column]);
    canvas.DrawWuLine(x, upper, c, rows.upper[column]);
    x = c;
    lower = rows.lower[column];
    upper = rows.upper[column];
  }
  return canvas;
}

template <class T>
Block BlockOf(const std::vector<T>& samples) {
  Block block(samples.size() * sizeof(T));
  if (!block.empty()) std::memcpy(block.data(), samples.data(), block.size());
  return block;
}

inline int32_t BytesOfSample(int32_t bits) { return bits < 0 ? -bits / 8 : (bits + 7) / 8; }

}  // namespace waveform
