// Where the platform's functions aren't linked, the resolver serves them under their own names.
#ifndef __APPLE__

#include "plugin/binding/platform.h"
#include "plugin/binding/runtime.h"

bool HasBitmapContextFunctions() {
  constexpr const char* kNames[] = {
      "CGBitmapContextGetData",   "CGBitmapContextGetBitsPerPixel", "CGBitmapContextGetWidth",
      "CGBitmapContextGetHeight", "CGBitmapContextGetBytesPerRow",  "CGBitmapContextGetAlphaInfo",
  };
  static bool allFound;
  if (allFound) return true;
  for (const char* name : kNames) {
    if (gResolver(name) == nullptr) return false;
  }
  allFound = true;
  return true;
}

void* CGBitmapContextGetData(void* context) {
  static void* (*pGetData)(void*);
  return Bind(pGetData, "CGBitmapContextGetData") ? pGetData(context) : nullptr;
}

size_t CGBitmapContextGetBitsPerPixel(void* context) {
  static size_t (*pGetBitsPerPixel)(void*);
  return Bind(pGetBitsPerPixel, "CGBitmapContextGetBitsPerPixel") ? pGetBitsPerPixel(context) : 0;
}

size_t CGBitmapContextGetWidth(void* context) {
  static size_t (*pGetWidth)(void*);
  return Bind(pGetWidth, "CGBitmapContextGetWidth") ? pGetWidth(context) : 0;
}

size_t CGBitmapContextGetHeight(void* context) {
  static size_t (*pGetHeight)(void*);
  return Bind(pGetHeight, "CGBitmapContextGetHeight") ? pGetHeight(context) : 0;
}

size_t CGBitmapContextGetBytesPerRow(void* context) {
  static size_t (*pGetBytesPerRow)(void*);
  return Bind(pGetBytesPerRow, "CGBitmapContextGetBytesPerRow") ? pGetBytesPerRow(context) : 0;
}

uint32_t CGBitmapContextGetAlphaInfo(void* context) {
  static uint32_t (*pGetAlphaInfo)(void*);
  return Bind(pGetAlphaInfo, "CGBitmapContextGetAlphaInfo") ? pGetAlphaInfo(context) : 0;
}

int16_t FSFindFolder(int16_t domain, uint32_t type, uint8_t create, void* ref) {
  constexpr int16_t kFolderNotFound = -43;
  static int16_t (*pFindFolder)(int16_t, uint32_t, uint8_t, void*);
  return Bind(pFindFolder, "FSFindFolder") ? pFindFolder(domain, type, create, ref)
                                           : kFolderNotFound;
}

void* CFURLCreateFromFSRef(void* allocator, const void* ref) {
  static void* (*pCreateFromFSRef)(void*, const void*);
  return Bind(pCreateFromFSRef, "CFURLCreateFromFSRef") ? pCreateFromFSRef(allocator, ref)
                                                        : nullptr;
}

void* CFURLCreateCopyAppendingPathComponent(void* allocator, void* url, PlatformString name,
                                            uint8_t isDirectory) {
  static void* (*pCreateCopy)(void*, void*, PlatformString, uint8_t);
  return Bind(pCreateCopy, "CFURLCreateCopyAppendingPathComponent")
             ? pCreateCopy(allocator, url, name, isDirectory)
             : nullptr;
}

void* CFBundleCreate(void* allocator, void* url) {
  static void* (*pBundleCreate)(void*, void*);
  return Bind(pBundleCreate, "CFBundleCreate") ? pBundleCreate(allocator, url) : nullptr;
}

uint8_t CFBundleLoadExecutable(void* bundle) {
  static uint8_t (*pLoadExecutable)(void*);
  return Bind(pLoadExecutable, "CFBundleLoadExecutable") ? pLoadExecutable(bundle) : uint8_t{0};
}

void* CFBundleGetFunctionPointerForName(void* bundle, PlatformString name) {
  static void* (*pGetFunctionPointer)(void*, PlatformString);
  return Bind(pGetFunctionPointer, "CFBundleGetFunctionPointerForName")
             ? pGetFunctionPointer(bundle, name)
             : nullptr;
}

void CFRelease(void* object) {
  static void (*pRelease)(void*);
  if (Bind(pRelease, "CFRelease")) pRelease(object);
}

#endif
