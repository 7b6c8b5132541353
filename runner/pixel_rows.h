// Rows of image files, R, G, B or R, G, B, A without premultiplication, as rows of a picture's
// words and back.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/picture_layout.h"

namespace runner {

// Whether the layout keeps an alpha value in its pixels.
bool StoresAlpha(const host::PictureLayout& layout);

// Whether these functions know the layout: bitmap contexts of 32 bits with colour, and row tables.
bool IsKnown(const host::PictureLayout& layout);

// `samples` is 3 or 4 bytes a pixel. Colours are premultiplied as (c * a + 127) / 255 where the
// layout wants that. Unused bytes become 255 in bitmap contexts and 0 in row tables; an alpha value
// that the layout has no place for is dropped.
void PackRow(const uint8_t* image, int samples, const host::PictureLayout& layout, uint8_t* row,
             size_t width);

// The way back, colours as (c * 255 + a / 2) / a, at most 255; black where alpha is 0. With 4
// samples a layout without alpha gives 255.
void UnpackRow(const uint8_t* row, const host::PictureLayout& layout, uint8_t* image, int samples,
               size_t width);

// Whether every pixel of a row of R, G, B, A has alpha 255.
bool RowIsOpaque(const uint8_t* rgba, size_t width);

}  // namespace runner
