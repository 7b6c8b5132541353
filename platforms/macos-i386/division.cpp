// The names under which compilers call for 64-bit division.
#include "platforms/macos-i386/division.h"

extern "C" {
uint64_t __udivdi3(uint64_t dividend, uint64_t divisor) {
  return Divide(dividend, divisor).quotient;
}
uint64_t __umoddi3(uint64_t dividend, uint64_t divisor) {
  return Divide(dividend, divisor).remainder;
}
int64_t __divdi3(int64_t dividend, int64_t divisor) { return Quotient(dividend, divisor); }
int64_t __moddi3(int64_t dividend, int64_t divisor) { return Remainder(dividend, divisor); }
}
