#include "host/error.h"
#include "host/runtime/functions.h"
#include "host/runtime/guarded_call.h"
#include "host/runtime/picture_state.h"
#include "host/runtime/pixel_codec.h"

namespace host::runtime {
namespace {

REALpicture HandleOfPicture(Picture* picture) { return reinterpret_cast<REALpicture>(picture); }

Picture* MakeFresh(HostState& state, int32_t width, int32_t height) {
  return MakePicture(state, width, height, FreshLayout(state.host.settings, false));
}

}  // namespace

void PictureClearCache(HostState& state, REALpicture handle) {
  if (Picture* picture = LookUp<Picture>(state, handle, "REALPictureClearCache")) {
    picture->State().DiscardRendering();
  }
}

// Pictures of other depths than 32 aren't made.
REALpicture NewPicture(HostState& state, int32_t width, int32_t height, int32_t depth) {
  return depth == 32 ? HandleOfPicture(MakeFresh(state, width, height)) : nullptr;
}

// Pixel type 1 is four bytes: one unused, red, green, blue. The host takes no other.
REALpicture BuildPictureFromBuffer(HostState& state, int32_t width, int32_t height,
                                   int32_t pixelType, void* buffer, int32_t rowBytes) {
  if (pixelType != 1 || buffer == nullptr || rowBytes / 4 < width) return nullptr;
  Picture* picture = MakeFresh(state, width, height);
  if (picture == nullptr) return nullptr;
  const PictureLayout from = PictureLayout::BitmapContext(kAlphaNoneSkipFirst);
  std::vector<uint8_t> row(static_cast<size_t>(width) * 4);
  for (int32_t y = 0; y < height; ++y) {
    const uint8_t* source =
        static_cast<const uint8_t*>(buffer) + static_cast<int64_t>(y) * rowBytes;
    DecodeStraight(source, from, width, row.data());
    EncodeStraight(picture->State().Row(y), picture->Layout(), width, row.data());
  }
  picture->State().DiscardRendering();
  return HandleOfPicture(picture);
}

REALgraphics PictureGraphics(HostState& state, REALpicture handle) {
  Picture* picture = LookUp<Picture>(state, handle, "pluginPictureGraphicsGetter");
  if (picture == nullptr || !picture->State().HasMemory()) return nullptr;
  return reinterpret_cast<REALgraphics>(
      state.objects.Add(new Graphics(Ref<Picture>::Share(picture))));
}

REALpicture PictureMask(HostState& state, REALpicture handle, uint8_t create) {
  Picture* picture = LookUp<Picture>(state, handle, "REALGetPictureMask");
  if (picture == nullptr) return nullptr;
  if (!picture->State().mask && create != 0) {
    Picture* mask = MakeFresh(state, picture->Width(), picture->Height());
    picture->State().mask = Ref<Picture>::Adopt(mask);
  }
  Ref<Picture> given = picture->State().mask;
  return HandleOfPicture(given.Detach());
}

void PictureConstructor(HostState& state, REALobject handle, int32_t width, int32_t height) {
  auto* picture =
      reinterpret_cast<Picture*>(Look(state, handle, Kind::kPicture, "Picture.Constructor"));
  if (picture == nullptr) return;
  if (picture->Layout().storage != Storage::kEmpty) {
    throw Error(picture->Describe() + " was constructed before");
  }
  GivePixels(state, *picture, width, height, FreshLayout(state.host.settings, true));
}

void DrawLine(HostState& state, REALgraphics handle, int32_t x1, int32_t y1, int32_t x2,
              int32_t y2) {
  if (Graphics* graphics = LookUp<Graphics>(state, handle, "RuntimeGraphicsDrawLine")) {
    graphics->DrawLine(x1, y1, x2, y2);
  }
}

void DrawPicture(HostState& state, REALgraphics handle, REALpicture imageHandle, int32_t x,
                 int32_t y, int32_t w, int32_t h, int32_t sx, int32_t sy, int32_t sw, int32_t sh) {
  constexpr int32_t kWhole = -10000;  // the default of the last two parameters
  Graphics* graphics = LookUp<Graphics>(state, handle, "DrawPicture");
  const Picture* image = LookUp<Picture>(state, imageHandle, "DrawPicture");
  if (graphics == nullptr || image == nullptr) return;
  const Area from = {sx, sy, sw == kWhole ? image->Width() : sw,
                     sh == kWhole ? image->Height() : sh};
  graphics->DrawPicture(*image, {x, y, w, h}, from);
}

}  // namespace host::runtime
