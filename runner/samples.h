// Sound files as the sample blocks that RenderSamplesKRT draws.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace runner {

// One channel of samples, as RenderSamplesKRT's Bits value names them: 7 signed and 8 unsigned
// 8-bit, 15 signed and 16 unsigned 16-bit, -32 and -64 floating point; this machine's byte order.
struct Samples {
  std::vector<uint8_t> bytes;
  int32_t count = 0;
  int32_t bits = 8;
};

// Reads a sound file. 8- and 16-bit files and floating point keep their samples as they are; wider
// integers, which the drawing doesn't know, become floating point that holds them exactly.
// `channel` counts from 1; 0 gives the mean of all channels. Throws Failure.
Samples LoadSamples(const std::filesystem::path& path, int32_t channel = 0);

}  // namespace runner
