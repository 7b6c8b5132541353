#include "classes/lut3d.h"

#include "classes/tetrahedra.h"
#include "pixels/block.h"
#include "pixels/instance.h"

// PictureLut3DKRT: each colour through a three-dimensional table, with tetrahedral interpolation.
//
// Run as boolean: filters SourcePicture into a new DestinationPicture, whose pixels outside the
// block that the bounds select stay as the host makes them. The previous one is let go first, so
// that it is nil after a failure: a source that is nil or can't be opened, a picture that can't be
// made.

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

int8_t Run(REALobject object) {
  Lut3DClassData* data = DataOf(object);
  ReleasePicture(data->DestinationPicture);
  PictureReader source;
  if (!source.GetPictureEditor(data->SourcePicture, true, false)) return 0;
  PictureWriter target;
  if (!target.NewPictureWriter(source.width, source.height, source.hasAlpha)) return 0;

  const BlockBounds bounds{data->MinX, data->MinY, data->MaxX, data->MaxY};
  const double* table = &data->table[0][0][0][0];
  MapStrips(target, TopLeftBlock(bounds, source.width, source.height), TableLookup{table}, source);
  data->DestinationPicture = target.RenderPictureWriter();
  return 1;
}

#define ENTRY(function) (reinterpret_cast<void*>(&(function)))
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
