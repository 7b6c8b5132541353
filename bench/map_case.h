// Cases whose result is a picture of the source's size, pixel by pixel a rule of the sources'.
#pragma once

#include <array>
#include <sstream>
#include <utility>

#include "bench/case.h"

namespace bench {

// The columns left to right - 1 of rows top to bottom - 1.
struct Window {
  int32_t left = 0;
  int32_t top = 0;
  int32_t right = 0;
  int32_t bottom = 0;
};

constexpr Window WholeOf(Size size) { return {0, 0, size.width, size.height}; }

inline Area AreaOf(const std::vector<Picture>& sources, const Picture& target, Window window) {
  Area area;
  const size_t offset = static_cast<size_t>(window.left) * 4;
  const Picture& any = target ? target : sources.front();
  for (const Picture& source : sources) area.sources.push_back(source->Row(window.top) + offset);
  if (target) area.target = target->Row(window.top) + offset;
  area.rowSize = static_cast<size_t>(window.right - window.left) * 4;
  area.rows = static_cast<size_t>(window.bottom - window.top);
  area.stride = any->RowBytes();
  return area;
}

// What is wrong with the pixels of `window`; empty when each is `rule` of the sources'.
template <size_t kSources, class Rule>
std::string WrongPixel(const std::vector<Picture>& sources, const Picture& actual, Window window,
                       const Rule& rule) {
  if (!actual) return "there is no result";
  for (int32_t y = window.top; y < window.bottom; ++y) {
    std::array<const uint8_t*, kSources> rows;
    for (size_t i = 0; i < kSources; ++i) rows[i] = sources[i]->Row(y);
    const uint8_t* row = actual->Row(y);
    for (int32_t x = window.left; x < window.right; ++x) {
      const auto expected = [&]<size_t... i>(std::index_sequence<i...>) {
        return rule(ReadPixel(sources[i]->Layout(), rows[i], x)...);
      }
      (std::make_index_sequence<kSources>());
      if (IsOpaquePixel(actual->Layout(), row, x, expected)) continue;
      const Rgb got = ReadPixel(actual->Layout(), row, x);
      std::ostringstream out;
      out << "pixel (" << x << ", " << y << ") is (" << got.red << ", " << got.green << ", "
          << got.blue << "), expected (" << expected.red << ", " << expected.green << ", "
          << expected.blue << ")";
      return out.str();
    }
  }
  return {};
}

// `call` gives the result; `rule` is what a pixel of it has to be, given those of the sources.
template <size_t kSources, class Rule>
Work MapWork(Stage& stage, Size size, const std::vector<Picture>& sources, Window window,
             const std::function<Picture()>& call, const Rule& rule) {
  const Picture target = stage.Target(size);
  Work work;
  work.sources = sources;
  work.area = AreaOf(sources, target, window);
  work.pixels = int64_t{window.right - window.left} * (window.bottom - window.top);
  work.call = [call] { call(); };
  work.targetIsRight = [=] { return WrongPixel<kSources>(sources, target, window, rule).empty(); };
  work.check = [=, &stage] {
    stage.SpoilTarget();
    return WrongPixel<kSources>(sources, call(), window, rule);
  };
  return work;
}

}  // namespace bench
