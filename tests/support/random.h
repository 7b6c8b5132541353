// Random numbers that a failed test can be given again.
#pragma once

#include <cstdint>
#include <limits>
#include <random>
#include <string>

namespace support {

// The seed of this run, 1 unless --seed=N says another. A failure prints it.
uint64_t Seed();
void SetSeed(uint64_t seed);

class Random {
 public:
  // `salt` tells the sequences of one run apart.
  explicit Random(uint64_t salt = 0) : engine(Seed() * 0x9E3779B97F4A7C15U + salt) {}

  // first to last, both included.
  int32_t Between(int32_t first, int32_t last) {
    return std::uniform_int_distribution<int32_t>(first, last)(engine);
  }
  double Real(double first, double last) {
    return std::uniform_real_distribution<double>(first, last)(engine);
  }
  uint8_t Byte() { return static_cast<uint8_t>(engine()); }
  uint32_t Bits() { return static_cast<uint32_t>(engine() >> 16); }
  bool OneIn(int32_t n) { return Between(1, n) == 1; }

 private:
  std::mt19937_64 engine;
};

}  // namespace support
