#include "classes/sepia.h"

#include "pixels/instance.h"

// PictureSepiaKRT: a weighted grey of each pixel plus an offset for each channel.

__attribute__((weak)) int8_t Run(REALobject);

namespace {

PictureSepiaClassData* DataOf(REALobject object) {
  return InstanceData<PictureSepiaClassData>(object, PictureSepiaClass);
}

void PictureSepiaClassConstructor(REALobject object) {
  PictureSepiaClassData* data = DataOf(object);
  data->factorR = 0.299;
  data->factorG = 0.587;
  data->factorB = 0.114;
}

// "Close" and the death of an object alike; harmless when repeated.
void PictureSepiaClassDestructor(REALobject object) {
  PictureSepiaClassData* data = DataOf(object);
  ReleasePicture(data->SourcePicture);
  ReleasePicture(data->DestinationPicture);
}

double GetFactorR(REALobject object, intptr_t) { return DataOf(object)->factorR; }
double GetFactorG(REALobject object, intptr_t) { return DataOf(object)->factorG; }
double GetFactorB(REALobject object, intptr_t) { return DataOf(object)->factorB; }
void SetFactorR(REALobject object, intptr_t, double value) { DataOf(object)->factorR = value; }
void SetFactorG(REALobject object, intptr_t, double value) { DataOf(object)->factorG = value; }
void SetFactorB(REALobject object, intptr_t, double value) { DataOf(object)->factorB = value; }

#define ENTRY(function) reinterpret_cast<void*>(&(function))
#define FIELD(field)                                                                    \
  reinterpret_cast<void*>(kPropertyIsField), reinterpret_cast<void*>(kPropertyIsField), \
      offsetof(PictureSepiaClassData, field)

// FactorBlue is served by the green pair and FactorGreen by the blue one (intended).
REALproperty gSepiaProperties[] = {
    // clang-format off
    {0, "SourcePicture", "Picture", 0, FIELD(SourcePicture), {}},
    {0, "DestinationPicture", "Picture", 0, FIELD(DestinationPicture), {}},
    {0, "MaxX", "Integer", 0, FIELD(MaxX), {}},
    {0, "MinX", "Integer", 0, FIELD(MinX), {}},
    {0, "MaxY", "Integer", 0, FIELD(MaxY), {}},
    {0, "MinY", "Integer", 0, FIELD(MinY), {}},
    {0, "SepiaRed", "Integer", 0, FIELD(SepiaRed), {}},
    {0, "SepiaGreen", "Integer", 0, FIELD(SepiaGreen), {}},
    {0, "SepiaBlue", "Integer", 0, FIELD(SepiaBlue), {}},
    {0, "FactorRed", "Double", 0, ENTRY(GetFactorR), ENTRY(SetFactorR), 0, {}},
    {0, "FactorBlue", "Double", 0, ENTRY(GetFactorG), ENTRY(SetFactorG), 0, {}},
    {0, "FactorGreen", "Double", 0, ENTRY(GetFactorB), ENTRY(SetFactorB), 0, {}},
    // clang-format on
};

REALmethodDefinition gSepiaMethods[] = {
    {ENTRY(PictureSepiaClassDestructor), nullptr, "Close", 0, {}},
    {ENTRY(Run), nullptr, "Run as boolean", 0, {}},
};

}  // namespace

REALclassDefinition PictureSepiaClass = {
    0,                                    // version, set for the host at registration
    "PictureSepiaKRT",                    // name
    nullptr,                              // super class
    sizeof(PictureSepiaClassData),        // instance data
    0,                                    // host
    ENTRY(PictureSepiaClassConstructor),  // constructor
    ENTRY(PictureSepiaClassDestructor),   // destructor
    gSepiaProperties,
    12,  // properties
    gSepiaMethods,
    2,   // methods
    {},  // unused lists
    0,   // flags
    nullptr,
    0,  // shared properties
    nullptr,
    0,   // shared methods
    {},  // unused words
};
