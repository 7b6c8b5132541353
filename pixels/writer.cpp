// Output pictures: made by the host, written through an editor, handed back.
#include "pixels/editor.h"
#include "plugin/binding/runtime.h"

namespace {

constexpr double kFirstVersionWithAlphaPictures = 2011.04;

using PictureConstructor = void(REALobject, int32_t, int32_t);

// A picture without an alpha channel, +1, or null.
REALpicture NewOpaquePicture(int32_t width, int32_t height) {
  if (width < 1 || height < 1 || width > kMaxPictureSize || height > kMaxPictureSize) {
    return nullptr;
  }
  return REALNewPicture(width, height, 32);
}

// A picture with an alpha channel, +1, or null. There is no fallback to one without.
REALpicture NewAlphaPicture(int32_t width, int32_t height) {
  if (width < 1 || height < 1 || rbversion < kFirstVersionWithAlphaPictures) return nullptr;
  REALobject instance = REALnewInstance("Picture");
  if (instance == nullptr) return nullptr;
  auto* constructor = reinterpret_cast<PictureConstructor*>(
      REALLoadObjectMethod(instance, "Constructor(width as integer, height as integer)"));
  // A host that makes pictures but can't construct them keeps the instance (intended).
  if (constructor == nullptr) return nullptr;
  constructor(instance, width, height);
  return reinterpret_cast<REALpicture>(instance);
}

}  // namespace

bool PictureWriter::NewPictureWriter(int32_t newWidth, int32_t newHeight, bool alpha) {
  REALpicture made =
      alpha ? NewAlphaPicture(newWidth, newHeight) : NewOpaquePicture(newWidth, newHeight);
  if (made == nullptr) return false;
  const bool opened = GetPictureEditor(made, false, true);
  REALUnlockObject(AsObject(made));  // an open writer holds its own reference
  return opened;
}

REALpicture PictureEditor::RenderPictureWriter() {
  REALpicture result = nullptr;
  if (picture != nullptr) {
    result = REALLockObject(AsObject(picture)) ? picture : nullptr;
    REALPictureClearCache(picture);
  } else if (buffer != nullptr) {
    constexpr int32_t kPixelType = 1;
    result = REALBuildPictureFromBuffer(width, height, kPixelType, buffer, rowBytes);
  }
  Release();
  return result;
}
