#include "host/picture.h"

#include <algorithm>

#include "host/error.h"
#include "host/runtime/picture_state.h"
#include "host/runtime/pixel_codec.h"

namespace host {
namespace {

using runtime::PictureState;

const char* StorageName(Storage storage) {
  switch (storage) {
    case Storage::kEmpty:
      return "empty";
    case Storage::kBitmapContext:
      return "bitmap context";
    case Storage::kRowTable:
      return "row table";
    case Storage::kVector:
      return "vector";
    case Storage::kGraphicsWorld:
      return "graphics world";
  }
  return "";
}

void RequirePixels(const Picture& picture) {
  if (!picture.State().HasMemory()) throw Error(picture.Describe() + " has no pixels");
  if (!runtime::HasPixels(picture.Layout())) {
    throw Error("pixels of " + std::to_string(picture.Layout().bitsPerPixel) +
                " bits can only be reached as bytes");
  }
}

uint8_t* PixelAt(const Picture& picture, int32_t x, int32_t y) {
  RequirePixels(picture);
  if (x < 0 || y < 0 || x >= picture.Width() || y >= picture.Height()) {
    throw Error("(" + std::to_string(x) + ", " + std::to_string(y) + ") is outside " +
                picture.Describe());
  }
  return picture.State().Row(y) + static_cast<size_t>(x) * runtime::BytesPerPixel(picture.Layout());
}

size_t RgbaSize(const PictureState& state) {
  return static_cast<size_t>(state.width) * static_cast<size_t>(state.height) * 4;
}

void Put(uint8_t* rgba, Rgba value) {
  rgba[0] = value.red;
  rgba[1] = value.green;
  rgba[2] = value.blue;
  rgba[3] = value.alpha;
}

std::vector<uint8_t> PaintVector(const PictureState& state) {
  std::vector<uint8_t> rgba(RgbaSize(state));
  size_t at = 0;
  for (int32_t y = 0; y < state.height; ++y) {
    for (int32_t x = 0; x < state.width; ++x, at += 4) {
      if (const auto colour = state.paint(x, y)) Put(&rgba[at], runtime::FromRgb(*colour));
    }
  }
  return rgba;
}

}  // namespace

Picture::Picture(std::unique_ptr<PictureState> pictureState)
    : Object(Kind::kPicture), state(std::move(pictureState)) {}
Picture::~Picture() = default;

int32_t Picture::Width() const { return state->width; }
int32_t Picture::Height() const { return state->height; }
const PictureLayout& Picture::Layout() const { return state->layout; }
size_t Picture::RowBytes() const { return state->rowBytes; }
int64_t Picture::DescriptionLocks() const { return state->descriptionLocks; }
Ref<Picture> Picture::Mask() const { return state->mask; }
void Picture::SetMask(Ref<Picture> mask) { state->mask = std::move(mask); }

const std::shared_ptr<const void>& Picture::Attachment() const { return state->attachment; }

void Picture::Attach(std::shared_ptr<const void> attachment) {
  state->attachment = std::move(attachment);
}

void Picture::SetLocking(Locking locking) {
  PictureLayout changed = state->layout;
  changed.locking = locking;
  const std::string fault = runtime::WhyNoLayout(changed);
  if (!fault.empty()) throw Error(fault);
  state->layout = changed;
}

void Picture::SetDescriptionHook(std::function<void(REALpictureDescription&)> hook) {
  state->descriptionHook = std::move(hook);
}

std::string Picture::Describe() const {
  return "Picture #" + std::to_string(Serial()) + " (" + std::to_string(Width()) + " x " +
         std::to_string(Height()) + ", " + StorageName(state->layout.storage) + ")";
}

void Picture::BeforeEnd() {
  if (!GuardsIntact()) runtime::Complain(Describe() + " was written beside its pixels");
  runtime::HostState* hostState = runtime::CurrentState();
  if (hostState->currentWorld == &state->world) {
    runtime::Complain(Describe() + " ended while its graphics world was current");
    hostState->currentWorld = &hostState->screen;
  }
}

void Picture::Dispose() { state = std::make_unique<PictureState>(); }

const uint8_t* Picture::Row(int32_t y) const {
  if (!state->HasMemory()) return nullptr;
  if (y < 0 || y >= state->height) {
    throw Error("row " + std::to_string(y) + " is outside " + Describe());
  }
  return state->Row(y);
}

uint8_t* Picture::Row(int32_t y) {
  ++state->version;
  return const_cast<uint8_t*>(std::as_const(*this).Row(y));
}

std::span<uint8_t> Picture::Padding(int32_t y) {
  uint8_t* row = Row(y);
  if (row == nullptr) return {};
  const size_t padding = static_cast<size_t>(state->layout.rowPadding);
  return {row + state->rowBytes - padding, padding};
}

bool Picture::GuardsIntact() const {
  return state->memory == nullptr || state->memory->GuardsIntact();
}

uint32_t Picture::Word(int32_t x, int32_t y) const {
  const uint8_t* pixel = PixelAt(*this, x, y);
  if (state->layout.bitsPerPixel != 32) throw Error(Describe() + " has no 32-bit pixels");
  return pixel[0] | uint32_t{pixel[1]} << 8 | uint32_t{pixel[2]} << 16 | uint32_t{pixel[3]} << 24;
}

void Picture::SetWord(int32_t x, int32_t y, uint32_t word) {
  uint8_t* pixel = PixelAt(*this, x, y);
  if (state->layout.bitsPerPixel != 32) throw Error(Describe() + " has no 32-bit pixels");
  for (int i = 0; i < 4; ++i) pixel[i] = static_cast<uint8_t>(word >> (8 * i));
  Touched();
}

Rgba Picture::Pixel(int32_t x, int32_t y) const {
  return runtime::Decode(PixelAt(*this, x, y), state->layout);
}

void Picture::SetPixel(int32_t x, int32_t y, Rgba value) {
  runtime::Encode(PixelAt(*this, x, y), state->layout, value);
  Touched();
}

void Picture::Fill(Rgba value) {
  RequirePixels(*this);
  for (int32_t y = 0; y < state->height; ++y) {
    runtime::EncodeRun(state->Row(y), state->layout, state->width, value);
  }
  Touched();
}

std::vector<uint8_t> Picture::ToRgba() const {
  if (state->layout.storage == Storage::kVector) return PaintVector(*state);
  RequirePixels(*this);
  std::vector<uint8_t> rgba(RgbaSize(*state));
  const size_t rowSize = static_cast<size_t>(state->width) * 4;
  for (int32_t y = 0; y < state->height; ++y) {
    runtime::DecodeStraight(state->Row(y), state->layout, state->width,
                            rgba.data() + static_cast<size_t>(y) * rowSize);
  }
  return rgba;
}

void Picture::FromRgba(std::span<const uint8_t> bytes) {
  RequirePixels(*this);
  if (bytes.size() != RgbaSize(*state)) {
    throw Error(Describe() + " takes " + std::to_string(RgbaSize(*state)) + " bytes, not " +
                std::to_string(bytes.size()));
  }
  const size_t rowSize = static_cast<size_t>(state->width) * 4;
  for (int32_t y = 0; y < state->height; ++y) {
    runtime::EncodeStraight(state->Row(y), state->layout, state->width,
                            bytes.data() + static_cast<size_t>(y) * rowSize);
  }
  Touched();
}

std::vector<uint8_t> Picture::Rendering() {
  const bool cacheable = state->layout.storage != Storage::kGraphicsWorld &&
                         state->layout.storage != Storage::kVector && !state->pixelsShared;
  if (!cacheable) return ToRgba();
  if (state->cached == runtime::CachedRendering::kKept) return state->rendering;
  if (state->cached == runtime::CachedRendering::kFresh) {
    state->rendering.resize(RgbaSize(*state));
    const Rgba fresh = runtime::FromRgb(state->freshColour);
    for (size_t at = 0; at < state->rendering.size(); at += 4) Put(&state->rendering[at], fresh);
  } else {
    state->rendering = ToRgba();
  }
  state->cached = runtime::CachedRendering::kKept;
  return state->rendering;
}

void Picture::SharePixels() {
  state->pixelsShared = true;
  Touched();
}

bool Picture::RenderingIsCurrent() const {
  switch (state->cached) {
    case runtime::CachedRendering::kNone:
      return true;
    case runtime::CachedRendering::kKept:
      return state->rendering == ToRgba();
    case runtime::CachedRendering::kFresh: {
      std::vector<uint8_t> fresh(RgbaSize(*state));
      const Rgba value = runtime::FromRgb(state->freshColour);
      for (size_t at = 0; at < fresh.size(); at += 4) Put(&fresh[at], value);
      return fresh == ToRgba();
    }
  }
  return true;
}

void Picture::Touched() { state->DiscardRendering(); }

}  // namespace host
