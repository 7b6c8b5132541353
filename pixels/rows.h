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

// Rows are walked in strips: long enough to fill vectors, short enough for what a rule keeps of
// one to stay in the nearest cache.
inline constexpr int32_t kStripLength = 64;

// The length of a whole strip, as a type: loops over it are compiled for that length.
struct WholeStrip {
  constexpr operator int32_t() const { return kStripLength; }
};

// Asks for the strip that lies kPrefetchDistance bytes after the one at `strip`, to be read or to
// be written; past the picture's end this does nothing. With it, rules that compute run on large
// pictures nearly as fast as in the cache.
inline constexpr uintptr_t kPrefetchDistance = 2048;
template <int kForWriting>
inline void Prefetch(const Word* strip) {
  constexpr uintptr_t kCacheLine = 64;
  const uintptr_t ahead = reinterpret_cast<uintptr_t>(strip) + kPrefetchDistance;
  for (uintptr_t i = 0; i < kStripLength * sizeof(Word); i += kCacheLine) {
    __builtin_prefetch(reinterpret_cast<const void*>(ahead + i), kForWriting);
  }
}

// What a picture has of a rectangle.
inline Rectangle Within(const PictureEditor& picture, Rectangle rectangle) {
  if (rectangle.right > picture.width) rectangle.right = picture.width;
  if (rectangle.bottom > picture.height) rectangle.bottom = picture.height;
  return rectangle;
}

// Whether the rows of `area` are whole rows of the picture that lie one behind the other.
inline bool HasRowsInOnePiece(const PictureEditor& picture, const Rectangle& area) {
  return picture.rowTable == nullptr && area.right - area.left == picture.width &&
         picture.rowBytes == int64_t{picture.width} * static_cast<int64_t>(sizeof(Word));
}

// Rows that lie one behind the other in all pictures are walked together, so that a small picture
// isn't all beginnings and ends of rows; but so few that stopping early is worth its while.
inline constexpr int32_t kPixelsTogether = 4096;

// Calls `walk(y, count)` for the pixels of `area`, which lies inside the pictures and isn't empty,
// from top to bottom: `count` of them, from the first one of row y on, lie one behind the other in
// each picture. Stops when that returns false, and returns false then.
template <class Walk, class... Pictures>
bool WalkArea(const Rectangle& area, const Walk& walk, const Pictures&... pictures) {
  const int32_t width = area.right - area.left;
  const bool together = width < kPixelsTogether && (HasRowsInOnePiece(pictures, area) && ...);
  const int32_t rows = together ? kPixelsTogether / width : 1;
  int32_t y = area.top;
  for (; y < area.bottom - rows; y += rows) {
    if (!walk(y, rows * width)) return false;
  }
  return walk(y, (area.bottom - y) * width);
}

// One row. `strip` is called as MapStrips says.
template <Layout kTo, Layout... kFrom, class Strip>
void MapRow(int32_t count, const Strip& strip, Word* target, SourceRow<kFrom>... sources) {
  int32_t x = 0;
  for (; x <= count - kStripLength; x += kStripLength) {
    Prefetch<1>(target + x);
    (Prefetch<0>(sources + x), ...);
    strip.template operator()<kTo, kFrom...>(WholeStrip(), target + x, (sources + x)...);
  }
  if (x < count) strip.template operator()<kTo, kFrom...>(count - x, target + x, (sources + x)...);
}

// Calls `strip.operator()<kTo, kFrom...>(count, target, sources...)` for the strips that make up
// `rectangle`, which lies inside the sources. `count` is a WholeStrip or, where pixels don't go on,
// an int32_t from 1 to kStripLength - 1. A target may be one of the sources. What a target doesn't
// have is left out.
template <class Strip, class... Sources>
void MapStrips(const PictureEditor& target, const Rectangle& rectangle, const Strip& strip,
               const Sources&... sources) {
  const Rectangle area = Within(target, rectangle);
  if (area.IsEmpty()) return;
  WithLayouts(
      [&]<Layout kTo, Layout... kFrom>() {
        RunWidest([&] {
          WalkArea(
              area,
              [&](int32_t y, int32_t count) {
                MapRow<kTo, kFrom...>(count, strip, target.PixelAt(area.left, y),
                                      sources.PixelAt(area.left, y)...);
                return true;
              },
              target, sources...);
        });
      },
      target, sources...);
}

// Each target pixel is `rule` of the source pixels at its place.
template <class Rule>
struct PixelStrip {
  Rule rule;

  // The rule is copied, so that the compiler knows that writing a pixel doesn't change it.
  template <Layout kTo, Layout... kFrom, class Count>
  void operator()(Count count, Word* target, SourceRow<kFrom>... sources) const {
    const Rule copy = rule;
    for (int32_t x = 0; x < count; ++x) target[x] = MapWord<kTo, kFrom...>(copy, sources[x]...);
  }
};

// Writes `rule` of the source pixels to every pixel of `rectangle`, as MapStrips does.
template <class Rule, class... Sources>
void MapPixels(const PictureEditor& target, const Rectangle& rectangle, const Rule& rule,
               const Sources&... sources) {
  MapStrips(target, rectangle, PixelStrip<Rule>{rule}, sources...);
}

// Visits the pixels of `rectangle`, which lies inside `source`, from top to bottom and left to
// right, until `visit.operator()<kLayout>(first, count)` returns false: `count` pixels from `first`
// on, a row or several. False when it did; true for no pixels.
template <class Visit>
bool VisitPixels(const PictureEditor& source, const Rectangle& rectangle, const Visit& visit) {
  if (rectangle.IsEmpty()) return true;
  bool going = true;
  WithLayout(source.format, [&]<Layout kLayout>() {
    RunWidest([&] {
      going = WalkArea(
          rectangle,
          [&](int32_t y, int32_t count) {
            const Word* first = source.PixelAt(rectangle.left, y);
            return visit.template operator()<kLayout>(first, count);
          },
          source);
    });
  });
  return going;
}

// Visits the rows of `rectangle`, which lies inside `source`, from top to bottom, with
// `visit.operator()<kLayout>(row, count)`.
template <class Visit>
void VisitRows(const PictureEditor& source, const Rectangle& rectangle, const Visit& visit) {
  if (rectangle.IsEmpty()) return;
  WithLayout(source.format, [&]<Layout kLayout>() {
    RunWidest([&] {
      for (int32_t y = rectangle.top; y < rectangle.bottom; ++y) {
        const Word* row = source.PixelAt(rectangle.left, y);
        visit.template operator()<kLayout>(row, rectangle.right - rectangle.left);
      }
    });
  });
}
