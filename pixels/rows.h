// The row loops that all operations share. Each is compiled for the layouts of the pictures that it
// walks, so that nothing about a format is asked inside a row.
#pragma once

#include "pixels/editor.h"
#include "pixels/instruction_set.h"
#include "pixels/rectangle.h"

// Whether pictures of these layouts can be open in one process: all its pictures are bitmap
// contexts or all are row tables (IsDesktop, IsConsole).
template <Layout kFirst, Layout... kOthers>
inline constexpr bool kCanMeet = (((kFirst == Layout::bgrx) == (kOthers == Layout::bgrx)) && ...);

// Calls `function.operator()<kLayouts...>()` with the layouts of the given pictures, in their
// order. Nothing is compiled for layouts that never meet.
template <Layout... kKnown, class Function>
void WithLayouts(const Function& function) {
  function.template operator()<kKnown...>();
}
template <Layout... kKnown, class Function, class... Editors>
void WithLayouts(const Function& function, const PictureEditor& first, const Editors&... others) {
  WithLayout(first.format, [&]<Layout kLayout>() {
    if constexpr (kCanMeet<kLayout, kKnown...>) {
      WithLayouts<kKnown..., kLayout>(function, others...);
    }
  });
}

// The target word for the source words at its place. A rule is either one of pixels,
// Pixel(Pixel...), or one of words, uint32_t operator()<kTo, kFrom...>(uint32_t...).
template <Layout kTo, Layout... kFrom, class Rule, class... Words>
constexpr uint32_t MapWord(const Rule& rule, Words... words) {
  if constexpr (requires { rule.template operator()<kTo, kFrom...>(words...); }) {
    return rule.template operator()<kTo, kFrom...>(words...);
  } else {
    return Pack<kTo>(rule(Unpack<kFrom>(words)...));
  }
}

// A row of a source. Spelt out, because deducing a type loses that its words begin at any byte.
template <Layout kFrom>
using SourceRow = const Word*;

// One row: each target pixel is `rule` of the source pixels at its place. The rule is a copy, so
// that the compiler knows that writing a pixel doesn't change it.
template <Layout kTo, Layout... kFrom, class Rule>
void MapRow(int32_t count, const Rule rule, Word* target, SourceRow<kFrom>... sources) {
  for (int32_t x = 0; x < count; ++x) target[x] = MapWord<kTo, kFrom...>(rule, sources[x]...);
}

// What a picture has of a rectangle.
inline Rectangle Within(const PictureEditor& picture, Rectangle rectangle) {
  if (rectangle.right > picture.width) rectangle.right = picture.width;
  if (rectangle.bottom > picture.height) rectangle.bottom = picture.height;
  return rectangle;
}

// Writes `rule` of the source pixels to every pixel of `rectangle`, which lies inside the sources.
// A target may be one of the sources. What a target doesn't have is left out.
template <class Rule, class... Sources>
void MapPixels(const PictureEditor& target, const Rectangle& rectangle, const Rule& rule,
               const Sources&... sources) {
  const Rectangle area = Within(target, rectangle);
  if (area.IsEmpty()) return;
  WithLayouts(
      [&]<Layout kTo, Layout... kFrom>() {
        RunWidest([&] {
          for (int32_t y = area.top; y < area.bottom; ++y) {
            MapRow<kTo, kFrom...>(area.right - area.left, rule, target.PixelAt(area.left, y),
                                  sources.PixelAt(area.left, y)...);
          }
        });
      },
      target, sources...);
}

// Visits the rows of `rectangle`, which lies inside `source`, from top to bottom, until
// `visit.operator()<kLayout>(row, count)` returns false. False when it did; true for no rows.
template <class Visit>
bool VisitRows(const PictureEditor& source, const Rectangle& rectangle, const Visit& visit) {
  if (rectangle.IsEmpty()) return true;
  bool going = true;
  WithLayout(source.format, [&]<Layout kLayout>() {
    RunWidest([&] {
      for (int32_t y = rectangle.top; going && y < rectangle.bottom; ++y) {
        const Word* row = source.PixelAt(rectangle.left, y);
        going = visit.template operator()<kLayout>(row, rectangle.right - rectangle.left);
      }
    });
  });
  return going;
}
