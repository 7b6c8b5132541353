// The records that a host and the plug-in exchange, and the handles they name things by.
//
// This is the one header that both sides include. Fields stand in the order in which they lie in
// memory, with the platform's natural alignment. With 32-bit pointers every record has the size and
// the offsets that hosts have always used; with 64-bit pointers a field that holds a function, a
// list, a string or an unnamed word is as wide as a pointer, and nothing else changes.
#pragma once

#include <cstddef>
#include <cstdint>

// Handles. The plug-in never looks inside one; what they point at belongs to the host.
struct REALobjectStruct;
struct REALpictureStruct;
struct REALstringStruct;
struct REALmemoryBlockStruct;
struct REALgraphicsStruct;
using REALobject = REALobjectStruct*;
using REALpicture = REALpictureStruct*;
using REALstring = REALstringStruct*;
using REALmemoryBlock = REALmemoryBlockStruct*;
using REALgraphics = REALgraphicsStruct*;

// Finds a host function by name; null for a name that the host doesn't know.
using REALresolver = void* (*)(const char* name);

// What kinds of pixel storage a picture description can describe.
enum REALpictureType : int32_t {
  kPictureGraphicsWorld = 4,  // pictureData is a QuickDraw graphics world
  kPictureBitmapContext = 8,  // pictureData is a Core Graphics bitmap context
  kPictureRowTable = 10,      // pictureData is a REALrowTablePicture
};

// Filled by the host when a picture's description is locked; valid until it is unlocked.
struct REALpictureDescription {
  int32_t pictureType;
  void* pictureData;
  int32_t width;
  int32_t height;
  int32_t depth;
  bool transparent;
};

// The host's own picture, as consoles and web servers have it: rows that need not be contiguous,
// each of `width` 32-bit pixels B, G, R, 0.
struct REALrowTablePicture {
  uint32_t zero;
  uint8_t** rows;
  void* second;
  int32_t width;
  int32_t height;
};

// The bytes of a string. Whoever filled it says how it is to be released.
struct REALstringData {
  void* data;
  int32_t length;
  uint32_t encoding;
};

enum REALencoding : uint32_t {
  kEncodingASCII = 0x600,
  kEncodingUTF8 = 0x08000100,
  kEncodingUnknown = 0xFFFF,  // bytes as stored
};

// One method of a class or of an extension, or one global method.
struct REALmethodDefinition {
  void* function;
  void* setter;  // null unless the method is a get/set pair
  const char* declaration;
  uint32_t flags;
  uintptr_t unused[2];
};

// One property. Getter and setter are kPropertyIsField where the property is the field of the
// instance data at offset `parameter`; otherwise they are called with `parameter`.
struct REALproperty {
  uintptr_t unusedBefore;
  const char* name;
  const char* type;
  uint32_t flags;
  void* getter;
  void* setter;
  uintptr_t parameter;
  uintptr_t unusedAfter[5];
};
inline constexpr uintptr_t kPropertyIsField = ~uintptr_t{0};

// A class, or the extension of a class that the host has.
struct REALclassDefinition {
  int32_t version;
  const char* name;
  const char* superName;
  int32_t dataSize;
  uintptr_t host;  // the host writes here where in an object its instance data begin, in bytes
  void* constructor;
  void* destructor;
  REALproperty* properties;
  int32_t propertyCount;
  REALmethodDefinition* methods;
  int32_t methodCount;
  uintptr_t unusedLists[9];  // events, event instances, interfaces, constants
  uint32_t flags;
  REALproperty* sharedProperties;
  int32_t sharedPropertyCount;
  REALmethodDefinition* sharedMethods;
  int32_t sharedMethodCount;
  uintptr_t unusedWords[4];
};

// Hosts before definition version 10 read shorter rows and a shorter definition. A definition whose
// version is at most kLastShortDefinition has this shape.
inline constexpr int32_t kLastShortDefinition = 9;

struct REALshortMethodDefinition {
  void* function;
  void* setter;
  const char* declaration;
  uint32_t flags;
};

struct REALshortProperty {
  uintptr_t unusedBefore;
  const char* name;
  const char* type;
  uint32_t flags;
  void* getter;
  void* setter;
  uintptr_t parameter;
  uintptr_t unusedAfter[3];
};

struct REALshortClassDefinition {
  int32_t version;
  const char* name;
  const char* superName;
  int32_t dataSize;
  uintptr_t host;
  void* constructor;
  void* destructor;
  REALshortProperty* properties;
  int32_t propertyCount;
  REALshortMethodDefinition* methods;
  int32_t methodCount;
  uintptr_t unusedLists[9];
  uint32_t flags;
  REALshortProperty* sharedProperties;
  int32_t sharedPropertyCount;
  REALshortMethodDefinition* sharedMethods;
  int32_t sharedMethodCount;
};

// Bits of a row's and a class's flags that the tables use and the host's age decides upon.
enum REALflags : uint32_t {
  kFlagConsoleSafeMarker = 0x40000,
  kFlagSecondMarker = 0x80000,
  kFlagReservedMarker = 0x100000,
};

static_assert(sizeof(bool) == 1);
static_assert(offsetof(REALshortClassDefinition, host) == offsetof(REALclassDefinition, host),
              "the host word lies at one place in both definitions");
#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(REALmethodDefinition) == 24);
static_assert(sizeof(REALproperty) == 48);
static_assert(sizeof(REALclassDefinition) == 116);
static_assert(sizeof(REALshortMethodDefinition) == 16);
static_assert(sizeof(REALshortProperty) == 40);
static_assert(sizeof(REALshortClassDefinition) == 100);
static_assert(sizeof(REALpictureDescription) == 24);
static_assert(sizeof(REALrowTablePicture) == 20);
static_assert(sizeof(REALstringData) == 12);
static_assert(offsetof(REALmethodDefinition, flags) == 12);
static_assert(offsetof(REALproperty, name) == 4);
static_assert(offsetof(REALproperty, flags) == 12);
static_assert(offsetof(REALproperty, getter) == 16);
static_assert(offsetof(REALproperty, parameter) == 24);
static_assert(offsetof(REALclassDefinition, dataSize) == 12);
static_assert(offsetof(REALclassDefinition, host) == 16);
static_assert(offsetof(REALclassDefinition, constructor) == 20);
static_assert(offsetof(REALclassDefinition, properties) == 28);
static_assert(offsetof(REALclassDefinition, methodCount) == 40);
static_assert(offsetof(REALclassDefinition, flags) == 80);
static_assert(offsetof(REALclassDefinition, sharedMethodCount) == 96);
static_assert(offsetof(REALshortClassDefinition, flags) == 80);
#endif
