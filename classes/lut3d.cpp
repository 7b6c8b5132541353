#include "classes/lut3d.h"

#include "pixels/instance.h"

// PictureLut3DKRT: each colour through a three-dimensional table, with tetrahedral interpolation.

__attribute__((weak)) int8_t Run(REALobject);

namespace {

constexpr uint32_t kClassFlags = 4;

Lut3DClassData* DataOf(REALobject object) {
  return InstanceData<Lut3DClassData>(object, Lut3DClass);
}

// The table starts as the host's zeros: black.
void Lut3DClassConstructor(REALobject) {}

// "Close" and the death of an object alike; harmless when repeated.
void Lut3DClassDestructor(REALobject object) {
  Lut3DClassData* data = DataOf(object);
  ReleasePicture(data->SourcePicture);
  ReleasePicture(data->DestinationPicture);
}

bool IsTableIndex(uint32_t r, uint32_t g, uint32_t b, uint32_t x) {
  return r < kLutGrid && g < kLutGrid && b < kLutGrid && x < 3;
}

double GetPMX(REALobject object, uint32_t r, uint32_t g, uint32_t b, uint32_t x) {
  return IsTableIndex(r, g, b, x) ? DataOf(object)->table[r][g][b][x] : 0.0;
}

void SetPMX(REALobject object, uint32_t r, uint32_t g, uint32_t b, uint32_t x, double value) {
  if (IsTableIndex(r, g, b, x)) DataOf(object)->table[r][g][b][x] = value;
}

#define ENTRY(function) reinterpret_cast<void*>(&(function))
#define FIELD(field)                                                                    \
  reinterpret_cast<void*>(kPropertyIsField), reinterpret_cast<void*>(kPropertyIsField), \
      offsetof(Lut3DClassData, field)

constexpr uint32_t kSafe = kFlagConsoleSafeMarker;

REALproperty gLutProperties[] = {
    {0, "SourcePicture", "Picture", kSafe, FIELD(SourcePicture), {}},
    {0, "DestinationPicture", "Picture", kSafe, FIELD(DestinationPicture), {}},
    {0, "MaxX", "Integer", kSafe, FIELD(MaxX), {}},
    {0, "MinX", "Integer", kSafe, FIELD(MinX), {}},
    {0, "MaxY", "Integer", kSafe, FIELD(MaxY), {}},
    {0, "MinY", "Integer", kSafe, FIELD(MinY), {}},
};

REALmethodDefinition gLutMethods[] = {
    // clang-format off
    {ENTRY(Lut3DClassDestructor), nullptr, "Close", kSafe, {}},
    {ENTRY(Run), nullptr, "Run as boolean", kSafe, {}},
    {ENTRY(GetPMX), ENTRY(SetPMX), "Table(r as UInt32, g as UInt32, b as UInt32, x as UInt32) as double", kSafe, {}},
    // clang-format on
};

}  // namespace

REALclassDefinition Lut3DClass = {
    0,                             // version, set for the host at registration
    "PictureLut3DKRT",             // name
    nullptr,                       // super class
    sizeof(Lut3DClassData),        // instance data
    0,                             // host
    ENTRY(Lut3DClassConstructor),  // constructor
    ENTRY(Lut3DClassDestructor),   // destructor
    gLutProperties,
    6,  // properties
    gLutMethods,
    3,            // methods
    {},           // unused lists
    kClassFlags,  // flags
    nullptr,
    0,  // shared properties
    nullptr,
    0,   // shared methods
    {},  // unused words
};
