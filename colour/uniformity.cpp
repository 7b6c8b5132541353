// isBlackKRT(left as integer,top as integer,width as integer,height as integer) as boolean
// isBlackKRT as boolean
// isWhiteKRT(left as integer,top as integer,width as integer,height as integer) as boolean
// isWhiteKRT as boolean
// isGrayKRT(tolerance as integer, left as integer,top as integer,width as integer,height as
//           integer) as boolean
// isGrayKRT(tolerance as integer = 0) as boolean
//
// Whether every pixel is black, or white, or grey: no two of its channels further apart than the
// tolerance, whose sign doesn't matter. Alpha takes no part. A rectangle without pixels passes
// every test; a picture that can't be opened passes none.

#include "pixels/rows.h"

namespace {

// What keeps a pixel from passing: 0 for one that passes.
constexpr int32_t BlackFault(Pixel p) { return p.red | p.green | p.blue; }
constexpr int32_t WhiteFault(Pixel p) { return (p.red ^ 255) | (p.green ^ 255) | (p.blue ^ 255); }
constexpr int32_t ExactGrayFault(Pixel p) { return (p.red ^ p.green) | (p.green ^ p.blue); }

// The largest of the three differences between channels is the one between their extremes.
constexpr int32_t LargestDifference(Pixel p) {
  const int32_t most = Larger(Larger(p.red, p.green), p.blue);
  const int32_t least = Smaller(Smaller(p.red, p.green), p.blue);
  return most - least;
}

// Without its sign. No two channels are further apart than 255, so that more means no more.
constexpr int32_t EffectiveTolerance(int32_t tolerance) {
  return tolerance < -255 || tolerance > 255 ? 255 : tolerance < 0 ? -tolerance : tolerance;
}

// 1 when what `gather(gathered, pixel)` gathers from the pixels of the rectangle, 0 at first, is at
// most `tolerance`. It is gathered without a branch and looked at once for all pixels of a visit.
template <class Gather>
int8_t AllPass(REALpicture picture, const RectangleRequest& request, int32_t tolerance,
               const Gather& gather) {
  PictureReader source;
  if (!source.GetPictureEditor(picture, true, false)) return 0;
  return VisitPixels(source, ClipRectangle(request, source.width, source.height),
                     [&]<Layout kLayout>(const Word* first, int32_t count) {
                       int32_t gathered = 0;
                       for (int32_t x = 0; x < count; ++x) {
                         gathered = gather(gathered, Unpack<kLayout>(first[x]));
                       }
                       return gathered <= tolerance;
                     });
}

// 1 when no pixel of the rectangle has a fault.
template <class Fault>
int8_t AllFaultless(REALpicture picture, const RectangleRequest& request, const Fault& fault) {
  return AllPass(picture, request, 0, [=](int32_t faults, Pixel p) { return faults | fault(p); });
}

}  // namespace

int8_t isBlack(REALpicture picture, int32_t left, int32_t top, int32_t width, int32_t height) {
  return AllFaultless(picture, {left, top, width, height}, [](Pixel p) { return BlackFault(p); });
}

int8_t isBlack2(REALpicture picture) { return isBlack(picture, 0, 0, -1, -1); }

int8_t isWhite(REALpicture picture, int32_t left, int32_t top, int32_t width, int32_t height) {
  return AllFaultless(picture, {left, top, width, height}, [](Pixel p) { return WhiteFault(p); });
}

int8_t isWhite2(REALpicture picture) { return isWhite(picture, 0, 0, -1, -1); }

int8_t isGray(REALpicture picture, int32_t tolerance, int32_t left, int32_t top, int32_t width,
              int32_t height) {
  const RectangleRequest request{left, top, width, height};
  const int32_t effective = EffectiveTolerance(tolerance);
  if (effective == 0) {
    return AllFaultless(picture, request, [](Pixel p) { return ExactGrayFault(p); });
  }
  return AllPass(picture, request, effective,
                 [](int32_t largest, Pixel p) { return Larger(largest, LargestDifference(p)); });
}

int8_t isGray2(REALpicture picture, int32_t tolerance) {
  return isGray(picture, tolerance, 0, 0, -1, -1);
}
