// Host pictures opened as rows of 32-bit pixels.
//
// An editor is a local object of an operation. Opening locks the picture's pixels and takes one
// reference to it; the destructor gives both back on every path.
#pragma once

#include "pixels/layout.h"
#include "plugin/binding/records.h"

// The kind of application that the host runs, found out at the first open and kept for the life of
// the process. At most one is set by looking; both only ever go from false to true.
extern bool IsDesktop;
extern bool IsConsole;

class PictureEditor {
 public:
  PictureEditor() = default;
  virtual ~PictureEditor();
  PictureEditor(const PictureEditor&) = delete;
  PictureEditor& operator=(const PictureEditor&) = delete;

  // Editors live on the stack; this keeps the deleting destructor free of a run-time library.
  static void* operator new(size_t) = delete;
  static void operator delete(void*) {}  // NOLINT(cert-dcl54-cpp,misc-new-delete-overloads): no new

  // Opens `pic`, after releasing what the editor held. True: the pixel fields below are valid until
  // release. False: the editor holds nothing; there is no other report. A picture without pixels of
  // its own is drawn into a fresh bitmap, which is opened in its place, when `rasterizeIfNeeded` is
  // set and `modifies` is not. With `modifies` the host's cached rendering of the picture is
  // discarded at release.
  //
  // Two editors that are open on one picture hold two locks of it. A host may refuse the second, or
  // give each its own copy of the pixels; docs/conventions.md says what then comes of each method.
  bool GetPictureEditor(REALpicture pic, bool rasterizeIfNeeded, bool modifies);

  // Hands the picture over and closes the editor: the result carries one reference for the caller.
  // Null when the editor holds neither a picture nor a buffer that the host makes a picture of.
  REALpicture RenderPictureWriter();

  // The first pixel of row y, 0 <= y < height.
  uint8_t* RowStart(int32_t y) const {
    return rowTable != nullptr ? rowTable[y] : basePointer + static_cast<ptrdiff_t>(rowBytes) * y;
  }

  // Pixel x of row y.
  Word* PixelAt(int32_t x, int32_t y) const { return reinterpret_cast<Word*>(RowStart(y)) + x; }

  // Moves the cursor to the next row. A step past the last row puts the row pointer back on row 0
  // (intended): operations step freely.
  void NextRow() {
    cursorY += 1;
    cursorX = 0;
    rowPointer = cursorY < height ? RowStart(cursorY) : basePointer;
  }

  int32_t rowBytes = 0;           // from the start of one row to the next
  int32_t width = 0;              // pixels in a row
  int32_t height = 0;             // rows
  int32_t bytesPerPixel = 0;      // 4 once open
  int32_t format = 0;             // a bitmap context's alpha info 1 to 6, or 8 for a row table
  uint8_t* rowPointer = nullptr;  // first pixel of the cursor's row
  REALpictureDescription description{};  // as the host's lock filled it
  uint8_t* buffer = nullptr;             // pixels without a picture; no open fills it
  uint8_t* basePointer = nullptr;        // first pixel of row 0
  int32_t cursorX = 0;
  int32_t cursorY = 0;
  REALpicture picture = nullptr;   // the picture held, with one reference
  void* lockedPixels = nullptr;    // a QuickDraw pixel handle; no open sets it
  uint8_t** rowTable = nullptr;    // the rows, in format 8 only
  bool hasAlpha = false;           // the picture's "HasAlphaChannel"
  bool alphaContext = false;       // opened through a premultiplied bitmap context
  bool rasterizeIfNeeded = false;  // as given to the last open
  bool modifies = false;           // as given to the last open
  bool descriptionLocked = false;  // to be unlocked at release

 private:
  enum class Rasterizing { allowed, done };

  bool Open(REALpicture pic, Rasterizing rasterizing);
  bool OpenBitmapContext(REALpicture pic);
  bool OpenRowTable(REALpicture pic);
  bool OpenRasterized(REALpicture pic, bool* opened);
  bool Hold(REALpicture pic);
  void Release();
};

// A picture that is only read.
class PictureReader : public PictureEditor {};

// A picture that is written.
class PictureWriter : public PictureEditor {
 public:
  // Makes a host picture of `width` by `height` pixels, with an alpha channel if `alpha`, and opens
  // this writer on it; RenderPictureWriter hands it over, destruction drops it. False, without
  // further report, when the size is out of range (1 to 32767; with alpha at least 1), when an
  // alpha channel is asked of a host older than 2011.04, or when the host fails. What a fresh
  // picture contains is the host's choice.
  bool NewPictureWriter(int32_t newWidth, int32_t newHeight, bool alpha);
};

// The largest width and height of a picture without an alpha channel.
inline constexpr int32_t kMaxPictureSize = 32767;
