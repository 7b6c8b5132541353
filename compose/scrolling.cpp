// ScrollVerticalKRT(delta as integer, wrap as boolean, scrollmask as boolean) as boolean
// ScrollHorizontalKRT(delta as integer, wrap as boolean, scrollmask as boolean) as boolean
// ScrollKRT(deltaX as integer, deltaY as integer, wrap as boolean, scrollmask as boolean) as
// boolean
//
// Moves the picture's own content by delta pixels, down or to the right where delta is positive.
// With wrap, what leaves one edge comes back at the other. Without, the platform shifts the content
// of a graphics world and erases the strip that becomes free; other pictures are left alone. With
// scrollmask, the picture's separate mask, if it has one, is moved first.
//
// The vertical method returns false where nothing was moved: mask or picture can't be opened, there
// is no memory, or without wrap the picture isn't a graphics world. The horizontal one returns true
// whatever happens (intended), so that the vertical step alone decides what ScrollKRT returns.

#include <string.h>

#include "pixels/buffer.h"
#include "pixels/editor.h"
#include "plugin/binding/platform.h"
#include "plugin/binding/runtime.h"

namespace {

// The shift along an axis of `length` pixels that has the effect of `delta`: congruent to it, above
// -length / 2 and no more than half an axis, rounded up.
constexpr int32_t ShortestShift(int32_t delta, int32_t length) {
  const int32_t half = length / 2;
  int32_t shift = delta % length;
  if (shift >= half) shift -= length;
  if (shift <= -half) shift += length;
  return shift;
}

// The same shift as a rotation towards higher coordinates, 0 <= rotation < length.
constexpr int32_t Forwards(int32_t shift, int32_t length) {
  return shift < 0 ? shift + length : shift;
}

// Rotates all rows down. Each row is moved once, straight to its place: the chain of rows that take
// each other's place closes at the row that was saved, and the next chain begins one row lower.
// Padding moves with its row. False without memory for a row.
bool RotateRows(const PictureEditor& picture, int32_t down) {
  const auto rowSize = static_cast<size_t>(picture.rowBytes);
  const Buffer saved = Buffer::Uncleared(rowSize);
  if (!saved) return false;
  int32_t placed = 0;
  for (int32_t first = 0; placed < picture.height; ++first) {
    memcpy(saved.bytes(), picture.RowStart(first), rowSize);
    int32_t to = first;
    for (;;) {
      const int32_t from = Forwards(to - down, picture.height);
      ++placed;
      if (from == first) break;
      memmove(picture.RowStart(to), picture.RowStart(from), rowSize);
      to = from;
    }
    memcpy(picture.RowStart(to), saved.bytes(), rowSize);
  }
  return true;
}

// Rotates the pixels of each row to the right; nothing without memory for the shorter part of a
// row.
void RotateColumns(const PictureEditor& picture, int32_t right) {
  const auto last = static_cast<size_t>(right) * 4;
  const auto first = static_cast<size_t>(picture.width) * 4 - last;
  const Buffer saved = Buffer::Uncleared(first < last ? first : last);
  if (!saved) return;
  for (int32_t y = 0; y < picture.height; ++y) {
    uint8_t* row = picture.RowStart(y);
    if (first < last) {
      memcpy(saved.bytes(), row, first);
      memmove(row, row + first, last);
      memcpy(row + last, saved.bytes(), first);
    } else {
      memcpy(saved.bytes(), row + first, last);
      memmove(row + last, row, first);
      memcpy(row, saved.bytes(), last);
    }
  }
}

// Rotates the rows down; false where that needs more memory than there is.
bool WrapVertically(const PictureEditor& picture, int32_t delta) {
  if (picture.height < 1 || picture.basePointer == nullptr) return true;
  const int32_t shift = ShortestShift(delta, picture.height);
  if (shift == 0) return true;
  // A vertical scroll is too large where all rows, or those that move down, are (intended).
  const int32_t rows = shift > 0 ? picture.height - shift : picture.height;
  if (!IsBufferSize(int64_t{rows} * picture.rowBytes)) return false;
  return RotateRows(picture, Forwards(shift, picture.height));
}

// Rotates the columns to the right; nothing where that needs more memory than there is.
void WrapHorizontally(const PictureEditor& picture, int32_t delta) {
  if (!IsBufferSize(int64_t{picture.width} * 4)) return;
  const int32_t right = Forwards(ShortestShift(delta, picture.width), picture.width);
  if (right != 0) RotateColumns(picture, right);
}

// Hosts older than this count a lock that they refuse all the same.
bool RefusedLockCounts() { return rbversion < 2012.0 && HasLockPictureDescription(); }

// A picture's description as hosts with graphics worlds give it.
class DescriptionLock {
 public:
  explicit DescriptionLock(REALpicture picture)
      : picture_(picture), locked_(REALLockPictureDescription(picture, &description_)) {}
  ~DescriptionLock() {
    if (locked_ || RefusedLockCounts()) REALUnlockPictureDescription(picture_);
  }
  DescriptionLock(const DescriptionLock&) = delete;
  DescriptionLock& operator=(const DescriptionLock&) = delete;

  bool IsGraphicsWorld() const {
    return locked_ && description_.pictureType == kPictureGraphicsWorld &&
           description_.pictureData != nullptr;
  }
  const REALpictureDescription& description() const { return description_; }

 private:
  REALpictureDescription description_{};
  REALpicture picture_;
  bool locked_;
};

// Lets QuickDraw shift the content of a graphics world. Its coordinates are 16 bits wide, and what
// doesn't fit loses its upper bits (intended). Calls that the platform doesn't have are left out,
// and the others are made all the same (intended). False for a picture that isn't a graphics world.
bool ShiftGraphicsWorld(REALpicture picture, int32_t dh, int32_t dv) {
  if (picture == nullptr) return false;
  const DescriptionLock lock(picture);
  if (!lock.IsGraphicsWorld()) return false;

  void* world = nullptr;
  void* device = nullptr;
  GetGWorld(&world, &device);
  SetGWorld(lock.description().pictureData, nullptr);
  void* uncovered = NewRgn();
  const int16_t whole[4] = {0, 0, static_cast<int16_t>(lock.description().height),
                            static_cast<int16_t>(lock.description().width)};
  ScrollRect(whole, static_cast<int16_t>(dh), static_cast<int16_t>(dv), uncovered);
  DisposeRgn(uncovered);
  SetGWorld(world, device);
  return true;
}

// Scrolls the mask of `picture` with `scroll`. True also where there is none.
bool ScrollMask(REALpicture picture, int8_t (*scroll)(REALpicture, int32_t, int8_t, int8_t),
                int32_t delta, int8_t wrap) {
  if (picture == nullptr) return true;
  REALpicture mask = REALGetPictureMask(picture, false);
  if (mask == nullptr) return true;
  const bool scrolled = scroll(mask, delta, wrap, false) != 0;
  REALUnlockObject(AsObject(mask));
  return scrolled;
}

}  // namespace

int8_t ScrollVerticalKRT(REALpicture picture, int32_t delta, int8_t wrap, int8_t scrollmask) {
  if (scrollmask != 0 && !ScrollMask(picture, ScrollVerticalKRT, delta, wrap)) return false;
  if (delta == 0) return true;
  if (wrap == 0) return ShiftGraphicsWorld(picture, 0, delta) ? 1 : 0;
  PictureEditor editor;
  return editor.GetPictureEditor(picture, true, true) && WrapVertically(editor, delta) ? 1 : 0;
}

int8_t ScrollHorizontalKRT(REALpicture picture, int32_t delta, int8_t wrap, int8_t scrollmask) {
  if (scrollmask != 0) ScrollMask(picture, ScrollHorizontalKRT, delta, wrap);
  if (delta == 0) return true;
  if (wrap == 0) {
    ShiftGraphicsWorld(picture, delta, 0);
    return true;
  }
  PictureEditor editor;
  if (editor.GetPictureEditor(picture, true, true)) WrapHorizontally(editor, delta);
  return true;
}

// One scroll after the other: each locks and unlocks the picture for itself, because a host may
// refuse a second lock, or write back at the unlock what it handed out at the lock.
int8_t ScrollKRT(REALpicture picture, int32_t deltaX, int32_t deltaY, int8_t wrap,
                 int8_t scrollmask) {
  ScrollHorizontalKRT(picture, deltaX, wrap, scrollmask);
  return ScrollVerticalKRT(picture, deltaY, wrap, scrollmask);
}
