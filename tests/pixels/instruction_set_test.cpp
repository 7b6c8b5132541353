#include "pixels/instruction_set.h"

#include <gtest/gtest.h>

#include "tests/support/internals_fixture.h"

namespace {

// On Linux for 64-bit x86 alone, whose library is tested here; a bundle has its baseline.
#if defined(__x86_64__)
bool ChoosesInstructionSet() { return !support::PluginIsBundle(); }
#else
bool ChoosesInstructionSet() { return false; }
#endif

class InstructionSetTest : public support::InternalsTest {};

TEST_F(InstructionSetTest, IsFoundAtTheFirstLoopAndKept) {
  host::Host& host = StartInternals();
  EXPECT_EQ(*internals->instructionSet, InstructionSet::unknown);
  const support::PictureRef picture = host.NewPicture(3, 3);
  EXPECT_TRUE(Call<support::PictureRef>("InvertKRT as picture", picture));
  if (ChoosesInstructionSet()) {
    EXPECT_EQ(*internals->instructionSet, internals->findInstructionSet());
    EXPECT_NE(*internals->instructionSet, InstructionSet::unknown);
  } else {
    EXPECT_EQ(internals->findInstructionSet(), InstructionSet::baseline);
  }
}

#if defined(__x86_64__)
TEST_F(InstructionSetTest, AgreesWithTheCompilersOwnQuestion) {
  StartInternals();
  __builtin_cpu_init();
  const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt") &&
                    __builtin_cpu_supports("sse4.2");
  const bool avx512 = avx2 && __builtin_cpu_supports("avx512f") &&
                      __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512cd") &&
                      __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
                      __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
                      __builtin_cpu_supports("fma");
  const InstructionSet expected = !ChoosesInstructionSet() ? InstructionSet::baseline
                                  : avx512                 ? InstructionSet::avx512
                                  : avx2                   ? InstructionSet::avx2
                                                           : InstructionSet::baseline;
  EXPECT_EQ(internals->findInstructionSet(), expected);
}

TEST_F(InstructionSetTest, TheOneThatIsForcedRuns) {
  StartInternals();
  for (const InstructionSet set :
       {InstructionSet::baseline, InstructionSet::avx2, InstructionSet::avx512}) {
    if (set > internals->findInstructionSet()) continue;
    *internals->instructionSet = set;
    EXPECT_EQ(internals->runningInstructionSet(),
              ChoosesInstructionSet() ? set : InstructionSet::unknown);
  }
}
#endif

// Where the processor's manual puts what the compiler may use in each set's code.
struct Extension {
  const char* name;
  uint32_t ProcessorFeatures::*word;
  int bit;
};
constexpr Extension kForAvx2[] = {
    {"SSE3", &ProcessorFeatures::leaf1c, 0},     {"SSSE3", &ProcessorFeatures::leaf1c, 9},
    {"SSE4.1", &ProcessorFeatures::leaf1c, 19},  {"SSE4.2", &ProcessorFeatures::leaf1c, 20},
    {"POPCNT", &ProcessorFeatures::leaf1c, 23},  {"XSAVE", &ProcessorFeatures::leaf1c, 26},
    {"OSXSAVE", &ProcessorFeatures::leaf1c, 27}, {"AVX", &ProcessorFeatures::leaf1c, 28},
    {"AVX2", &ProcessorFeatures::leaf7b, 5},
};
constexpr Extension kForAvx512[] = {
    {"FMA", &ProcessorFeatures::leaf1c, 12},      {"CMPXCHG16B", &ProcessorFeatures::leaf1c, 13},
    {"MOVBE", &ProcessorFeatures::leaf1c, 22},    {"F16C", &ProcessorFeatures::leaf1c, 29},
    {"BMI1", &ProcessorFeatures::leaf7b, 3},      {"BMI2", &ProcessorFeatures::leaf7b, 8},
    {"AVX512F", &ProcessorFeatures::leaf7b, 16},  {"AVX512DQ", &ProcessorFeatures::leaf7b, 17},
    {"AVX512CD", &ProcessorFeatures::leaf7b, 28}, {"AVX512BW", &ProcessorFeatures::leaf7b, 30},
    {"AVX512VL", &ProcessorFeatures::leaf7b, 31}, {"LAHF", &ProcessorFeatures::extended1c, 0},
    {"LZCNT", &ProcessorFeatures::extended1c, 5},
};
constexpr uint64_t kYmm = 1U << 1 | 1U << 2;            // what xgetbv names SSE and AVX
constexpr uint64_t kZmm = 1U << 5 | 1U << 6 | 1U << 7;  // opmask, ZMM_Hi256, Hi16_ZMM

void Add(const Extension& extension, ProcessorFeatures* features) {
  features->*extension.word |= 1U << extension.bit;
}

ProcessorFeatures Without(ProcessorFeatures features, const Extension& extension) {
  features.*extension.word &= ~(1U << extension.bit);
  return features;
}

TEST_F(InstructionSetTest, AMaskedExtensionTakesEverySetThatUsesItAway) {
  StartInternals();
  const auto widest = internals->widestSetOf;
  ProcessorFeatures features;
  EXPECT_EQ(widest(features), InstructionSet::baseline);
  for (const Extension& extension : kForAvx2) Add(extension, &features);
  EXPECT_EQ(widest(features), InstructionSet::baseline) << "no register is saved";
  features.savedRegisters = kYmm;
  EXPECT_EQ(widest(features), InstructionSet::avx2);
  for (const Extension& extension : kForAvx2) {
    EXPECT_EQ(widest(Without(features, extension)), InstructionSet::baseline) << extension.name;
  }

  for (const Extension& extension : kForAvx512) Add(extension, &features);
  EXPECT_EQ(widest(features), InstructionSet::avx2) << "wide registers aren't saved";
  features.savedRegisters = kYmm | kZmm;
  EXPECT_EQ(widest(features), InstructionSet::avx512);
  for (const Extension& extension : kForAvx512) {
    EXPECT_EQ(widest(Without(features, extension)), InstructionSet::avx2) << extension.name;
  }
  for (const Extension& extension : kForAvx2) {
    EXPECT_EQ(widest(Without(features, extension)), InstructionSet::baseline) << extension.name;
  }
  for (const int bit : {1, 2, 5, 6, 7}) {
    ProcessorFeatures without = features;
    without.savedRegisters &= ~(uint64_t{1} << bit);
    const InstructionSet left = bit < 5 ? InstructionSet::baseline : InstructionSet::avx2;
    EXPECT_EQ(widest(without), left) << "register state " << bit;
  }
}

}  // namespace
