// The row loop of rules that take many pixels at a time, because they work in several passes.
#pragma once

#include "pixels/rows.h"

// The most pixels that a rule is given at a time: enough to fill vectors, few enough for what it
// keeps of them to stay in the nearest cache.
inline constexpr int32_t kStripLength = 64;

// The length of a whole strip, as a type: loops over it are compiled for that length.
struct WholeStrip {
  constexpr operator int32_t() const { return kStripLength; }
};

// Calls `rule.operator()<kTo, kFrom>(count, target, source)` for strips of pixels that make up
// `rectangle`, which lies inside the source. `count` is a WholeStrip or, at the end of a row, an
// int32_t from 1 to kStripLength - 1. What a target doesn't have is left out.
template <class Rule>
void MapStrips(const PictureEditor& target, const Rectangle& rectangle, const Rule& rule,
               const PictureEditor& source) {
  const Rectangle area = Within(target, rectangle);
  WithLayouts(
      [&]<Layout kTo, Layout kFrom>() {
        RunWidest([&] {
          for (int32_t y = area.top; y < area.bottom; ++y) {
            int32_t x = area.left;
            for (; x <= area.right - kStripLength; x += kStripLength) {
              rule.template operator()<kTo, kFrom>(WholeStrip(), target.PixelAt(x, y),
                                                   source.PixelAt(x, y));
            }
            if (x >= area.right) continue;
            rule.template operator()<kTo, kFrom>(area.right - x, target.PixelAt(x, y),
                                                 source.PixelAt(x, y));
          }
        });
      },
      target, source);
}
