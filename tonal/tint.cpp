// TintPictureKRT(source as picture, GreyBase as color, SepiaBase as color) as picture
//
// A copy in the shades of one colour: the brightness of each pixel, weighed by the channels of
// GreyBase, times SepiaBase. A channel of &hFF weighs 1; the weights need not add up to 1. Nil when
// the picture can't be opened or the copy can't be made.

#include "pixels/frame.h"

namespace {

// What red, green and blue weigh, 0 to 1.
struct Weights {
  double red;
  double green;
  double blue;
};

constexpr Weights WeightsOfColour(uint32_t colour) {
  const Pixel p = PixelOfColour(colour);
  return {p.red / 255.0, p.green / 255.0, p.blue / 255.0};
}

// At most 255 of a value between 0 and 765, truncated.
constexpr int32_t Shade(double value) {
  const int32_t shade = static_cast<int32_t>(value);
  return shade > 255 ? 255 : shade;
}

// The sum is added up from the right, in double precision.
constexpr Pixel Tint(Pixel p, const Weights& grey, const Weights& sepia) {
  const double brightness = p.blue * grey.blue + (p.green * grey.green + p.red * grey.red);
  return {Shade(sepia.red * brightness), Shade(sepia.green * brightness),
          Shade(sepia.blue * brightness)};
}

}  // namespace

REALpicture TintPicture(REALpicture source, uint32_t greyBase, uint32_t sepiaBase) {
  const Weights grey = WeightsOfColour(greyBase);
  const Weights sepia = WeightsOfColour(sepiaBase);
  return MapPicture(source, kWholePicture, [=](Pixel p) { return Tint(p, grey, sepia); });
}
