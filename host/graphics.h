// Drawing on pictures.
#pragma once

#include <cstdint>
#include <string>

#include "host/object.h"
#include "host/picture.h"

namespace host {

// A part of a picture.
struct Area {
  int32_t left = 0, top = 0, width = 0, height = 0;
};

// Draws on one picture, which it keeps alive. What falls outside the picture isn't drawn. Drawing
// discards the picture's cached rendering.
class Graphics final : public Object {
 public:
  uint32_t foreColour = 0x000000;  // "ForeColor", 0x00RRGGBB
  int32_t penWidth = 1;            // "PenWidth"
  int32_t penHeight = 1;           // "PenHeight"

  Picture& Target() const { return *target; }
  std::string Describe() const override;

  // QuickDraw's pen: a rectangle penWidth x penHeight hangs below and to the right of every point
  // of the line from one end to the other, both included, in opaque foreColour. The points are
  // Bresenham's, with as many of them as the longer of the two distances plus one; a halfway point
  // goes towards the second end. A pen without width or height draws nothing.
  void DrawLine(int32_t x1, int32_t y1, int32_t x2, int32_t y2);

  // Puts the part `from` of a picture into the part `to` of the target, nearest pixel by nearest
  // pixel where the sizes differ. Pictures with an alpha channel or a separate mask are blended,
  // every other is copied opaque; a vector picture is left out where it is clear.
  void DrawPicture(const Picture& image, Area to, Area from);

  // Made by Host::NewGraphics.
  explicit Graphics(Ref<Picture> picture) : Object(Kind::kGraphics), target(std::move(picture)) {}

 private:
  ~Graphics() override = default;
  void Dispose() override { target = nullptr; }

  Ref<Picture> target;
};

}  // namespace host
