#include "host/quickdraw.h"

#include <algorithm>
#include <cstring>

#include "host/error.h"
#include "host/runtime/functions.h"
#include "host/runtime/guarded_call.h"
#include "host/runtime/picture_state.h"
#include "host/runtime/pixel_codec.h"
#include "host/runtime/platform_objects.h"

namespace host::runtime {
namespace {

// The world at an address, if it is the screen's (nil stands for it, too) or a live picture's.
GraphicsWorld* FindWorld(HostState& state, void* address) {
  if (address == nullptr || address == &state.screen) return &state.screen;
  for (const auto& [serial, object] : state.objects.Live()) {
    if (object->GetKind() != Kind::kPicture) continue;
    PictureState& picture = static_cast<Picture*>(object)->State();
    const bool backed = picture.layout.storage == Storage::kGraphicsWorld;
    if (backed && &picture.world == address) return &picture.world;
  }
  return nullptr;
}

// Columns and rows left <= x < right, top <= y < bottom.
struct Rectangle {
  int32_t left, top, right, bottom;
  bool Empty() const { return left >= right || top >= bottom; }
};

void EraseRow(PictureState& picture, int32_t y, int32_t left, int32_t right) {
  if (left >= right) return;
  EncodeRun(picture.Row(y) + static_cast<size_t>(left) * 4, picture.layout, right - left,
            {255, 255, 255, 255});
}

// Moves what is in the rectangle and erases what nothing was moved to.
void Scroll(PictureState& picture, const Rectangle& area, int32_t dh, int32_t dv) {
  const Rectangle moved = {std::max(area.left, area.left + dh), std::max(area.top, area.top + dv),
                           std::min(area.right, area.right + dh),
                           std::min(area.bottom, area.bottom + dv)};
  const int32_t height = area.bottom - area.top;
  for (int32_t i = 0; i < height; ++i) {
    // Downwards from the bottom, so that no row is overwritten before it has moved.
    const int32_t y = dv > 0 ? area.bottom - 1 - i : area.top + i;
    if (moved.Empty() || y < moved.top || y >= moved.bottom) {
      EraseRow(picture, y, area.left, area.right);
      continue;
    }
    std::memmove(picture.Row(y) + static_cast<size_t>(moved.left) * 4,
                 picture.Row(y - dv) + static_cast<size_t>(moved.left - dh) * 4,
                 static_cast<size_t>(moved.right - moved.left) * 4);
    EraseRow(picture, y, area.left, moved.left);
    EraseRow(picture, y, moved.right, area.right);
  }
}

}  // namespace

void UnlockPixels(HostState& state, void* pixels) {
  for (const auto& [serial, object] : state.objects.Live()) {
    if (object->GetKind() != Kind::kPicture) continue;
    PictureState& picture = static_cast<Picture*>(object)->State();
    if (&picture.pixelLocks != pixels) continue;
    if (picture.pixelLocks == 0) throw Error(object->Describe() + "'s pixels aren't locked");
    --picture.pixelLocks;
    return;
  }
  throw Error("the pixels aren't those of a live picture");
}

void ScrollRect(HostState& state, const int16_t* rectangle, int16_t dh, int16_t dv, void* region) {
  PlatformObject* update = nullptr;
  if (region != nullptr) {
    update = reinterpret_cast<PlatformObject*>(Look(state, region, Kind::kPlatform, "ScrollRect"));
    if (update == nullptr || update->kind != PlatformKind::kRegion) {
      throw Error("the update region isn't a region");
    }
  }
  Picture* target = state.currentWorld->picture;
  if (target == nullptr) return;  // the screen's world has no pixels
  PictureState& picture = target->State();
  const Rectangle area = {std::max<int32_t>(rectangle[1], 0), std::max<int32_t>(rectangle[0], 0),
                          std::min<int32_t>(rectangle[3], picture.width),
                          std::min<int32_t>(rectangle[2], picture.height)};
  if (area.Empty()) return;
  if (dh != 0 || dv != 0) {
    if (update != nullptr) std::copy_n(rectangle, 4, update->bounds);
    Scroll(picture, area, dh, dv);
  }
}

void* NewRegion(HostState& state) {
  return state.objects.Add(new PlatformObject(PlatformKind::kRegion, {}));
}

void DisposeRegion(HostState& state, void* region) {
  if (region == nullptr) return;
  Object* found = Look(state, region, Kind::kPlatform, "DisposeRgn");
  if (found == nullptr) return;
  if (static_cast<PlatformObject*>(found)->kind != PlatformKind::kRegion) {
    throw Error(found->Describe() + " isn't a region");
  }
  state.objects.Release(found);
}

void GetGraphicsWorld(HostState& state, void** world, void** device) {
  if (world != nullptr) *world = state.currentWorld;
  if (device != nullptr) *device = state.currentDevice;
}

void SetGraphicsWorld(HostState& state, void* world, void* device) {
  GraphicsWorld* found = FindWorld(state, world);
  if (found == nullptr) throw Error("the graphics world isn't the screen's or a live picture's");
  state.currentWorld = found;
  state.currentDevice = device;
}

}  // namespace host::runtime

namespace host {

void* LockPixels(Picture& picture) {
  if (picture.Layout().storage != Storage::kGraphicsWorld) return nullptr;
  runtime::PictureState& state = picture.State();
  ++state.pixelLocks;
  return &state.pixelLocks;
}

const Picture* CurrentGraphicsWorld() {
  const runtime::HostState* state = runtime::CurrentState();
  return state == nullptr ? nullptr : state->currentWorld->picture;
}

bool CurrentDeviceIsScreen() {
  const runtime::HostState* state = runtime::CurrentState();
  return state != nullptr && state->currentDevice == &state->screenDevice;
}

}  // namespace host
