#include "classes/sepia.h"

#include "pixels/block.h"
#include "pixels/instance.h"
#include "pixels/rows.h"

// PictureSepiaKRT: a weighted grey of each pixel plus an offset for each channel.
//
// Run as boolean: filters SourcePicture into a new DestinationPicture without an alpha channel,
// whose pixels outside the block that the bounds select stay as the host makes them. False, and
// nothing changed, when the source is nil or can't be opened, is larger than pictures may be, or
// the new picture can't be made.

namespace {

constexpr double kWeightScale = 1024.0;
constexpr int32_t kWeightOne = 1024;

// What the filter does to a pixel: weights of the channels in 1024ths, and what is added to the
// grey value.
struct SepiaTone {
  int32_t weightR;
  int32_t weightG;
  int32_t weightB;
  int32_t offsetR;
  int32_t offsetG;
  int32_t offsetB;
};

constexpr SepiaTone ToneOf(const PictureSepiaClassData& data) {
  return {TruncateToInt32(data.factorR * kWeightScale),
          TruncateToInt32(data.factorG * kWeightScale),
          TruncateToInt32(data.factorB * kWeightScale),
          data.SepiaRed,
          data.SepiaGreen,
          data.SepiaBlue};
}

// Sums and products of wild weights and offsets wrap around.
constexpr Pixel Sepia(Pixel p, const SepiaTone& tone) {
  const int32_t sum = WrappingAdd(
      WrappingAdd(WrappingMultiply(p.red, tone.weightR), WrappingMultiply(p.green, tone.weightG)),
      WrappingMultiply(p.blue, tone.weightB));
  const int32_t grey = sum / kWeightOne;
  return {ClampToByte(WrappingAdd(grey, tone.offsetR)),
          ClampToByte(WrappingAdd(grey, tone.offsetG)),
          ClampToByte(WrappingAdd(grey, tone.offsetB))};
}

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

int8_t Run(REALobject object) {
  PictureSepiaClassData* data = DataOf(object);
  PictureReader source;
  if (!source.GetPictureEditor(data->SourcePicture, true, false)) return 0;
  PictureWriter target;
  if (!target.NewPictureWriter(source.width, source.height, false)) return 0;

  const BlockBounds bounds{data->MinX, data->MinY, data->MaxX, data->MaxY};
  const SepiaTone tone = ToneOf(*data);
  MapPixels(
      target, TopLeftBlock(bounds, source.width, source.height),
      [tone](Pixel p) { return Sepia(p, tone); }, source);

  // The reference to a picture that an earlier run left here isn't dropped (intended).
  data->DestinationPicture = target.RenderPictureWriter();
  return 1;
}

#define ENTRY(function) (reinterpret_cast<void*>(&(function)))
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
