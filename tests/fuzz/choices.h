// Choices read from an input: zeros when it is used up, so that every input means something.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace fuzz {

class Choices {
 public:
  Choices(const uint8_t* data, size_t size) : next(data), left(size) {}

  bool AreLeft() const { return left > 0; }
  uint8_t Byte() { return Take<uint8_t>(); }
  uint32_t Word() { return Take<uint32_t>(); }
  // 0 to count - 1; count is 1 to 256.
  uint32_t Below(uint32_t count) { return Byte() % count; }
  bool OneIn(uint32_t count) { return Below(count) == count - 1; }

  // Small ones, those at the ends of the range, and any.
  int32_t Integer() {
    constexpr int32_t kEnds[] = {INT32_MIN, INT32_MIN + 1, INT32_MAX, INT32_MAX - 1, 255, 256,
                                 32767,     32768,         -32768,    65536,         -1,  0};
    const uint8_t kind = Byte();
    if (kind < 128) return static_cast<int8_t>(Byte());
    if (kind < 192) return kEnds[kind % (sizeof kEnds / sizeof *kEnds)];
    return static_cast<int32_t>(Word());
  }
  double Real() {
    constexpr double kReals[] = {0.0,   -0.0, 1.0,    -1.0,   0.5,   2.0,   127.0,
                                 255.0, 1e9,  -1e300, 1e-310, 1e308, 0.003, -255.5};
    const uint8_t kind = Byte();
    if (kind < 64) return static_cast<int8_t>(Byte()) / 16.0;
    if (kind < 192) return kReals[kind % (sizeof kReals / sizeof *kReals)];
    double value = 0;  // of any bits: not-a-number and infinity too
    const uint64_t bits = uint64_t{Word()} << 32 | Word();
    std::memcpy(&value, &bits, sizeof value);
    return value;
  }
  std::string_view Rest() {
    const std::string_view rest(reinterpret_cast<const char*>(next), left);
    left = 0;
    return rest;
  }

 private:
  template <class T>
  T Take() {
    T value = 0;
    const size_t count = left < sizeof value ? left : sizeof value;
    if (count > 0) std::memcpy(&value, next, count);
    next += count;
    left -= count;
    return value;
  }

  const uint8_t* next;
  size_t left;
};

}  // namespace fuzz
