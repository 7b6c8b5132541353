// What the operations are called with; the libraries are asked for the same.
#pragma once

#include <cstdint>

namespace bench {

inline constexpr double kContrast = 0.3;
inline constexpr double kBrightness = 20.0;
inline constexpr double kPerChannel[3] = {0.3, 0.1, -0.2};
inline constexpr double kFactor = 1.25;
inline constexpr double kOffset = -12.5;
inline constexpr int32_t kSaturation = 60;
inline constexpr uint32_t kGreyBase = 0x4C961D;
inline constexpr uint32_t kSepiaBase = 0xFFE4B0;
inline constexpr int32_t kColornessThreshold = 10;
inline constexpr uint32_t kSearchColour = 0x3C6478;
inline constexpr uint32_t kReplacement = 0xFF8000;
inline constexpr uint32_t kBackground = 0x102030;
inline constexpr int32_t kGreyTolerance = 12;
inline constexpr int32_t kSepiaOffsets[3] = {40, 15, -20};

// The three channel tables.
constexpr uint8_t TableEntry(int channel, int value) {
  return static_cast<uint8_t>(channel == 0   ? 255 - value
                              : channel == 1 ? value * value / 255
                                             : (value / 32) * 36);
}

// How far a picture of so many pixels along an axis is scrolled along it.
constexpr int32_t ScrollBy(int32_t length) { return length / 3; }

}  // namespace bench
