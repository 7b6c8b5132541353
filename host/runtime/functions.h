// The host's functions, as the plug-in calls them but for the host they work on. The table in
// entries.cpp gives them their names.
#pragma once

#include "host/runtime/host_state.h"

namespace host::runtime {

// Registration.
void RegisterPluginVersion(HostState&, int32_t version);
double GetHostVersion(HostState&);
void RegisterClass(HostState&, REALclassDefinition* definition);
void RegisterClassExtension(HostState&, REALclassDefinition* definition);
void RegisterMethod(HostState&, REALmethodDefinition* method);

// Objects, classes, exceptions.
void LockObject(HostState&, REALobject object);
void UnlockObject(HostState&, REALobject object);
REALobject NewInstance(HostState&, const char* className);
void* ClassReference(HostState&, const char* className);
void* LoadObjectMethod(HostState&, REALobject object, const char* declaration);
void* LoadGlobalMethod(HostState&, const char* declaration);
void RaiseException(HostState&, REALobject exception);

// Properties.
bool GetPropertyInt(HostState&, REALobject object, const char* name, int32_t* out);
bool GetPropertyBool(HostState&, REALobject object, const char* name, uint8_t* out);
bool SetPropertyInt(HostState&, REALobject object, const char* name, int32_t value);
bool SetPropertyString(HostState&, REALobject object, const char* name, REALstring value);
bool SetPropertyUInt32(HostState&, REALobject object, const char* name, uint32_t value);

// Strings.
void LockString(HostState&, REALstring string);
void UnlockString(HostState&, REALstring string);
REALstring BuildString(HostState&, const char* bytes, int32_t length);
uint32_t GetStringEncoding(HostState&, REALstring string);
void SetStringEncoding(HostState&, REALstring string, uint32_t encoding);
REALstring ConvertString(HostState&, REALstring string, uint32_t encoding);
bool GetStringData(HostState&, REALstring string, uint32_t encoding, REALstringData* out);
void DisposeStringData(HostState&, REALstringData* data);
const char* StringGetCString(HostState&, REALstring string);
int32_t LenB(HostState&, REALstring string);

// Pictures and drawing.
bool LockDescription(HostState&, REALpicture picture, REALpictureDescription* out);
bool LockDescriptionAs(HostState&, REALpicture picture, REALpictureDescription* out,
                       uint32_t wantedType);
void UnlockDescription(HostState&, REALpicture picture);
void PictureClearCache(HostState&, REALpicture picture);
REALpicture NewPicture(HostState&, int32_t width, int32_t height, int32_t depth);
REALpicture BuildPictureFromBuffer(HostState&, int32_t width, int32_t height, int32_t pixelType,
                                   void* buffer, int32_t rowBytes);
REALgraphics PictureGraphics(HostState&, REALpicture picture);
REALpicture PictureMask(HostState&, REALpicture picture, uint8_t create);
void PictureConstructor(HostState&, REALobject picture, int32_t width, int32_t height);
void DrawLine(HostState&, REALgraphics graphics, int32_t x1, int32_t y1, int32_t x2, int32_t y2);
void DrawPicture(HostState&, REALgraphics graphics, REALpicture image, int32_t x, int32_t y,
                 int32_t w, int32_t h, int32_t sx, int32_t sy, int32_t sw, int32_t sh);

// Memory blocks. MakeMemoryBlock is the host's own way to one; null when there isn't enough memory.
MemoryBlock* MakeMemoryBlock(HostState&, size_t size);
REALmemoryBlock NewMemoryBlock(HostState&, int32_t size);
void* MemoryBlockPointer(HostState&, REALmemoryBlock block);
int32_t MemoryBlockSize(HostState&, REALmemoryBlock block);

// Core Graphics.
void* ContextData(HostState&, void* context);
size_t ContextBitsPerPixel(HostState&, void* context);
size_t ContextWidth(HostState&, void* context);
size_t ContextHeight(HostState&, void* context);
size_t ContextBytesPerRow(HostState&, void* context);
uint32_t ContextAlphaInfo(HostState&, void* context);

// Carbon and Core Foundation. CFString arguments are C strings.
inline constexpr int16_t kFolderNotFound = -43;
int16_t FindFolder(HostState&, int16_t domain, uint32_t type, uint8_t create, void* ref);
void* UrlFromFolder(HostState&, void* allocator, const void* ref);
void* UrlAppending(HostState&, void* allocator, void* url, const void* name, uint8_t isDirectory);
void* BundleCreate(HostState&, void* allocator, void* url);
uint8_t BundleLoad(HostState&, void* bundle);
void* BundleFunction(HostState&, void* bundle, const void* name);
void PlatformRelease(HostState&, void* object);

// QuickDraw.
void UnlockPixels(HostState&, void* pixels);
void ScrollRect(HostState&, const int16_t* rectangle, int16_t dh, int16_t dv, void* region);
void* NewRegion(HostState&);
void DisposeRegion(HostState&, void* region);
void GetGraphicsWorld(HostState&, void** world, void** device);
void SetGraphicsWorld(HostState&, void* world, void* device);

}  // namespace host::runtime
