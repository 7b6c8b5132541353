#include "pixels/editor.h"

#include <string.h>

#include "plugin/binding/platform.h"
#include "plugin/binding/runtime.h"

bool IsDesktop = false;
bool IsConsole = false;

namespace {

// From this version on a refused lock leaves nothing behind; older hosts count it all the same.
constexpr double kRefusedLockIsNotCounted = 2012.0;

void FindApplicationKind() {
  if (IsDesktop || IsConsole) return;
  const bool application = REALGetClassRef("Application") != nullptr;
  const bool webApplication = REALGetClassRef("WebApplication") != nullptr;
  const bool consoleApplication = REALGetClassRef("ConsoleApplication") != nullptr;
  if (application) {
    IsDesktop = true;
  } else if (consoleApplication || webApplication) {
    IsConsole = true;
  }
}

bool LockDescription(REALpicture pic, REALpictureDescription* description, uint32_t wantedType) {
  if (REALLockPictureDescription(pic, description, wantedType)) return true;
  if (rbversion < kRefusedLockIsNotCounted) REALUnlockPictureDescription(pic);
  return false;
}

// The row-table picture of a locked description, or null when it isn't one.
const REALrowTablePicture* RowTableOf(const REALpictureDescription& description) {
  if (description.pictureType != kPictureRowTable) return nullptr;
  const auto* table = static_cast<const REALrowTablePicture*>(description.pictureData);
  const bool valid =
      table != nullptr && table->zero == 0 && table->rows != nullptr && table->second != nullptr;
  return valid ? table : nullptr;
}

using DrawPictureMethod = void(REALgraphics, REALpicture, int32_t, int32_t, int32_t, int32_t,
                               int32_t, int32_t, int32_t, int32_t);

DrawPictureMethod* LoadDrawPicture(REALgraphics graphics) {
  if (graphics == nullptr) return nullptr;
  return reinterpret_cast<DrawPictureMethod*>(REALLoadObjectMethod(
      AsObject(graphics),
      "DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer, h as Integer, "
      "sx as Integer = 0, sy as Integer = 0, sw as Integer = -10000, sh as Integer = -10000)"));
}

// Whether a description that was locked as a row table has rows to copy. Less is asked than of a
// picture to be opened: neither the description's type nor the second pointer matters here.
bool HasRows(const REALrowTablePicture* table) {
  return table != nullptr && table->zero == 0 && table->rows != nullptr;
}

// Copies the rows of one row-table picture to another of its size; nothing when they aren't that.
void CopyRows(const REALpictureDescription& from, const REALpictureDescription& to) {
  const auto* source = static_cast<const REALrowTablePicture*>(from.pictureData);
  const auto* target = static_cast<const REALrowTablePicture*>(to.pictureData);
  if (!HasRows(source) || !HasRows(target)) return;
  if (source->width != target->width || source->height != target->height) return;
  if (source->width < 1) return;
  for (int32_t y = 0; y < source->height; ++y) {
    memcpy(target->rows[y], source->rows[y], static_cast<size_t>(source->width) * 4);
  }
}

// For hosts whose graphics can't draw pictures.
void CopyPixels(REALpicture pic, REALpicture copy) {
  if (rbversion < kRefusedLockIsNotCounted) GraphicsDrawPicture();
  REALpictureDescription from{};
  REALpictureDescription to{};
  if (LockDescription(pic, &from, kPictureRowTable)) {
    if (LockDescription(copy, &to, kPictureRowTable)) {
      CopyRows(from, to);
      REALUnlockPictureDescription(copy);
    }
    REALUnlockPictureDescription(pic);
  }
  REALPictureClearCache(copy);
}

}  // namespace

PictureEditor::~PictureEditor() { Release(); }

bool PictureEditor::GetPictureEditor(REALpicture pic, bool rasterize, bool modify) {
  Release();
  if (pic == nullptr) return false;
  rasterizeIfNeeded = rasterize;
  modifies = modify;
  return Open(pic, Rasterizing::allowed);
}

bool PictureEditor::Open(REALpicture pic, Rasterizing rasterizing) {
  FindApplicationKind();
  uint8_t alphaChannel = 0;
  hasAlpha =
      REALGetPropValueUInt8(AsObject(pic), "HasAlphaChannel", &alphaChannel) && alphaChannel != 0;

  if (!IsConsole) {
    if (LockDescription(pic, &description, kPictureBitmapContext)) return OpenBitmapContext(pic);
    if (!hasAlpha && rasterizeIfNeeded && !modifies && rasterizing == Rasterizing::allowed) {
      bool opened = false;
      if (OpenRasterized(pic, &opened)) return opened;
    }
  }
  return OpenRowTable(pic);
}

// The description is locked and becomes the editor's, or is unlocked where this fails, but for one
// case: a refused alpha layout leaves the lock in place (intended).
bool PictureEditor::OpenBitmapContext(REALpicture pic) {
  IsDesktop = true;
  void* context = description.pictureData;
  if (description.pictureType != kPictureBitmapContext || context == nullptr ||
      !HasBitmapContextFunctions()) {
    REALUnlockPictureDescription(pic);
    return false;
  }
  void* data = CGBitmapContextGetData(context);
  const size_t bitsPerPixel = CGBitmapContextGetBitsPerPixel(context);
  const auto contextWidth = static_cast<int32_t>(CGBitmapContextGetWidth(context));
  const auto contextHeight = static_cast<int32_t>(CGBitmapContextGetHeight(context));
  const auto contextRowBytes = static_cast<int32_t>(CGBitmapContextGetBytesPerRow(context));
  const auto alphaInfo = static_cast<int32_t>(CGBitmapContextGetAlphaInfo(context) & 7);

  const int32_t lastAccepted = hasAlpha ? 2 : 6;
  if (alphaInfo < 1 || alphaInfo > lastAccepted) return false;
  const bool hasPixels = contextWidth > 0 && contextHeight > 0;
  const bool rowsHoldPixels = data != nullptr && contextRowBytes >= int64_t{contextWidth} * 4;
  if (bitsPerPixel != 32 || (hasPixels && !rowsHoldPixels)) {
    REALUnlockPictureDescription(pic);
    return false;
  }

  if (!Hold(pic)) return false;
  alphaContext = hasAlpha;
  format = alphaInfo;
  rowBytes = contextRowBytes;
  width = contextWidth;
  height = contextHeight;
  rowTable = nullptr;
  basePointer = rowPointer = static_cast<uint8_t*>(data);
  return true;
}

bool PictureEditor::OpenRowTable(REALpicture pic) {
  if (IsDesktop) return false;
  if (!LockDescription(pic, &description, kPictureRowTable)) return false;
  IsConsole = true;
  const REALrowTablePicture* table = RowTableOf(description);
  if (table == nullptr) {
    REALUnlockPictureDescription(pic);
    return false;
  }

  if (!Hold(pic)) return false;
  format = 8;
  width = description.width;
  height = description.height;
  rowBytes = static_cast<int32_t>(static_cast<uint32_t>(width) * 4);
  rowTable = table->rows;
  basePointer = rowPointer = height > 0 ? rowTable[0] : nullptr;
  return true;
}

// Draws `pic` into a fresh bitmap and opens that. False: there was no bitmap to draw into; else
// `opened` says whether it could be opened. A copy that refuses the lock isn't copied once more.
bool PictureEditor::OpenRasterized(REALpicture pic, bool* opened) {
  int32_t w = 0;
  int32_t h = 0;
  if (!REALGetPropValueInt32(AsObject(pic), "Width", &w) || w <= 0) return false;
  if (!REALGetPropValueInt32(AsObject(pic), "Height", &h) || h <= 0) return false;
  REALpicture copy = REALNewPicture(w, h, 32);
  if (copy == nullptr) return false;

  REALgraphics graphics = REALGetPictureGraphics(copy);
  if (DrawPictureMethod* drawPicture = LoadDrawPicture(graphics)) {
    drawPicture(graphics, pic, 0, 0, w, h, 0, 0, w, h);
  } else {
    CopyPixels(pic, copy);
  }
  if (graphics != nullptr) REALUnlockObject(AsObject(graphics));

  *opened = Open(copy, Rasterizing::done);
  REALUnlockObject(AsObject(copy));
  return true;
}

// Makes the locked `pic` the editor's own; unlocks it where no reference can be taken.
bool PictureEditor::Hold(REALpicture pic) {
  if (!REALLockObject(AsObject(pic))) {
    REALUnlockPictureDescription(pic);
    return false;
  }
  picture = pic;
  descriptionLocked = true;
  bytesPerPixel = 4;
  cursorX = cursorY = 0;
  return true;
}

void PictureEditor::Release() {
  if (lockedPixels != nullptr) {
    UnlockPixels(lockedPixels);
    lockedPixels = nullptr;
  }
  if (descriptionLocked) {
    REALUnlockPictureDescription(picture);
    descriptionLocked = false;
  }
  if (picture == nullptr) return;
  if (modifies) REALPictureClearCache(picture);
  REALUnlockObject(AsObject(picture));
  picture = nullptr;
}
