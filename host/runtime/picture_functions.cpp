#include "host/error.h"
#include "host/runtime/functions.h"
#include "host/runtime/guarded_call.h"
#include "host/runtime/picture_state.h"
#include "host/runtime/pixel_codec.h"

namespace host::runtime {
namespace {

constexpr uint32_t kNoWish = 0;
constexpr double kRefusedLocksDontCount = 2012.0;

// What a lock gives; nothing when it is refused.
std::optional<REALpictureType> TypeGiven(const PictureLayout& layout, uint32_t wanted) {
  const auto asked = [&](REALpictureType type) {
    return wanted == kNoWish || wanted == static_cast<uint32_t>(type);
  };
  const bool bitmap = layout.storage == Storage::kBitmapContext;
  const bool table = layout.storage == Storage::kRowTable;
  if (layout.locking == Locking::kRefused) return std::nullopt;
  if (layout.storage == Storage::kGraphicsWorld) {
    return asked(kPictureGraphicsWorld) ? std::optional(kPictureGraphicsWorld) : std::nullopt;
  }
  if (bitmap && layout.locking != Locking::kRowTable && asked(kPictureBitmapContext)) {
    return kPictureBitmapContext;
  }
  if ((table || (bitmap && layout.locking != Locking::kNative)) && asked(kPictureRowTable)) {
    return kPictureRowTable;
  }
  return std::nullopt;
}

void* DataOf(PictureState& picture, REALpictureType type) {
  switch (type) {
    case kPictureGraphicsWorld:
      return &picture.world;
    case kPictureBitmapContext:
      return &picture.context;
    case kPictureRowTable:
      // Filled anew: a test may have spoilt what the last lock gave.
      picture.rowTable = {0, picture.rows.data(), picture.rows.data(), picture.width,
                          picture.height};
      return &picture.rowTable;
  }
  return nullptr;
}

bool Lock(HostState& state, Picture* picture, REALpictureDescription* out, uint32_t wanted) {
  if (picture == nullptr || out == nullptr) return false;
  PictureState& inside = picture->State();
  const auto type = inside.HasMemory() ? TypeGiven(inside.layout, wanted) : std::nullopt;
  if (!type) {
    if (state.host.settings.version < kRefusedLocksDontCount) ++inside.descriptionLocks;
    return false;
  }
  ++inside.descriptionLocks;
  ++inside.version;
  *out = {*type,         DataOf(inside, *type),      inside.width,
          inside.height, inside.layout.bitsPerPixel, inside.layout.hasAlphaChannel.value_or(false)};
  if (inside.descriptionHook) inside.descriptionHook(*out);
  return true;
}

REALpicture HandleOfPicture(Picture* picture) { return reinterpret_cast<REALpicture>(picture); }

Picture* MakeFresh(HostState& state, int32_t width, int32_t height) {
  return MakePicture(state, width, height, FreshLayout(state.host.settings, false));
}

}  // namespace

bool LockDescription(HostState& state, REALpicture picture, REALpictureDescription* out) {
  return Lock(state, LookUp<Picture>(state, picture, "lockPictureDescription"), out, kNoWish);
}

bool LockDescriptionAs(HostState& state, REALpicture picture, REALpictureDescription* out,
                       uint32_t wantedType) {
  return Lock(state, LookUp<Picture>(state, picture, "REALLockPictureDescription"), out,
              wantedType);
}

void UnlockDescription(HostState& state, REALpicture handle) {
  Picture* picture = LookUp<Picture>(state, handle, "unlockPictureDescription");
  if (picture == nullptr) return;
  if (picture->State().descriptionLocks == 0) {
    throw Error(picture->Describe() + "'s description isn't locked");
  }
  --picture->State().descriptionLocks;
}

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
