// Antialiased lines in the outline colour.
#pragma once

#include "pixels/editor.h"

// The colour of outlines, channels 0 to 255. Set at the start of every rendering.
extern int32_t gOutLineColorR;
extern int32_t gOutLineColorG;
extern int32_t gOutLineColorB;

// Blends the pixel at column x of row y with the outline colour: weight 0 is the outline colour,
// 255 the pixel. Outside the picture nothing happens.
void DrawPixel(const PictureWriter& writer, int32_t x, int32_t y, int32_t weight);

// A line of Wu's with 256 levels from (x0, y0) to (x1, y1), both included; it may lie anywhere.
// Lengths are 16-bit numbers, and so are the ends of a line that is given from bottom to top
// (intended).
void DrawWuLine(const PictureWriter& writer, int32_t x0, int32_t y0, int32_t x1, int32_t y1);
