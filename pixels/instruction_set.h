// The same row loop compiled for several instruction sets, the widest that the processor has chosen
// at run time. All give the same bits: nothing that they add rounds otherwise, and fused operations
// are switched off.
#pragma once

#include <cstdint>

// avx512 stands for all that x86-64-v4 names: F, BW, CD, DQ and VL, and smaller extensions.
enum class InstructionSet : int8_t { unknown, baseline, avx2, avx512 };

// What the processor says of itself, in the words of cpuid, and what the operating system saves of
// the vector registers at a task switch. A virtual machine may mask any bit.
struct ProcessorFeatures {
  uint32_t leaf1c = 0;          // leaf 1, ecx
  uint32_t leaf7b = 0;          // leaf 7.0, ebx
  uint32_t extended1c = 0;      // leaf 0x80000001, ecx
  uint64_t savedRegisters = 0;  // xgetbv 0
};

// The widest set of which the processor has each extension that the compiler may use in its code.
InstructionSet WidestSetOf(const ProcessorFeatures& features);

// The set in use. Found out at the first call and kept; a test may set it to one that the processor
// has.
extern InstructionSet gInstructionSet;

// The widest set that the processor and the operating system support.
InstructionSet FindInstructionSet();

inline InstructionSet CurrentInstructionSet() {
  if (gInstructionSet == InstructionSet::unknown) gInstructionSet = FindInstructionSet();
  return gInstructionSet;
}

// Runs `loop()`, everything that it calls compiled into one function for each instruction set. Only
// 64-bit x86 Linux chooses; every other target has its baseline alone.
#if defined(__x86_64__) && defined(__linux__)
#define PICTURE_CHOOSES_INSTRUCTION_SET 1

template <class Loop>
__attribute__((noinline, flatten)) void RunBaseline(const Loop& loop) {
  loop();
}
template <class Loop>
__attribute__((noinline, flatten, target("avx2"))) void RunAvx2(const Loop& loop) {
  loop();
}
template <class Loop>
__attribute__((noinline, flatten, target("arch=x86-64-v4"))) void RunAvx512(const Loop& loop) {
  loop();
}

template <class Loop>
void RunWidest(const Loop& loop) {
  switch (CurrentInstructionSet()) {
    case InstructionSet::avx512:
      return RunAvx512(loop);
    case InstructionSet::avx2:
      return RunAvx2(loop);
    default:
      return RunBaseline(loop);
  }
}
#else
template <class Loop>
void RunWidest(const Loop& loop) {
  loop();
}
#endif
