// What the tests of isBlackKRT, isWhiteKRT and isGrayKRT share.
#pragma once

#include "tests/support/fixture.h"

namespace uniformity {

using support::LayoutPair;
using support::PictureRef;
using support::Random;
using support::Rgb;

struct Area {
  int32_t left, top, width, height;
};

class Uniformity : public support::PluginTest {
 protected:
  bool IsBlack(const PictureRef& picture) { return Call<bool>("isBlackKRT", picture); }
  bool IsWhite(const PictureRef& picture) { return Call<bool>("isWhiteKRT", picture); }
  bool IsGray(const PictureRef& picture, int32_t tolerance) {
    return Call<bool>("isGrayKRT", picture, tolerance);
  }
  bool IsBlack(const PictureRef& picture, const Area& a) {
    return Call<bool>("isBlackKRT", picture, a.left, a.top, a.width, a.height);
  }
  bool IsWhite(const PictureRef& picture, const Area& a) {
    return Call<bool>("isWhiteKRT", picture, a.left, a.top, a.width, a.height);
  }
  bool IsGray(const PictureRef& picture, int32_t tolerance, const Area& a) {
    return Call<bool>("isGrayKRT", picture, tolerance, a.left, a.top, a.width, a.height);
  }
};

}  // namespace uniformity
