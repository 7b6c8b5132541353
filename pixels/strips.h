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
  const int32_t right = rectangle.right < target.width ? rectangle.right : target.width;
  const int32_t bottom = rectangle.bottom < target.height ? rectangle.bottom : target.height;
  WithLayouts(
      [&]<Layout kTo, Layout kFrom>() {
        RunWidest([&] {
          for (int32_t y = rectangle.top; y < bottom; ++y) {
            for (int32_t x = rectangle.left, count = 0; x < right; x += count) {
              count = right - x < kStripLength ? right - x : kStripLength;
              rule.template operator()<kTo, kFrom>(count, target.PixelAt(x, y),
                                                   source.PixelAt(x, y));
            }
          }
        });
      },
      target, source);
}
