#include "pixels/instruction_set.h"

InstructionSet gInstructionSet = InstructionSet::unknown;

namespace {

constexpr bool HasAll(uint64_t bits, uint64_t wanted) { return (bits & wanted) == wanted; }

constexpr bool HasAll(const ProcessorFeatures& has, const ProcessorFeatures& wanted) {
  return HasAll(has.leaf1c, wanted.leaf1c) && HasAll(has.leaf7b, wanted.leaf7b) &&
         HasAll(has.extended1c, wanted.extended1c) &&
         HasAll(has.savedRegisters, wanted.savedRegisters);
}

// What target("avx2") lets the compiler use.
constexpr ProcessorFeatures kAvx2 = {
    .leaf1c = 1U << 0        // SSE3
              | 1U << 9      // SSSE3
              | 1U << 19     // SSE4.1
              | 1U << 20     // SSE4.2
              | 1U << 23     // POPCNT
              | 1U << 26     // XSAVE
              | 1U << 27     // the operating system uses it
              | 1U << 28,    // AVX
    .leaf7b = 1U << 5,       // AVX2
    .savedRegisters = 0x06,  // xmm and ymm
};

// What target("arch=x86-64-v4") adds to that.
constexpr ProcessorFeatures kAvx512 = {
    .leaf1c = 1U << 12        // FMA
              | 1U << 13      // CMPXCHG16B
              | 1U << 22      // MOVBE
              | 1U << 29,     // F16C
    .leaf7b = 1U << 3         // BMI1
              | 1U << 8       // BMI2
              | 1U << 16      // AVX512F
              | 1U << 17      // AVX512DQ
              | 1U << 28      // AVX512CD
              | 1U << 30      // AVX512BW
              | 1U << 31,     // AVX512VL
    .extended1c = 1U << 0     // LAHF and SAHF
                  | 1U << 5,  // LZCNT
    .savedRegisters = 0xE0,   // zmm and the mask registers
};

}  // namespace

InstructionSet WidestSetOf(const ProcessorFeatures& features) {
  if (!HasAll(features, kAvx2)) return InstructionSet::baseline;
  return HasAll(features, kAvx512) ? InstructionSet::avx512 : InstructionSet::avx2;
}

#ifdef PICTURE_CHOOSES_INSTRUCTION_SET

#include <cpuid.h>

namespace {

uint64_t SavedRegisters() {
  uint32_t low = 0;
  uint32_t high = 0;
  __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return uint64_t{high} << 32 | low;
}

}  // namespace

// Leaves that the processor doesn't have leave their bits at 0.
InstructionSet FindInstructionSet() {
  constexpr uint32_t kOsxsave = 1U << 27;  // without it there is no xgetbv
  ProcessorFeatures features;
  uint32_t a = 0;
  uint32_t d = 0;
  uint32_t other = 0;
  __get_cpuid(1, &a, &other, &features.leaf1c, &d);
  __get_cpuid_count(7, 0, &a, &features.leaf7b, &other, &d);
  __get_cpuid(0x80000001, &a, &other, &features.extended1c, &d);
  if (HasAll(features.leaf1c, kOsxsave)) features.savedRegisters = SavedRegisters();
  return WidestSetOf(features);
}

#else

InstructionSet FindInstructionSet() { return InstructionSet::baseline; }

#endif
