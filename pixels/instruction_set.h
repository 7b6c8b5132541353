// The same row loop compiled for several instruction sets, the widest that the processor has chosen
// at run time. All give the same bits: nothing that they add rounds otherwise, and fused operations
// are switched off.
#pragma once

#include <cstdint>

// avx512 stands for what x86-64-v4 names: F, BW, CD, DQ and VL.
enum class InstructionSet : int8_t { unknown, baseline, avx2, avx512 };

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
