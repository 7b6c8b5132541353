// ReplaceColorKRT(SearchColor as color, ReplaceWithColor as color) as picture
// ExtractColorKRT(SearchColor as color, ReplaceWithColor as color,
//                 BackGroundColor as color) as picture
//
// A copy with the pixels of exactly the search colour replaced, the others opaque as they are; or a
// picture of two colours, which shows where the search colour is. Alpha takes no part in the
// search. The copy has an alpha channel when the picture has one, the extraction never. Nil when
// the picture can't be opened or the new one can't be made.

#include "pixels/colour_match.h"
#include "pixels/frame.h"

namespace {

struct Replace {
  Pixel search;
  Pixel replacement;

  template <Layout kTo, Layout kFrom>
  constexpr uint32_t operator()(uint32_t word) const {
    return HasColour<kFrom>(word, search) ? Pack<kTo>(replacement) : Pack<kTo>(Unpack<kFrom>(word));
  }
};

struct Extract {
  Pixel search;
  Pixel replacement;
  Pixel background;

  template <Layout kTo, Layout kFrom>
  constexpr uint32_t operator()(uint32_t word) const {
    // Chosen as a difference: of two packed colours clang would choose each channel by itself.
    const uint32_t difference = Pack<kTo>(replacement) ^ Pack<kTo>(background);
    return Pack<kTo>(background) ^ (HasColour<kFrom>(word, search) ? difference : 0);
  }
};

}  // namespace

REALpicture ReplaceColorKRT(REALpicture picture, uint32_t search, uint32_t replacement) {
  return MapPicture(picture, kWholePicture,
                    Replace{PixelOfColour(search), PixelOfColour(replacement)});
}

REALpicture ExtractColorKRT(REALpicture picture, uint32_t search, uint32_t replacement,
                            uint32_t background) {
  PictureReader source;
  if (!source.GetPictureEditor(picture, true, false)) return nullptr;
  PictureWriter target;
  if (!target.NewPictureWriter(source.width, source.height, false)) return nullptr;
  MapPixels(target, ClipRectangle(kWholePicture, source.width, source.height),
            Extract{PixelOfColour(search), PixelOfColour(replacement), PixelOfColour(background)},
            source);
  return target.RenderPictureWriter();
}
