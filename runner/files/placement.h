// Where the pixels of a stored picture lie when it is turned upright.
#pragma once

#include <cstddef>

namespace runner {

// For a picture of `width` x `height` stored pixels with an orientation of 1 to 8 as EXIF counts
// them.
class Placement {
 public:
  Placement(int storedWidth, int storedHeight, int storedOrientation)
      : width(storedWidth), height(storedHeight), orientation(storedOrientation) {}

  // Stored rows are rows of the upright picture.
  bool IsPlain() const { return orientation <= 1 || orientation > 8; }
  // Of the upright picture.
  int Width() const { return Turned() ? height : width; }
  int Height() const { return Turned() ? width : height; }

  // Puts stored rows, `count` from `first` on, one after the other at `pixels`, where they belong;
  // `rowOf(y)` gives row y of the upright picture.
  template <class Pixel, class RowOf>
  void Place(const void* pixels, int first, int count, RowOf rowOf) const {
    const auto* from = static_cast<const Pixel*>(pixels);
    const bool mirrored =
        orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
    const bool flipped =
        orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
    const auto at = [&](int i, int x) {
      return from[static_cast<size_t>(i) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    };
    const auto across = [&](int x) { return mirrored ? width - 1 - x : x; };
    const auto down = [&](int y) { return flipped ? height - 1 - y : y; };
    const auto row = [&](int y) { return static_cast<Pixel*>(static_cast<void*>(rowOf(y))); };
    if (Turned()) {
      for (int x = 0; x < width; ++x) {
        Pixel* to = row(across(x));
        for (int i = 0; i < count; ++i) to[down(first + i)] = at(i, x);
      }
    } else {
      for (int i = 0; i < count; ++i) {
        Pixel* to = row(down(first + i));
        for (int x = 0; x < width; ++x) to[across(x)] = at(i, x);
      }
    }
  }

 private:
  bool Turned() const { return orientation >= 5 && orientation <= 8; }

  int width, height, orientation;
};

}  // namespace runner
