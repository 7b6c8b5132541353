// A picture's inside, and the making of pictures.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "host/picture.h"
#include "host/runtime/guarded_memory.h"
#include "host/runtime/host_state.h"
#include "host/runtime/pen.h"

namespace host::runtime {

// What a description's pictureData points at for a bitmap context.
struct BitmapContext {
  Picture* picture = nullptr;
  uint8_t* firstRow = nullptr;
};

// A copy of a picture's pixels, as LockManner::kCopied hands it out.
struct LockedCopy {
  std::unique_ptr<GuardedMemory> memory;
  std::vector<uint8_t*> rows;
  REALrowTablePicture rowTable{};
  BitmapContext context;
};

// Of each row what lines in one colour covered since anything else could have changed the pixels: a
// curve drawn with a pen as large as the picture costs a picture, not one for each of its lines.
struct CoveredByLines {
  std::vector<PenSpan> rows;
  uint32_t colour = 0;
  uint64_t version = 0;
};

enum class CachedRendering { kNone, kFresh, kKept };

struct PictureState {
  int32_t width = 0;
  int32_t height = 0;
  PictureLayout layout{.storage = Storage::kEmpty};
  VectorPaint paint;

  std::unique_ptr<GuardedMemory> memory;  // null also where the pixels are somebody else's
  std::shared_ptr<void> foreignOwner;
  size_t rowBytes = 0;
  uint8_t* firstRow = nullptr;  // row 0; null: there are no pixels
  ptrdiff_t stride = 0;         // from row y to row y + 1
  std::vector<uint8_t*> rows;   // where a row table may be given
  REALrowTablePicture rowTable{};
  BitmapContext context;
  GraphicsWorld world;

  Ref<Picture> mask;
  std::shared_ptr<const void> attachment;

  CachedRendering cached = CachedRendering::kNone;
  bool pixelsShared = false;  // nothing is cached: somebody whom the host doesn't see may write
  uint32_t freshColour = 0;
  std::vector<uint8_t> rendering;  // for kKept

  int64_t descriptionLocks = 0;
  std::vector<std::unique_ptr<LockedCopy>> lockedCopies;  // the last lock's is the last
  int64_t pixelLocks = 0;
  std::function<void(REALpictureDescription&)> descriptionHook;

  uint64_t version = 1;  // another one after anything that could change the pixels
  CoveredByLines coveredByLines;

  bool HasMemory() const { return firstRow != nullptr; }
  uint8_t* Row(int32_t y) const { return firstRow + y * stride; }
  void DiscardRendering() {
    ++version;
    cached = CachedRendering::kNone;
    rendering = {};
  }
};

// Why a layout can't be; empty when it can.
std::string WhyNoLayout(const PictureLayout& layout);

// Why a picture of this size and layout can't be; empty when it can.
std::string WhyNoPicture(const Settings& settings, int64_t width, int64_t height,
                         const PictureLayout& layout);

// The layout of a fresh picture in this application, without or with an alpha channel.
PictureLayout FreshLayout(const Settings& settings, bool alpha);

// Pictures as their handles' first reference. Null when the size or the layout can't be, or when
// there isn't enough memory.
Picture* MakePicture(HostState& state, int32_t width, int32_t height, const PictureLayout& layout);
Picture* MakeEmptyPicture(HostState& state);

// Host::NewPictureOver, which has the rules.
Picture* MakePictureOver(HostState& state, const ForeignPixels& pixels,
                         const PictureLayout& layout);
// Why there can't be such a picture; empty when there can.
std::string WhyNoPictureOver(const Settings& settings, const ForeignPixels& pixels,
                             const PictureLayout& layout);

// Gives an empty picture its pixels, in the fresh colour. False as MakePicture's null.
bool GivePixels(HostState& state, Picture& picture, int32_t width, int32_t height,
                const PictureLayout& layout);

}  // namespace host::runtime
