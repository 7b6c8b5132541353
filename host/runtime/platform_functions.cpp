#include <algorithm>
#include <cstring>

#include "host/error.h"
#include "host/runtime/entries.h"
#include "host/runtime/functions.h"
#include "host/runtime/guarded_call.h"
#include "host/runtime/picture_state.h"
#include "host/runtime/platform_objects.h"

namespace host::runtime {
namespace {

constexpr int16_t kSystemDomain = -32767;
constexpr uint32_t kFrameworksFolder = 0x6672616D;  // 'fram'
constexpr size_t kFolderSize = 80;
constexpr char kFrameworks[] = "/System/Library/Frameworks";
constexpr char kApplicationServices[] = "/System/Library/Frameworks/ApplicationServices.framework";

// Whether the context is the picture's own or that of a copy of its pixels.
bool IsContextOf(const PictureState& picture, const void* context) {
  const auto isCopys = [&](const auto& copy) { return &copy->context == context; };
  return &picture.context == context ||
         std::any_of(picture.lockedCopies.begin(), picture.lockedCopies.end(), isCopys);
}

// The picture of a bitmap context that is locked; a context holds only that long.
const PictureState& LockedPicture(HostState& state, const void* context) {
  for (const auto& [serial, object] : state.objects.Live()) {
    if (object->GetKind() != Kind::kPicture) continue;
    const PictureState& picture = static_cast<Picture*>(object)->State();
    if (!IsContextOf(picture, context)) continue;
    if (picture.descriptionLocks == 0) throw Error("the picture's description isn't locked");
    return picture;
  }
  throw Error("the context isn't that of a live picture");
}

PlatformObject* LookUpPlatform(HostState& state, void* object, PlatformKind kind,
                               const char* entry) {
  auto* found = reinterpret_cast<PlatformObject*>(Look(state, object, Kind::kPlatform, entry));
  if (found == nullptr || found->kind == kind) return found;
  Complain(std::string(entry) + ": " + found->Describe() + " isn't of the kind that it takes");
  return nullptr;
}

const char* CString(const void* text) { return static_cast<const char*>(text); }

}  // namespace

std::string PlatformObject::Describe() const {
  const std::string number = " #" + std::to_string(Serial());
  switch (kind) {
    case PlatformKind::kUrl:
      return "CFURL" + number + " (" + path + ")";
    case PlatformKind::kBundle:
      return "CFBundle" + number + " (" + path + ")";
    case PlatformKind::kRegion:
      return "Region" + number;
  }
  return {};
}

void* ContextData(HostState& state, void* context) {
  LockedPicture(state, context);
  return static_cast<BitmapContext*>(context)->firstRow;
}

size_t ContextBitsPerPixel(HostState& state, void* context) {
  return static_cast<size_t>(LockedPicture(state, context).layout.bitsPerPixel);
}

size_t ContextWidth(HostState& state, void* context) {
  return static_cast<size_t>(LockedPicture(state, context).width);
}

size_t ContextHeight(HostState& state, void* context) {
  return static_cast<size_t>(LockedPicture(state, context).height);
}

size_t ContextBytesPerRow(HostState& state, void* context) {
  return LockedPicture(state, context).rowBytes;
}

uint32_t ContextAlphaInfo(HostState& state, void* context) {
  return LockedPicture(state, context).layout.alphaInfo;
}

int16_t FindFolder(HostState&, int16_t domain, uint32_t type, uint8_t, void* ref) {
  if (domain != kSystemDomain || type != kFrameworksFolder || ref == nullptr) {
    return kFolderNotFound;
  }
  char folder[kFolderSize] = {};
  std::memcpy(folder, kFrameworks, sizeof kFrameworks);
  std::memcpy(ref, folder, kFolderSize);
  return 0;
}

void* UrlFromFolder(HostState& state, void*, const void* ref) {
  if (ref == nullptr || std::memcmp(ref, kFrameworks, sizeof kFrameworks) != 0) {
    throw Error("the folder isn't one that FSFindFolder found");
  }
  return state.objects.Add(new PlatformObject(PlatformKind::kUrl, kFrameworks));
}

void* UrlAppending(HostState& state, void*, void* url, const void* name, uint8_t) {
  const PlatformObject* base =
      LookUpPlatform(state, url, PlatformKind::kUrl, "CFURLCreateCopyAppendingPathComponent");
  if (base == nullptr || name == nullptr) return nullptr;
  const std::string path = base->path + "/" + CString(name);
  return state.objects.Add(new PlatformObject(PlatformKind::kUrl, path));
}

void* BundleCreate(HostState& state, void*, void* url) {
  const PlatformObject* at = LookUpPlatform(state, url, PlatformKind::kUrl, "CFBundleCreate");
  if (at == nullptr || at->path != kApplicationServices) return nullptr;
  return state.objects.Add(new PlatformObject(PlatformKind::kBundle, at->path));
}

uint8_t BundleLoad(HostState& state, void* bundle) {
  PlatformObject* found =
      LookUpPlatform(state, bundle, PlatformKind::kBundle, "CFBundleLoadExecutable");
  if (found == nullptr) return 0;
  found->loaded = true;
  return 1;
}

void* BundleFunction(HostState& state, void* bundle, const void* name) {
  const PlatformObject* found =
      LookUpPlatform(state, bundle, PlatformKind::kBundle, "CFBundleGetFunctionPointerForName");
  if (found == nullptr || name == nullptr) return nullptr;
  if (!found->loaded) throw Error("the bundle's code isn't loaded");
  return FindEntry(Origin::kQuickDraw, CString(name));
}

void PlatformRelease(HostState& state, void* object) {
  Object* found = Look(state, object, Kind::kPlatform, "CFRelease");
  if (found == nullptr) return;
  if (static_cast<PlatformObject*>(found)->kind == PlatformKind::kRegion) {
    throw Error("a region isn't a Core Foundation object");
  }
  state.objects.Release(found);
}

}  // namespace host::runtime
