// HasMaskKRT as boolean
// EmbeddedMaskKRT(swap as boolean) as picture, and its assignment
//
// HasMaskKRT tells whether the host keeps a separate mask beside the picture; it makes none.
//
// Reading EmbeddedMaskKRT gives the pixels' fourth bytes as a new grey picture without an alpha
// channel, whether or not the picture uses them; with swap, inverted. Nil when the picture can't be
// opened or the new one can't be made. Assigning a picture puts its red channel, with swap
// inverted, into the pixels' first bytes: that is alpha where alpha stands first, red or blue
// elsewhere (intended). The colours stay as they are, the host's cached rendering isn't discarded,
// and a picture without pixels of its own is left alone, since a copy of it is written (all
// intended). Of a smaller picture that is assigned, what lies beyond its edges counts as nothing to
// write. Nothing changes, and nothing is reported, when a picture is nil or can't be opened.

#include "pixels/rows.h"
#include "plugin/binding/runtime.h"

namespace {

template <Layout kLayout>
constexpr uint32_t AlphaOf(uint32_t word) {
  if constexpr (kLayout == Layout::rgba) return word >> 24;
  if constexpr (kLayout == Layout::argb) return word & 255;
  // Row tables: seven bits stretched to eight by repeating the lowest (intended).
  if constexpr (kLayout == Layout::bgrx) return (word >> 24 & 127) * 2 | (word >> 24 & 1);
}

constexpr uint32_t InversionOf(int8_t swap) { return swap != 0 ? 255 : 0; }

// The grey pixel that shows a pixel's alpha.
struct ShowAlpha {
  uint32_t inversion;

  template <Layout kTo, Layout kFrom>
  constexpr uint32_t operator()(uint32_t word) const {
    const auto grey = static_cast<int32_t>(AlphaOf<kFrom>(word) ^ inversion);
    return Pack<kTo>({grey, grey, grey});
  }
};

// Puts the red channels of a mask's pixels into the first bytes of a strip.
struct ReplaceFirstBytes {
  uint32_t inversion;

  template <Layout, Layout kMask, class Count>
  void operator()(Count count, Word* target, const Word* mask) const {
    const uint32_t inverted = inversion;
    for (int32_t x = 0; x < count; ++x) {
      const auto red = static_cast<uint32_t>(Unpack<kMask>(mask[x]).red);
      target[x] = (target[x] & ~uint32_t{255}) | (red ^ inverted);
    }
  }
};

// What two pictures have in common.
Rectangle Overlap(const PictureEditor& a, const PictureEditor& b) {
  return {0, 0, Smaller(a.width, b.width), Smaller(a.height, b.height)};
}

}  // namespace

int8_t PictureHasMask(REALpicture picture) {
  if (picture == nullptr) return false;
  REALpicture mask = REALGetPictureMask(picture, false);
  if (mask == nullptr) return false;
  REALUnlockObject(AsObject(mask));
  return true;
}

REALpicture GetEmbededMask(REALpicture picture, int8_t swap) {
  PictureReader source;
  if (!source.GetPictureEditor(picture, true, false)) return nullptr;
  PictureWriter target;
  if (!target.NewPictureWriter(source.width, source.height, false)) return nullptr;

  MapPixels(target, Overlap(source, target), ShowAlpha{InversionOf(swap)}, source);
  return target.RenderPictureWriter();
}

void SetEmbededMask(REALpicture picture, int8_t swap, REALpicture maskPicture) {
  if (maskPicture == nullptr) return;
  // Two locks, of one picture where it is its own mask.
  PictureReader target;
  if (!target.GetPictureEditor(picture, true, false)) return;
  PictureReader mask;
  if (!mask.GetPictureEditor(maskPicture, true, false)) return;

  MapStrips(target, Overlap(mask, target), ReplaceFirstBytes{InversionOf(swap)}, mask);
}
