// InvertKRT(left as integer,top as integer,width as integer,height as integer) as picture
// InvertKRT as picture
// InvertGrayKRT(left as integer,top as integer,width as integer,height as integer) as picture
// InvertGrayKRT as picture
//
// A copy with every channel inverted, or with only the grey pixels inverted and the coloured ones
// as they are. Nil when the picture can't be opened or the copy can't be made.

#include "pixels/frame.h"

namespace {

constexpr Pixel Invert(Pixel p) { return {255 - p.red, 255 - p.green, 255 - p.blue}; }

constexpr Pixel InvertGray(Pixel p) {
  const bool grey = p.red == p.green && p.green == p.blue;
  return grey ? Invert(p) : p;
}

// InvertKRT alone takes a width or height of 0, too, for the picture's (intended).
constexpr int32_t ZeroMeansWhole(int32_t length) { return length == 0 ? -1 : length; }

}  // namespace

REALpicture InvertPicture(REALpicture picture, int32_t left, int32_t top, int32_t width,
                          int32_t height) {
  return MapPicture(picture, {left, top, ZeroMeansWhole(width), ZeroMeansWhole(height)},
                    [](Pixel p) { return Invert(p); });
}

REALpicture InvertPicture2(REALpicture picture) { return InvertPicture(picture, 0, 0, -1, -1); }

REALpicture InvertGrayPicture(REALpicture picture, int32_t left, int32_t top, int32_t width,
                              int32_t height) {
  return MapPicture(picture, {left, top, width, height}, [](Pixel p) { return InvertGray(p); });
}

REALpicture InvertGrayPicture2(REALpicture picture) {
  return InvertGrayPicture(picture, 0, 0, -1, -1);
}
