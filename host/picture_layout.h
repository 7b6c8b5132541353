// How a picture's pixels lie in memory and what its description locks give.
#pragma once

#include <cstdint>
#include <optional>

namespace host {

enum class Storage {
  kEmpty,          // an instance whose constructor hasn't run: width and height 0
  kBitmapContext,  // Core Graphics bitmap, as desktop applications have it
  kRowTable,       // rows through a table: B, G, R, 0, as console and web applications have it
  kVector,         // no pixels; refuses every lock and can only be drawn
  kGraphicsWorld,  // QuickDraw: x, R, G, B; given by the two-argument lock alone
};

// Core Graphics' names for where a 32-bit pixel keeps its alpha.
enum AlphaInfo : uint32_t {
  kAlphaNone = 0,                // R, G, B, unused
  kAlphaPremultipliedLast = 1,   // R, G, B, A
  kAlphaPremultipliedFirst = 2,  // A, R, G, B
  kAlphaLast = 3,
  kAlphaFirst = 4,
  kAlphaNoneSkipLast = 5,
  kAlphaNoneSkipFirst = 6,
  kAlphaOnly = 7,  // A, unused; the colour reads as black
};

// Which description locks a picture grants.
enum class Locking {
  kNative,    // its own type alone: 8 for a bitmap context, 10 for a row table
  kRefused,   // none
  kRowTable,  // 10 alone; the rows of a bitmap context through a table
  kBoth,      // 8 and 10; a row table can't have it
};

struct PictureLayout {
  Storage storage = Storage::kBitmapContext;
  uint32_t alphaInfo = kAlphaNoneSkipFirst;  // bitmap contexts, 0 to 7
  int32_t bitsPerPixel = 32;                 // 1 to 128; all but bitmap contexts have 32
  int32_t rowPadding = 0;                    // bytes after the pixels of each row, 0 to 4096
  int32_t startOffset = 0;                   // bytes from a 64-byte boundary to row 0, 0 to 63
  // Row tables: rows lie one after the other. Otherwise they stand in memory from the last to the
  // first, so that only the table finds them.
  bool contiguousRows = false;
  // The property "HasAlphaChannel"; nothing: the picture doesn't have that property.
  std::optional<bool> hasAlphaChannel = false;
  Locking locking = Locking::kNative;

  static PictureLayout BitmapContext(uint32_t alphaInfo, int32_t rowPadding = 0,
                                     int32_t bitsPerPixel = 32);
  // Premultiplied alpha first unless said otherwise, with "HasAlphaChannel".
  static PictureLayout WithAlpha(uint32_t alphaInfo = kAlphaPremultipliedFirst,
                                 int32_t rowPadding = 0);
  static PictureLayout RowTable(int32_t rowPadding = 0);
  static PictureLayout GraphicsWorld(int32_t rowPadding = 0);
};

}  // namespace host
