// Division of 64-bit integers for a processor that has none and a linker that has no library to
// take it from.
#pragma once

#include <cstdint>

struct Division {
  uint64_t quotient;
  uint64_t remainder;
};

// Long division in base two. By zero it gives 0 and the dividend; nobody asks for it.
constexpr Division Divide(uint64_t dividend, uint64_t divisor) {
  if (divisor == 0 || divisor > dividend) return {0, dividend};
  int shift = __builtin_clzll(divisor) - __builtin_clzll(dividend);
  uint64_t quotient = 0;
  for (divisor <<= shift; shift >= 0; --shift, divisor >>= 1) {
    quotient <<= 1;
    if (dividend >= divisor) {
      dividend -= divisor;
      quotient |= 1;
    }
  }
  return {quotient, dividend};
}

constexpr uint64_t Magnitude(int64_t value) {
  return value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
}

// `magnitude` with the sign of `value`; wraps where it doesn't fit.
constexpr int64_t WithSignOf(int64_t value, uint64_t magnitude) {
  return static_cast<int64_t>(value < 0 ? 0 - magnitude : magnitude);
}

// Toward zero; the remainder has the dividend's sign.
constexpr int64_t Quotient(int64_t dividend, int64_t divisor) {
  return WithSignOf(dividend ^ divisor, Divide(Magnitude(dividend), Magnitude(divisor)).quotient);
}
constexpr int64_t Remainder(int64_t dividend, int64_t divisor) {
  return WithSignOf(dividend, Divide(Magnitude(dividend), Magnitude(divisor)).remainder);
}
