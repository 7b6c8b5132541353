#include "plugin/binding/runtime.h"

REALresolver gResolver = nullptr;
double rbversion = 0;
int32_t CurrentREALControlVersion = 0;

void REALRegisterClass(REALclassDefinition* definition) {
  static void (*pRegisterClass)(REALclassDefinition*);
  if (Bind(pRegisterClass, "PluginRegisterClass")) pRegisterClass(definition);
}

void REALRegisterClassExtension(REALclassDefinition* definition) {
  static void (*pRegisterClassExtension)(REALclassDefinition*);
  if (Bind(pRegisterClassExtension, "PluginRegisterClassExtension")) {
    pRegisterClassExtension(definition);
  }
}

void REALRegisterMethod(REALmethodDefinition* method) {
  static void (*pRegisterMethod)(REALmethodDefinition*);
  if (Bind(pRegisterMethod, "PluginRegisterMethod")) pRegisterMethod(method);
}

bool REALLockObject(REALobject object) {
  static void (*pLockObject)(REALobject);
  if (!Bind(pLockObject, "REALLockObject")) return false;
  pLockObject(object);
  return true;
}

void REALUnlockObject(REALobject object) {
  static void (*pUnlockObject)(REALobject);
  if (Bind(pUnlockObject, "REALUnlockObject")) pUnlockObject(object);
}

void REALLockString(REALstring string) {
  static void (*pLockString)(REALstring);
  if (Bind(pLockString, "REALLockString")) pLockString(string);
}

void REALUnlockString(REALstring string) {
  static void (*pUnlockString)(REALstring);
  if (Bind(pUnlockString, "REALUnlockString")) pUnlockString(string);
}

REALstring REALBuildString(const char* bytes, int32_t length) {
  static REALstring (*pBuildString)(const char*, int32_t);
  return Bind(pBuildString, "REALBuildString") ? pBuildString(bytes, length) : nullptr;
}

uint32_t REALGetStringEncoding(REALstring string) {
  static uint32_t (*pGetStringEncoding)(REALstring);
  return Bind(pGetStringEncoding, "REALGetStringEncoding") ? pGetStringEncoding(string) : 0;
}

void REALSetStringEncoding(REALstring string, uint32_t encoding) {
  static void (*pSetStringEncoding)(REALstring, uint32_t);
  if (Bind(pSetStringEncoding, "REALSetStringEncoding")) pSetStringEncoding(string, encoding);
}

REALstring REALConvertString(REALstring string, uint32_t encoding) {
  static REALstring (*pConvertString)(REALstring, uint32_t);
  return Bind(pConvertString, "REALConvertString") ? pConvertString(string, encoding) : nullptr;
}

// Both functions below ask for the one entry, so that they share its cached pointer.
static bool BindLockPictureDescription(uint8_t (**entry)(REALpicture, REALpictureDescription*)) {
  static uint8_t (*pLockPictureDescription)(REALpicture, REALpictureDescription*);
  const bool found = Bind(pLockPictureDescription, "lockPictureDescription");
  *entry = pLockPictureDescription;
  return found;
}

bool REALLockPictureDescription(REALpicture picture, REALpictureDescription* description) {
  uint8_t (*lock)(REALpicture, REALpictureDescription*) = nullptr;
  return BindLockPictureDescription(&lock) && lock(picture, description) != 0;
}

bool HasLockPictureDescription() {
  uint8_t (*lock)(REALpicture, REALpictureDescription*) = nullptr;
  return BindLockPictureDescription(&lock);
}

bool REALLockPictureDescription(REALpicture picture, REALpictureDescription* description,
                                uint32_t wantedType) {
  static uint8_t (*pLockPictureDescription)(REALpicture, REALpictureDescription*, uint32_t);
  return Bind(pLockPictureDescription, "REALLockPictureDescription") &&
         pLockPictureDescription(picture, description, wantedType) != 0;
}

void REALUnlockPictureDescription(REALpicture picture) {
  static void (*pUnlockPictureDescription)(REALpicture);
  if (Bind(pUnlockPictureDescription, "unlockPictureDescription")) {
    pUnlockPictureDescription(picture);
  }
}

void REALPictureClearCache(REALpicture picture) {
  static void (*pPictureClearCache)(REALpicture);
  if (Bind(pPictureClearCache, "REALPictureClearCache")) pPictureClearCache(picture);
}

REALpicture REALNewPicture(int32_t width, int32_t height, int32_t depth) {
  static REALpicture (*pNewPicture)(int32_t, int32_t, int32_t);
  return Bind(pNewPicture, "newPicture") ? pNewPicture(width, height, depth) : nullptr;
}

REALpicture REALBuildPictureFromBuffer(int32_t width, int32_t height, int32_t pixelType,
                                       void* buffer, int32_t rowBytes) {
  static REALpicture (*pBuildPictureFromBuffer)(int32_t, int32_t, int32_t, void*, int32_t);
  return Bind(pBuildPictureFromBuffer, "REALBuildPictureFromBuffer")
             ? pBuildPictureFromBuffer(width, height, pixelType, buffer, rowBytes)
             : nullptr;
}

REALgraphics REALGetPictureGraphics(REALpicture picture) {
  static REALgraphics (*pPictureGraphicsGetter)(REALpicture);
  return Bind(pPictureGraphicsGetter, "pluginPictureGraphicsGetter")
             ? pPictureGraphicsGetter(picture)
             : nullptr;
}

REALpicture REALGetPictureMask(REALpicture picture, bool create) {
  static REALpicture (*pGetPictureMask)(REALpicture, bool);
  return Bind(pGetPictureMask, "REALGetPictureMask") ? pGetPictureMask(picture, create) : nullptr;
}

REALobject REALnewInstance(const char* className) {
  static REALobject (*pNewInstance)(const char*);
  return Bind(pNewInstance, "PluginNewInstance") ? pNewInstance(className) : nullptr;
}

void* REALGetClassRef(const char* className) {
  static void* (*pObjectType)(const char*);
  return Bind(pObjectType, "pluginObjectType") ? pObjectType(className) : nullptr;
}

void* REALLoadObjectMethod(REALobject object, const char* declaration) {
  static void* (*pLoadObjectMethod)(REALobject, const char*);
  return Bind(pLoadObjectMethod, "REALLoadObjectMethod") ? pLoadObjectMethod(object, declaration)
                                                         : nullptr;
}

void* REALLoadFrameworkMethod(const char* declaration) {
  static void* (*pLoadGlobalMethod)(const char*);
  return Bind(pLoadGlobalMethod, "REALLoadGlobalMethod") ? pLoadGlobalMethod(declaration) : nullptr;
}

bool REALGetPropValueInt32(REALobject object, const char* name, int32_t* value) {
  static uint8_t (*pGetPropValueInt)(REALobject, const char*, int32_t*);
  return Bind(pGetPropValueInt, "REALGetPropValueInt") &&
         pGetPropValueInt(object, name, value) != 0;
}

bool REALGetPropValueUInt8(REALobject object, const char* name, uint8_t* value) {
  static uint8_t (*pGetPropValueBool)(REALobject, const char*, uint8_t*);
  return Bind(pGetPropValueBool, "REALGetPropValueBool") &&
         pGetPropValueBool(object, name, value) != 0;
}

bool REALSetPropValueInt32(REALobject object, const char* name, int32_t value) {
  static uint8_t (*pSetPropValueInt)(REALobject, const char*, int32_t);
  return Bind(pSetPropValueInt, "REALSetPropValueInt") &&
         pSetPropValueInt(object, name, value) != 0;
}

bool REALSetPropValueString(REALobject object, const char* name, REALstring value) {
  static uint8_t (*pSetPropValueString)(REALobject, const char*, REALstring);
  return Bind(pSetPropValueString, "REALSetPropValueString") &&
         pSetPropValueString(object, name, value) != 0;
}

bool REALSetPropValueUInt32(REALobject object, const char* name, uint32_t value) {
  static uint8_t (*pSetPropValueUInt32)(REALobject, const char*, uint32_t);
  return Bind(pSetPropValueUInt32, "REALSetPropValueUInt32") &&
         pSetPropValueUInt32(object, name, value) != 0;
}

void GraphicsDrawLine(REALgraphics graphics, int32_t x1, int32_t y1, int32_t x2, int32_t y2) {
  static void (*pGraphicsDrawLine)(REALgraphics, int32_t, int32_t, int32_t, int32_t);
  if (Bind(pGraphicsDrawLine, "RuntimeGraphicsDrawLine")) {
    pGraphicsDrawLine(graphics, x1, y1, x2, y2);
  }
}

void* GraphicsDrawPicture() {
  static void (*pGraphicsDrawPicture)();
  Bind(pGraphicsDrawPicture, "RuntimeGraphicsDrawPicture");
  return reinterpret_cast<void*>(pGraphicsDrawPicture);
}

void REALRaiseException(REALobject exception) {
  static void (*pRaiseException)(REALobject);
  if (Bind(pRaiseException, "RuntimeRaiseException")) pRaiseException(exception);
}

REALmemoryBlock REALNewMemoryBlockOriginal(int32_t size) {
  static REALmemoryBlock (*pNewMemoryBlock)(int32_t);
  return Bind(pNewMemoryBlock, "newMemoryBlock") ? pNewMemoryBlock(size) : nullptr;
}

void* REALMemoryBlockGetPtr(REALmemoryBlock block) {
  static void* (*pMemoryBlockGetPtr)(REALmemoryBlock);
  return Bind(pMemoryBlockGetPtr, "memoryBlockGetPtr") ? pMemoryBlockGetPtr(block) : nullptr;
}

// Both functions below ask for the one entry, so that they share its cached pointer.
static bool BindMemoryBlockGetSize(int32_t (**entry)(REALmemoryBlock)) {
  static int32_t (*pMemoryBlockGetSize)(REALmemoryBlock);
  const bool found = Bind(pMemoryBlockGetSize, "memoryBlockGetSize");
  *entry = pMemoryBlockGetSize;
  return found;
}

int32_t REALMemoryBlockGetSize(REALmemoryBlock block) {
  int32_t (*getSize)(REALmemoryBlock) = nullptr;
  return BindMemoryBlockGetSize(&getSize) ? getSize(block) : 0;
}

bool HasMemoryBlockGetSize() {
  int32_t (*getSize)(REALmemoryBlock) = nullptr;
  return BindMemoryBlockGetSize(&getSize);
}
