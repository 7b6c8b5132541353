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
  const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                      __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512dq") &&
                      __builtin_cpu_supports("avx512vl");
  const InstructionSet expected = !ChoosesInstructionSet()         ? InstructionSet::baseline
                                  : avx512                         ? InstructionSet::avx512
                                  : __builtin_cpu_supports("avx2") ? InstructionSet::avx2
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

}  // namespace
