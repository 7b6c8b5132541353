// The host's run-time functions, reached by name.
//
// Each wrapper asks the host's resolver for its function at first use and keeps the answer for the
// life of the process. Where the host doesn't have the function, the wrapper does nothing and
// returns 0, false or null, and asks again at the next call; the caller treats that as the failure
// of its step. A host's boolean is one byte, 0 or not 0, and arrives here as a true bool. "Returns
// +1" means that the caller owns one reference to what it gets. Every call is made on the thread on
// which the host called the plug-in; nothing here is locked.
#pragma once

#include "plugin/binding/records.h"

// The host's resolver, and what its version decides. Set once, by REALPluginMain.
extern REALresolver gResolver;
extern double rbversion;                   // 2013.03, for example; 0 when the host doesn't say
extern int32_t CurrentREALControlVersion;  // 9 to 12

// Asks the resolver for `name` unless `entry` is known already. True when it is known now.
template <class Function>
bool Bind(Function*& entry, const char* name) {
  if (entry == nullptr && gResolver != nullptr) {
    entry = reinterpret_cast<Function*>(gResolver(name));
  }
  return entry != nullptr;
}

// Registration. The host keeps the pointers.
void REALRegisterClass(REALclassDefinition* definition);
void REALRegisterClassExtension(REALclassDefinition* definition);
void REALRegisterMethod(REALmethodDefinition* method);

// References to objects and strings; a null handle is ignored. Without the host's function no
// reference is taken, and locking an object says so with false: there is then none to give back.
bool REALLockObject(REALobject object);
void REALUnlockObject(REALobject object);
void REALLockString(REALstring string);
void REALUnlockString(REALstring string);

// Every object handle is a REALobject to the host.
template <class Handle>
REALobject AsObject(Handle* handle) {
  return reinterpret_cast<REALobject>(handle);
}

// Strings. Build and convert return +1 or null; setting an encoding tags and converts nothing.
REALstring REALBuildString(const char* bytes, int32_t length);
uint32_t REALGetStringEncoding(REALstring string);
void REALSetStringEncoding(REALstring string, uint32_t encoding);
REALstring REALConvertString(REALstring string, uint32_t encoding);

// Pictures. A description stays valid until it is unlocked; `wantedType` is kPictureBitmapContext
// or kPictureRowTable, and the form without it gives whatever the picture has; the host may not
// have that form, which HasLockPictureDescription tells. New pictures, graphics and masks are +1 or
// null.
bool REALLockPictureDescription(REALpicture picture, REALpictureDescription* description);
bool HasLockPictureDescription();
bool REALLockPictureDescription(REALpicture picture, REALpictureDescription* description,
                                uint32_t wantedType);
void REALUnlockPictureDescription(REALpicture picture);
void REALPictureClearCache(REALpicture picture);
REALpicture REALNewPicture(int32_t width, int32_t height, int32_t depth);
REALpicture REALBuildPictureFromBuffer(int32_t width, int32_t height, int32_t pixelType,
                                       void* buffer, int32_t rowBytes);
REALgraphics REALGetPictureGraphics(REALpicture picture);
REALpicture REALGetPictureMask(REALpicture picture, bool create);

// Objects by name. A new instance is +1 or null and no constructor has run; a class reference is
// null when the host has no such class; methods are functions whose first argument is the object.
REALobject REALnewInstance(const char* className);
void* REALGetClassRef(const char* className);
void* REALLoadObjectMethod(REALobject object, const char* declaration);
void* REALLoadFrameworkMethod(const char* declaration);

// Properties by name. False: no such property, or no such function in this host.
bool REALGetPropValueInt32(REALobject object, const char* name, int32_t* value);
bool REALGetPropValueUInt8(REALobject object, const char* name, uint8_t* value);
bool REALSetPropValueInt32(REALobject object, const char* name, int32_t value);
bool REALSetPropValueString(REALobject object, const char* name, REALstring value);
bool REALSetPropValueUInt32(REALobject object, const char* name, uint32_t value);

// Graphics. The address of "RuntimeGraphicsDrawPicture" is looked up and never called.
void GraphicsDrawLine(REALgraphics graphics, int32_t x1, int32_t y1, int32_t x2, int32_t y2);
void* GraphicsDrawPicture();

// The exception reaches the program when the registered function returns; the host takes its own
// reference.
void REALRaiseException(REALobject exception);

// Memory blocks. A new one is +1 or null; the pointer may be null; the size is negative where the
// host can't tell it, and `hasGetSize` says whether it can be asked at all.
REALmemoryBlock REALNewMemoryBlockOriginal(int32_t size);
void* REALMemoryBlockGetPtr(REALmemoryBlock block);
int32_t REALMemoryBlockGetSize(REALmemoryBlock block);
bool HasMemoryBlockGetSize();
