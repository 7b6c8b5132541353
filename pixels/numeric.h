// Arithmetic whose result is stated for every input, on every compiler and processor.
#pragma once

#include <cstdint>
#include <limits>

// `value` truncated toward zero. NaN and whatever doesn't fit into an int32 give the most negative
// int32. (A plain cast is undefined there, and processors differ.)
constexpr int32_t TruncateToInt32(double value) {
  return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int32_t>(value)
                                                       : std::numeric_limits<int32_t>::min();
}

constexpr int32_t Smaller(int32_t a, int32_t b) { return a < b ? a : b; }
constexpr int32_t Larger(int32_t a, int32_t b) { return a < b ? b : a; }

// The nearest channel value: below 0 gives 0, above 255 gives 255.
constexpr int32_t ClampToByte(int32_t value) { return value < 0 ? 0 : value > 255 ? 255 : value; }

// Sums, differences and products that wrap around in 32 bits.
constexpr int32_t WrappingAdd(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
constexpr int32_t WrappingMultiply(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}
