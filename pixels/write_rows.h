// The row loop of operations that write pixels which don't come from a picture.
#pragma once

#include "pixels/rows.h"

// Calls `write.operator()<kLayout>(row, count)` for the rows of `target` from top to bottom, as far
// as they lie inside `width` by `height` pixels.
template <class Write>
void WriteRows(const PictureWriter& target, int32_t width, int32_t height, const Write& write) {
  const int32_t count = width < target.width ? width : target.width;
  const int32_t rows = height < target.height ? height : target.height;
  if (count < 1) return;
  WithLayout(target.format, [&]<Layout kLayout>() {
    RunWidest([&] {
      for (int32_t y = 0; y < rows; ++y) {
        write.template operator()<kLayout>(target.PixelAt(0, y), count);
      }
    });
  });
}
