#include "host/picture_layout.h"

namespace host {

PictureLayout PictureLayout::BitmapContext(uint32_t alphaInfo, int32_t rowPadding,
                                           int32_t bitsPerPixel) {
  PictureLayout layout;
  layout.alphaInfo = alphaInfo;
  layout.rowPadding = rowPadding;
  layout.bitsPerPixel = bitsPerPixel;
  return layout;
}

PictureLayout PictureLayout::WithAlpha(uint32_t alphaInfo, int32_t rowPadding) {
  PictureLayout layout = BitmapContext(alphaInfo, rowPadding);
  layout.hasAlphaChannel = true;
  return layout;
}

PictureLayout PictureLayout::RowTable(int32_t rowPadding) {
  PictureLayout layout;
  layout.storage = Storage::kRowTable;
  layout.rowPadding = rowPadding;
  return layout;
}

PictureLayout PictureLayout::GraphicsWorld(int32_t rowPadding) {
  PictureLayout layout;
  layout.storage = Storage::kGraphicsWorld;
  layout.rowPadding = rowPadding;
  return layout;
}

}  // namespace host
