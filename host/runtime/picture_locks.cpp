// Locks of picture descriptions: what they give, and what a host does with several of one picture.
#include <algorithm>

#include "host/error.h"
#include "host/runtime/functions.h"
#include "host/runtime/guarded_call.h"
#include "host/runtime/picture_state.h"

namespace host::runtime {
namespace {

constexpr uint32_t kNoWish = 0;
constexpr double kRefusedLocksDontCount = 2012.0;

// What a lock gives; nothing when it is refused.
std::optional<REALpictureType> TypeGiven(const PictureLayout& layout, uint32_t wanted) {
  const auto asked = [&](REALpictureType type) {
    return wanted == kNoWish || wanted == static_cast<uint32_t>(type);
  };
  const bool bitmap = layout.storage == Storage::kBitmapContext;
  const bool table = layout.storage == Storage::kRowTable;
  if (layout.locking == Locking::kRefused) return std::nullopt;
  if (layout.storage == Storage::kGraphicsWorld) {
    return asked(kPictureGraphicsWorld) ? std::optional(kPictureGraphicsWorld) : std::nullopt;
  }
  if (bitmap && layout.locking != Locking::kRowTable && asked(kPictureBitmapContext)) {
    return kPictureBitmapContext;
  }
  if ((table || (bitmap && layout.locking != Locking::kNative)) && asked(kPictureRowTable)) {
    return kPictureRowTable;
  }
  return std::nullopt;
}

bool RefusesSecondLock(LockManner manner) {
  return manner == LockManner::kSingle || manner == LockManner::kUncounted;
}

bool CountsRefusedLocks(const Settings& settings) {
  return settings.version < kRefusedLocksDontCount && settings.lockManner != LockManner::kUncounted;
}

// The same rows as the picture's own, `distance` bytes away.
REALrowTablePicture TableOf(const PictureState& picture, ptrdiff_t distance,
                            std::vector<uint8_t*>& rows) {
  rows = picture.rows;
  for (uint8_t*& row : rows) row += distance;
  return {0, rows.data(), rows.data(), picture.width, picture.height};
}

// Null without memory for it.
LockedCopy* AddCopy(PictureState& picture) {
  const GuardedMemory& own = *picture.memory;
  auto copy = std::make_unique<LockedCopy>();
  copy->memory = GuardedMemory::Take(own.Size(), static_cast<size_t>(picture.layout.startOffset));
  if (copy->memory == nullptr) return nullptr;
  std::copy_n(own.First(), own.Size(), copy->memory->First());
  const ptrdiff_t distance = copy->memory->First() - own.First();
  copy->context = {picture.context.picture, picture.firstRow + distance};
  copy->rowTable = TableOf(picture, distance, copy->rows);
  picture.lockedCopies.push_back(std::move(copy));
  return picture.lockedCopies.back().get();
}

void WriteBackLastCopy(Picture& picture) {
  PictureState& inside = picture.State();
  const std::unique_ptr<LockedCopy> copy = std::move(inside.lockedCopies.back());
  inside.lockedCopies.pop_back();
  if (!copy->memory->GuardsIntact()) {
    Complain(picture.Describe() + "'s locked copy was written beside its pixels");
  }
  std::copy_n(copy->memory->First(), copy->memory->Size(), inside.memory->First());
  ++inside.version;
}

// What the description points at; null without memory for a copy.
void* DataOf(PictureState& picture, REALpictureType type, LockManner manner) {
  if (type == kPictureGraphicsWorld) return &picture.world;
  if (manner == LockManner::kCopied && picture.memory != nullptr) {
    LockedCopy* copy = AddCopy(picture);
    if (copy == nullptr) return nullptr;
    if (type == kPictureBitmapContext) return &copy->context;
    return &copy->rowTable;
  }
  if (type == kPictureBitmapContext) return &picture.context;
  // Filled anew: a test may have spoilt what the last lock gave.
  picture.rowTable = TableOf(picture, 0, picture.rows);
  return &picture.rowTable;
}

bool Lock(HostState& state, Picture* picture, REALpictureDescription* out, uint32_t wanted) {
  if (picture == nullptr || out == nullptr) return false;
  const Settings& settings = state.host.settings;
  PictureState& inside = picture->State();
  auto type = inside.HasMemory() ? TypeGiven(inside.layout, wanted) : std::nullopt;
  if (RefusesSecondLock(settings.lockManner) && inside.descriptionLocks > 0) type = std::nullopt;
  void* data = type ? DataOf(inside, *type, settings.lockManner) : nullptr;
  if (data == nullptr) {
    if (CountsRefusedLocks(settings)) ++inside.descriptionLocks;
    return false;
  }
  ++inside.descriptionLocks;
  ++inside.version;
  *out = {*type,
          data,
          inside.width,
          inside.height,
          inside.layout.bitsPerPixel,
          inside.layout.hasAlphaChannel.value_or(false)};
  if (inside.descriptionHook) inside.descriptionHook(*out);
  return true;
}

}  // namespace

bool LockDescription(HostState& state, REALpicture picture, REALpictureDescription* out) {
  return Lock(state, LookUp<Picture>(state, picture, "lockPictureDescription"), out, kNoWish);
}

bool LockDescriptionAs(HostState& state, REALpicture picture, REALpictureDescription* out,
                       uint32_t wantedType) {
  return Lock(state, LookUp<Picture>(state, picture, "REALLockPictureDescription"), out,
              wantedType);
}

void UnlockDescription(HostState& state, REALpicture handle) {
  Picture* picture = LookUp<Picture>(state, handle, "unlockPictureDescription");
  if (picture == nullptr) return;
  PictureState& inside = picture->State();
  if (inside.descriptionLocks == 0) {
    // The plug-in undoes each lock that an old host refuses.
    if (state.host.settings.lockManner == LockManner::kUncounted) return;
    throw Error(picture->Describe() + "'s description isn't locked");
  }
  --inside.descriptionLocks;
  if (!inside.lockedCopies.empty()) WriteBackLastCopy(*picture);
}

}  // namespace host::runtime
