// The functions of the operating system that the plug-in uses: Core Graphics, and QuickDraw through
// Core Foundation and Carbon.
//
// On macOS they are linked. On every other system the definitions in platform_resolved.cpp ask the
// host's resolver for them under their own names, as runtime.h does for the host's functions; one
// that is missing returns 0 or null, and its step fails.
#pragma once

#include "plugin/binding/records.h"

// A name handed to Core Foundation: a constant CFString on macOS, a C string elsewhere.
using PlatformString = const void*;
#ifdef __APPLE__
#define PLATFORM_STRING(text) \
  (reinterpret_cast<PlatformString>(__builtin___CFStringMakeConstantString(text)))
#else
#define PLATFORM_STRING(text) (static_cast<PlatformString>(text))
#endif

extern "C" {
void* CGBitmapContextGetData(void* context);
size_t CGBitmapContextGetBitsPerPixel(void* context);
size_t CGBitmapContextGetWidth(void* context);
size_t CGBitmapContextGetHeight(void* context);
size_t CGBitmapContextGetBytesPerRow(void* context);
uint32_t CGBitmapContextGetAlphaInfo(void* context);

int16_t FSFindFolder(int16_t domain, uint32_t type, uint8_t create, void* ref);
void* CFURLCreateFromFSRef(void* allocator, const void* ref);
void* CFURLCreateCopyAppendingPathComponent(void* allocator, void* url, PlatformString name,
                                            uint8_t isDirectory);
void* CFBundleCreate(void* allocator, void* url);
uint8_t CFBundleLoadExecutable(void* bundle);
void* CFBundleGetFunctionPointerForName(void* bundle, PlatformString name);
void CFRelease(void* object);
}

// False where a Core Graphics function above can't be reached, and nothing it returns is to be
// believed. (On macOS they are linked, so the process wouldn't have started.)
#ifdef __APPLE__
constexpr bool HasBitmapContextFunctions() { return true; }
#else
bool HasBitmapContextFunctions();
#endif

// The bundle of a framework in the system's frameworks folder, its code loaded; null on failure.
// `name` is the framework's file name.
void* LoadFrameworkBundle(PlatformString name);

// QuickDraw, in "ApplicationServices.framework", which is loaded at first use and stays. Where the
// framework or a function can't be found, the call is skipped and null or false returned.
// Rectangles are top, left, bottom, right.
void UnlockPixels(void* pixels);
void ScrollRect(const int16_t rectangle[4], int16_t dh, int16_t dv, void* region);
void* NewRgn();
void DisposeRgn(void* region);
void GetGWorld(void** world, void** device);
void SetGWorld(void* world, void* device);
