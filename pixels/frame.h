// The frame of an operation that makes a picture of one picture, pixel by pixel.
#pragma once

#include "pixels/rows.h"

// A new picture of the size of `picture`, +1: `rule` (Pixel -> Pixel) of every pixel inside
// `request`, opaque. Pixels outside it are never written: they keep what the host put into a fresh
// picture. Null when the picture can't be opened or the new one can't be made.
template <class Rule>
REALpicture MapPicture(REALpicture picture, const RectangleRequest& request, const Rule& rule) {
  PictureReader source;
  if (!source.GetPictureEditor(picture, true, false)) return nullptr;
  PictureWriter target;
  if (!target.NewPictureWriter(source.width, source.height, source.hasAlpha)) return nullptr;
  MapPixels(target, ClipRectangle(request, source.width, source.height), rule, source);
  return target.RenderPictureWriter();
}
