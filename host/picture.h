// Pictures of every kind that a host has had.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/object.h"
#include "host/picture_layout.h"

namespace host {

namespace runtime {
struct PictureState;
}

// A channel each, 0 to 255, as the pixel holds them: premultiplied layouts give premultiplied
// values. Layouts without an alpha channel read as alpha 255 and don't store what is given.
struct Rgba {
  uint8_t red = 0, green = 0, blue = 0, alpha = 255;
  friend bool operator==(const Rgba&, const Rgba&) = default;
};

// Pixels that belong to somebody else: rows from top to bottom, `rowBytes` apart, 32 bits a pixel.
struct ForeignPixels {
  uint8_t* first = nullptr;  // of row 0, at a multiple of 4
  int32_t width = 0, height = 0;
  size_t rowBytes = 0;          // a multiple of 4; what lies between rows is left alone
  std::shared_ptr<void> owner;  // let go of when the picture ends
};

// What a vector picture shows at a point, 0x00RRGGBB; nothing where it is clear.
using VectorPaint = std::function<std::optional<uint32_t>(int32_t x, int32_t y)>;

// A picture. Coordinates outside it throw Error. Changing pixels through this class is the host's
// own doing and discards the cached rendering; what the plug-in writes through a description
// doesn't.
class Picture final : public Object {
 public:
  int32_t Width() const;
  int32_t Height() const;
  const PictureLayout& Layout() const;
  std::string Describe() const override;

  // From one row of a bitmap to the next; for row tables the bytes of a row with its padding.
  size_t RowBytes() const;
  // The row's first pixel. Null for empty and vector pictures.
  uint8_t* Row(int32_t y);
  const uint8_t* Row(int32_t y) const;
  // The bytes after the row's last pixel, filled with kPaddingByte when the picture is made.
  std::span<uint8_t> Padding(int32_t y);
  static constexpr uint8_t kPaddingByte = 0xA5;
  // Whether nobody wrote just before the first or just after the last byte of pixel memory. The
  // census looks at this too, when the picture ends and when it is asked for differences.
  bool GuardsIntact() const;

  // One pixel. Word is the stored 32 bits, least significant byte first in memory; it needs 32 bits
  // per pixel. Pixel and SetPixel know 8 (grey), 16 (x1 R5 G5 B5), 24 (R, G, B) and 32 bits.
  uint32_t Word(int32_t x, int32_t y) const;
  void SetWord(int32_t x, int32_t y, uint32_t word);
  Rgba Pixel(int32_t x, int32_t y) const;
  void SetPixel(int32_t x, int32_t y, Rgba value);
  void Fill(Rgba value);

  // The whole picture as R, G, B, A bytes, rows packed, top to bottom, colours not premultiplied:
  // premultiplied layouts are converted both ways, (c * 255 + a / 2) / a and (c * a + 127) / 255.
  // The separate mask has no part in it. FromRgba wants exactly width * height * 4 bytes.
  std::vector<uint8_t> ToRgba() const;
  void FromRgba(std::span<const uint8_t> bytes);

  // What the host would show, in ToRgba's form: its cached rendering if it has one, else one made
  // now and kept. A picture starts with the rendering of its fresh state. Only
  // REALPictureClearCache, the host's own drawing and the writing functions of this class discard
  // it, so pixels that the plug-in changed without a clear don't show.
  std::vector<uint8_t> Rendering();
  // Whether Rendering() shows the pixels as they are.
  bool RenderingIsCurrent() const;
  // From now on somebody else may write the pixels at any time, through Row(): renderings are no
  // longer kept, and always show the pixels as they are.
  void SharePixels();

  // The separate mask; empty when the picture has none.
  Ref<Picture> Mask() const;
  void SetMask(Ref<Picture> mask);

  // Something of the embedding program's own, which the host keeps for as long as the picture
  // lives and never looks at. Null until it is set.
  const std::shared_ptr<const void>& Attachment() const;
  void Attach(std::shared_ptr<const void> attachment);

  void SetLocking(Locking locking);
  // Called with every description that a lock of this picture is about to hand out, so that a test
  // can spoil it.
  void SetDescriptionHook(std::function<void(REALpictureDescription&)> hook);
  // Locks not yet undone. Hosts older than 2012.0 count a refused one too.
  int64_t DescriptionLocks() const;

  // For the host's own functions.
  runtime::PictureState& State() { return *state; }
  const runtime::PictureState& State() const { return *state; }

  // Made by Host::NewPicture and its siblings.
  explicit Picture(std::unique_ptr<runtime::PictureState> pictureState);

 private:
  ~Picture() override;
  void BeforeEnd() override;
  void Dispose() override;
  void Touched();

  std::unique_ptr<runtime::PictureState> state;
};

}  // namespace host
