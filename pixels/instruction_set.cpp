#include "pixels/instruction_set.h"

InstructionSet gInstructionSet = InstructionSet::unknown;

#ifdef PICTURE_CHOOSES_INSTRUCTION_SET

#include <cpuid.h>

namespace {

// What the operating system saves of the vector registers at a task switch.
uint64_t SavedRegisters() {
  uint32_t low = 0;
  uint32_t high = 0;
  __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return uint64_t{high} << 32 | low;
}

constexpr bool HasAll(uint64_t bits, uint64_t wanted) { return (bits & wanted) == wanted; }

}  // namespace

InstructionSet FindInstructionSet() {
  constexpr uint32_t kOsxsave = 1U << 27;
  constexpr uint64_t kYmmState = 0x06;
  constexpr uint64_t kZmmState = 0xE6;
  constexpr uint32_t kAvx2 = 1U << 5;
  constexpr uint32_t kAvx512 =
      1U << 16 | 1U << 17 | 1U << 28 | 1U << 30 | 1U << 31;  // F DQ CD BW VL

  uint32_t a = 0;
  uint32_t b = 0;
  uint32_t c = 0;
  uint32_t d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) == 0 || !HasAll(c, kOsxsave)) return InstructionSet::baseline;
  const uint64_t saved = SavedRegisters();
  if (!HasAll(saved, kYmmState) || __get_cpuid_count(7, 0, &a, &b, &c, &d) == 0) {
    return InstructionSet::baseline;
  }
  if (HasAll(saved, kZmmState) && HasAll(b, kAvx512)) return InstructionSet::avx512;
  return HasAll(b, kAvx2) ? InstructionSet::avx2 : InstructionSet::baseline;
}

#else

InstructionSet FindInstructionSet() { return InstructionSet::baseline; }

#endif
