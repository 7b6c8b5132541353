// The block of pixels that a filter object's bounds select.
#pragma once

#include "pixels/rectangle.h"

// Bounds as programs set them on a filter object. They say how many pixels are processed, not
// where: the block always begins at the top left corner of the picture (intended).
struct BlockBounds {
  int32_t minX;
  int32_t minY;
  int32_t maxX;
  int32_t maxY;
};

// Pixels along an axis of `size` pixels: the limit less `minimum`, at least 0 and at most `size`.
// The limit is `maximum` where that lies below `size` and above `minimum`, otherwise `size`.
constexpr int32_t BlockLength(int32_t minimum, int32_t maximum, int32_t size) {
  const int32_t limit = size > maximum && maximum > minimum ? maximum : size;
  const int64_t length = int64_t{limit} - minimum;
  return length < 0 ? 0 : length > size ? size : static_cast<int32_t>(length);
}

// The block in a picture of `width` by `height` pixels.
constexpr Rectangle TopLeftBlock(const BlockBounds& bounds, int32_t width, int32_t height) {
  return {0, 0, BlockLength(bounds.minX, bounds.maxX, width),
          BlockLength(bounds.minY, bounds.maxY, height)};
}
