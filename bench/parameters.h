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

}  // namespace bench
