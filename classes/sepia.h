// The class PictureSepiaKRT.
#pragma once

#include "plugin/binding/records.h"

// What an object of the class holds; the host allocates it filled with zeros.
struct PictureSepiaClassData {
  double factorR;  // weights of the channels in the grey value
  double factorG;
  double factorB;
  REALpicture SourcePicture;       // one reference, or nil
  REALpicture DestinationPicture;  // one reference, or nil
  int32_t MinX;                    // bounds: how many pixels are processed, not where
  int32_t MinY;
  int32_t MaxX;
  int32_t MaxY;
  int32_t SepiaRed;  // added to the grey value
  int32_t SepiaGreen;
  int32_t SepiaBlue;
  int32_t unused;
};
#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(PictureSepiaClassData) == 64);
static_assert(offsetof(PictureSepiaClassData, SourcePicture) == 24);
static_assert(offsetof(PictureSepiaClassData, DestinationPicture) == 28);
static_assert(offsetof(PictureSepiaClassData, MinX) == 32);
static_assert(offsetof(PictureSepiaClassData, MaxY) == 44);
static_assert(offsetof(PictureSepiaClassData, SepiaRed) == 48);
static_assert(offsetof(PictureSepiaClassData, SepiaBlue) == 56);
#endif

extern REALclassDefinition PictureSepiaClass;
