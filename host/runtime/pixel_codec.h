// Pixels as they lie in memory, and as red, green, blue and alpha.
#pragma once

#include <cstdint>

#include "host/picture.h"

namespace host::runtime {

// Whether single pixels of the layout can be read and written: 8, 16, 24 and 32 bits.
bool HasPixels(const PictureLayout& layout);
size_t BytesPerPixel(const PictureLayout& layout);

// One pixel as stored, nothing premultiplied or divided. Alpha is 255 in layouts without it and is
// then not stored; an unused byte becomes 255, in row tables 0.
Rgba Decode(const uint8_t* pixel, const PictureLayout& layout);
void Encode(uint8_t* pixel, const PictureLayout& layout, Rgba value);

// A run of pixels to and from R, G, B, A bytes that aren't premultiplied.
void DecodeStraight(const uint8_t* pixels, const PictureLayout& layout, int64_t count,
                    uint8_t* rgba);
void EncodeStraight(uint8_t* pixels, const PictureLayout& layout, int64_t count,
                    const uint8_t* rgba);

// A run of pixels of one value.
void EncodeRun(uint8_t* pixels, const PictureLayout& layout, int64_t count, Rgba value);

Rgba FromRgb(uint32_t rgb);

}  // namespace host::runtime
