// ChangeSaturationKRT(Amount as integer) as picture
//
// A copy whose colours are pushed away from their grey value (Amount above 0) or pulled towards it.
// 0 leaves colours as they are, 255 doubles the distance from grey, -255 gives grey, and what lies
// below that turns the colour about grey. Any Amount is taken. Nil when the picture can't be opened
// or the copy can't be made.

#include "pixels/frame.h"

namespace {

// One channel at `factor` 255ths of its distance from grey. The product wraps in 32 bits; the
// quotient is truncated toward zero.
constexpr int32_t PushFromGrey(int32_t channel, int32_t grey, int32_t factor) {
  return ClampToByte(grey + WrappingMultiply(channel - grey, factor) / 255);
}

constexpr Pixel Saturate(Pixel p, int32_t factor) {
  const int32_t grey = (p.red + 2 * p.green + p.blue) >> 2;
  return {PushFromGrey(p.red, grey, factor), PushFromGrey(p.green, grey, factor),
          PushFromGrey(p.blue, grey, factor)};
}

}  // namespace

REALpicture SaturationPicture(REALpicture picture, int32_t amount) {
  const int32_t factor = WrappingAdd(amount, 255);
  return MapPicture(picture, kWholePicture, [=](Pixel p) { return Saturate(p, factor); });
}
