#include "plugin/entry.h"

#include <stdlib.h>
#include <string.h>

#include "classes/lut3d.h"
#include "classes/sepia.h"
#include "plugin/binding/runtime.h"
#include "plugin/tables.h"

// What the plug-in calls itself; kept for debuggers and for whoever looks into a process.
const char* gpartname = nullptr;
const char* gpluginname = nullptr;
bool gplugin = false;

namespace {

constexpr double kFirstVersionWithFlags = 2010.029;

int32_t DefinitionVersionFor(double version) {
  if (version >= 2013.03) return 12;
  if (version >= 2013.0) return 11;
  if (version >= 2012.0) return 10;
  return kLastShortDefinition;
}

template <class Row>
void FixRowFlags(Row* rows, int32_t count) {
  if (rows == nullptr) return;
  for (int32_t i = 0; i < count; ++i) rows[i].flags = FlagsForHost(rows[i].flags);
}

// Hosts without a size of their own for a class get it in steps of 16 bytes.
int32_t RoundUpTo16(int32_t size) { return (size + 15) & ~15; }

// The leading fields of a row are the whole of a short row.
template <class ShortRow, class Row>
ShortRow* ShortenRows(const Row* rows, int32_t count) {
  static_assert(sizeof(ShortRow) < sizeof(Row));
  if (rows == nullptr || count <= 0) return nullptr;
  auto* shortRows = static_cast<ShortRow*>(calloc(static_cast<size_t>(count), sizeof(ShortRow)));
  if (shortRows == nullptr) return nullptr;
  for (int32_t i = 0; i < count; ++i) memcpy(&shortRows[i], &rows[i], sizeof(ShortRow));
  return shortRows;
}

// Makes `definition` what this host reads, once: its version says that it was done. False where
// there is no memory to do so.
bool FitDefinition(REALclassDefinition* definition) {
  if (definition->version != 0) return true;
  FixConsoleFlags(definition);
  definition->dataSize = RoundUpTo16(definition->dataSize);
  if (CurrentREALControlVersion > kLastShortDefinition) {
    definition->version = CurrentREALControlVersion;
    return true;
  }
  REALshortClassDefinition* shortDefinition = FixClass(definition);
  if (shortDefinition == nullptr) return false;
  memcpy(static_cast<void*>(definition), shortDefinition, sizeof(*shortDefinition));
  free(shortDefinition);
  return true;
}

}  // namespace

uint32_t FlagsForHost(uint32_t flags) {
  if (rbversion >= kFirstVersionWithFlags && (flags & 0xC0000) != 0) {
    flags |= ((flags >> 16) & 4) | ((flags >> 16) & 8);
  }
  return flags & 0xFFE3FFFF;
}

void FixConsoleFlags(REALclassDefinition* definition) {
  definition->flags = FlagsForHost(definition->flags);
  FixRowFlags(definition->methods, definition->methodCount);
  FixRowFlags(definition->sharedMethods, definition->sharedMethodCount);
  FixRowFlags(definition->properties, definition->propertyCount);
  FixRowFlags(definition->sharedProperties, definition->sharedPropertyCount);
}

REALshortProperty* FixProperties(const REALproperty* properties, int32_t count) {
  return ShortenRows<REALshortProperty>(properties, count);
}

REALshortClassDefinition* FixClass(const REALclassDefinition* definition) {
  auto* result =
      static_cast<REALshortClassDefinition*>(calloc(1, sizeof(REALshortClassDefinition)));
  if (result == nullptr) return nullptr;
  result->version = CurrentREALControlVersion;
  result->name = definition->name;
  result->superName = definition->superName;
  result->dataSize = definition->dataSize;
  result->host = definition->host;
  result->constructor = definition->constructor;
  result->destructor = definition->destructor;
  result->properties = FixProperties(definition->properties, definition->propertyCount);
  result->propertyCount = result->properties != nullptr ? definition->propertyCount : 0;
  result->methods =
      ShortenRows<REALshortMethodDefinition>(definition->methods, definition->methodCount);
  result->methodCount = result->methods != nullptr ? definition->methodCount : 0;
  result->flags = definition->flags;
  result->sharedProperties =
      FixProperties(definition->sharedProperties, definition->sharedPropertyCount);
  result->sharedPropertyCount =
      result->sharedProperties != nullptr ? definition->sharedPropertyCount : 0;
  result->sharedMethods = ShortenRows<REALshortMethodDefinition>(definition->sharedMethods,
                                                                 definition->sharedMethodCount);
  result->sharedMethodCount = result->sharedMethods != nullptr ? definition->sharedMethodCount : 0;
  return result;
}

// A host that calls once more gets everything registered once more, as it was fitted at first: rows
// that were shortened can't be fitted again.
void REALPluginMain(REALresolver resolver) {
  gResolver = resolver;

  using RegisterVersion = void(int32_t);
  using GetVersion = double();
  auto* registerVersion = reinterpret_cast<RegisterVersion*>(resolver("RegisterPluginVersion"));
  auto* getVersion = reinterpret_cast<GetVersion*>(resolver("REALGetRBVersion"));
  const bool isFirstCall = CurrentREALControlVersion == 0;
  if (isFirstCall && getVersion != nullptr) rbversion = getVersion();
  CurrentREALControlVersion = DefinitionVersionFor(rbversion);
  if (registerVersion != nullptr) registerVersion(CurrentREALControlVersion);

  gpartname = "Picture";
  gpluginname = "Picture";
  gplugin = true;

  FixRowFlags(gGlobalMethods, kGlobalMethodCount);
  if (FitDefinition(&PictureSepiaClass)) REALRegisterClass(&PictureSepiaClass);
  if (FitDefinition(&Lut3DClass)) REALRegisterClass(&Lut3DClass);
  if (FitDefinition(&PictureExtension)) REALRegisterClassExtension(&PictureExtension);
  for (REALmethodDefinition& method : gGlobalMethods) REALRegisterMethod(&method);
}
