// The row loop of rules that take many pixels at a time, because they work in several passes.
#pragma once

#include "pixels/rows.h"

// The most pixels that a rule is given at a time: enough to fill vectors, few enough for what it
// keeps of them to stay in the nearest cache.
inline constexpr int32_t kStripLength = 64;

// Calls `rule.operator()<kTo, kFrom>(count, target, source)` for strips of 1 to kStripLength pixels
// that make up `rectangle`, which lies inside the source. What a target doesn't have is left out.
template <class Rule>
void MapStrips(const PictureEditor& target, const Rectangle& rectangle, const Rule& rule,
               const PictureEditor& source) {
  const Rectangle area = Within(target, rectangle);
  WithLayouts(
      [&]<Layout kTo, Layout kFrom>() {
        RunWidest([&] {
          for (int32_t y = area.top; y < area.bottom; ++y) {
            for (int32_t x = area.left, count = 0; x < area.right; x += count) {
              count = area.right - x < kStripLength ? area.right - x : kStripLength;
              rule.template operator()<kTo, kFrom>(count, target.PixelAt(x, y),
                                                   source.PixelAt(x, y));
            }
          }
        });
      },
      target, source);
}
