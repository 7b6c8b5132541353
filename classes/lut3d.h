// The class PictureLut3DKRT.
#pragma once

#include "plugin/binding/records.h"

// Grid points on each axis of the table. Index i stands for the channel value 17 * i, so pictures
// use 0 to 15; the last two can be set and read and never reach a picture (intended).
inline constexpr int32_t kLutGrid = 18;

// What an object of the class holds; the host allocates it filled with zeros.
struct Lut3DClassData {
  REALpicture SourcePicture;       // one reference, or nil
  REALpicture DestinationPicture;  // one reference, or nil
  int32_t MinX;                    // bounds: how many pixels are processed, not where
  int32_t MinY;
  int32_t MaxX;
  int32_t MaxY;
  double table[kLutGrid][kLutGrid][kLutGrid][3];  // by red, green, blue, then the output channel
};
#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(Lut3DClassData) == 139992);
static_assert(offsetof(Lut3DClassData, DestinationPicture) == 4);
static_assert(offsetof(Lut3DClassData, MinX) == 8);
static_assert(offsetof(Lut3DClassData, MaxY) == 20);
static_assert(offsetof(Lut3DClassData, table) == 24);
#endif

extern REALclassDefinition Lut3DClass;
