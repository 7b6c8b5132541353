// ColornessKRT(threshold as integer = 10) as double
//
// How colourful a picture is: the share of its pixels, 0 to 1, whose green differs from red or from
// blue by more than the threshold. Red and blue are never compared with each other (intended). Dark
// pixels don't count as coloured but stay in the total. A threshold below 0 counts every pixel that
// isn't dark. 0 when the picture can't be opened or has no pixels.

#include "pixels/rows.h"

namespace {

// Every channel of a dark pixel is at most this.
constexpr int32_t kDarkest = 29;

constexpr int32_t Distance(int32_t a, int32_t b) { return a < b ? b - a : a - b; }

// Computes both sides of the `and`, for loops without branches.
constexpr bool IsColoured(Pixel p, int32_t threshold) {
  const bool bright = Larger(Larger(p.red, p.blue), p.green) > kDarkest;
  const bool colourful = Larger(Distance(p.green, p.red), Distance(p.green, p.blue)) > threshold;
  return bright & colourful;
}

}  // namespace

double ColornessKRT(REALpicture picture, int32_t threshold) {
  PictureReader source;
  if (!source.GetPictureEditor(picture, true, false)) return 0;
  const int32_t pixels = WrappingMultiply(source.width, source.height);
  if (pixels == 0) return 0;

  int64_t coloured = 0;
  VisitPixels(source, ClipRectangle(kWholePicture, source.width, source.height),
              [&]<Layout kLayout>(const Word* first, int32_t count) {
                int32_t here = 0;
                for (int32_t x = 0; x < count; ++x) {
                  here += IsColoured(Unpack<kLayout>(first[x]), threshold);
                }
                coloured += here;
                return true;
              });
  return static_cast<double>(coloured) / pixels;
}
