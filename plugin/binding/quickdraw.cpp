#include "plugin/binding/platform.h"

void* LoadFrameworkBundle(PlatformString name) {
  constexpr int16_t kSystemDomain = -32767;
  constexpr uint32_t kFrameworksFolder = 0x6672616D;  // 'fram'
  alignas(4) uint8_t ref[80] = {};
  if (FSFindFolder(kSystemDomain, kFrameworksFolder, 1, ref) != 0) return nullptr;

  void* bundle = nullptr;
  if (void* folder = CFURLCreateFromFSRef(nullptr, ref)) {
    if (void* url = CFURLCreateCopyAppendingPathComponent(nullptr, folder, name, 0)) {
      bundle = CFBundleCreate(nullptr, url);
      CFRelease(url);
    }
    CFRelease(folder);
  }
  if (bundle != nullptr && CFBundleLoadExecutable(bundle) == 0) {
    CFRelease(bundle);
    bundle = nullptr;
  }
  return bundle;
}

namespace {

void* ApplicationServicesFramework;

// As Bind, for a function of the framework.
template <class Function>
bool BindQuickDraw(Function*& entry, PlatformString name) {
  if (entry == nullptr) {
    if (ApplicationServicesFramework == nullptr) {
      ApplicationServicesFramework =
          LoadFrameworkBundle(PLATFORM_STRING("ApplicationServices.framework"));
    }
    if (ApplicationServicesFramework != nullptr) {
      entry = reinterpret_cast<Function*>(
          CFBundleGetFunctionPointerForName(ApplicationServicesFramework, name));
    }
  }
  return entry != nullptr;
}

}  // namespace

void UnlockPixels(void* pixels) {
  static void (*_UnlockPixels)(void*);
  if (BindQuickDraw(_UnlockPixels, PLATFORM_STRING("UnlockPixels"))) _UnlockPixels(pixels);
}

void ScrollRect(const int16_t rectangle[4], int16_t dh, int16_t dv, void* region) {
  static void (*_ScrollRect)(const int16_t*, int16_t, int16_t, void*);
  if (BindQuickDraw(_ScrollRect, PLATFORM_STRING("ScrollRect"))) {
    _ScrollRect(rectangle, dh, dv, region);
  }
}

void* NewRgn() {
  static void* (*_NewRgn)();
  return BindQuickDraw(_NewRgn, PLATFORM_STRING("NewRgn")) ? _NewRgn() : nullptr;
}

void DisposeRgn(void* region) {
  static void (*_DisposeRgn)(void*);
  if (BindQuickDraw(_DisposeRgn, PLATFORM_STRING("DisposeRgn"))) _DisposeRgn(region);
}

void GetGWorld(void** world, void** device) {
  static void (*_GetGWorld)(void**, void**);
  if (BindQuickDraw(_GetGWorld, PLATFORM_STRING("GetGWorld"))) _GetGWorld(world, device);
}

void SetGWorld(void* world, void* device) {
  static void (*_SetGWorld)(void*, void*);
  if (BindQuickDraw(_SetGWorld, PLATFORM_STRING("SetGWorld"))) _SetGWorld(world, device);
}
