// The tests' own options: --plugin=PATH, --load-address=ADDRESS, --seed=N,
// --instruction-set=baseline|avx2|avx512; --locks=nested|single|uncounted|copied; --every-method,
// with which a run fails that leaves out a method that the plug-in registers; and
// --all-but=TEST:..., which runs all tests but those named, and fails if any other was left out.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tests/support/fixture.h"

namespace support {

namespace {
uint64_t& SeedSetting() {
  static uint64_t seed = 1;
  return seed;
}

// A failed test says how to have it again.
class PrintSeed : public ::testing::EmptyTestEventListener {
  void OnTestPartResult(const ::testing::TestPartResult& result) override {
    if (result.failed()) std::printf("run again with --seed=%llu\n", seedOf());
  }
  static unsigned long long seedOf() { return Seed(); }
};

// That a run is of all tests but some.
class AllBut {
 public:
  // `names` are separated by colons; there may be none.
  void Name(const std::string& names) {
    wanted = true;
    if (names.empty()) return;
    GTEST_FLAG_SET(filter, "-" + names);
    named = 1 + static_cast<int>(std::count(names.begin(), names.end(), ':'));
  }
  // After the run.
  bool Holds() const {
    const ::testing::UnitTest& run = *::testing::UnitTest::GetInstance();
    const int all = run.total_test_count();
    const int done = run.successful_test_count() + run.failed_test_count();
    const bool holds = !wanted || (all > named && done == all - named);
    if (!holds) std::printf("%d tests of %d were run, all but %d should be\n", done, all, named);
    return holds;
  }

 private:
  bool wanted = false;
  int named = 0;
};

// What an option's value names. False for a name that isn't one.
template <class T, size_t kCount>
bool Choose(const std::pair<std::string_view, T> (&names)[kCount], std::string_view name,
            void (*set)(T)) {
  for (const auto& [known, value] : names) {
    if (name != known) continue;
    set(value);
    return true;
  }
  return false;
}

bool UseInstructionSet(std::string_view name) {
  constexpr std::pair<std::string_view, InstructionSet> kNames[] = {
      {"baseline", InstructionSet::baseline},
      {"avx2", InstructionSet::avx2},
      {"avx512", InstructionSet::avx512}};
  return Choose(kNames, name, SetInstructionSet);
}

bool UseLocks(std::string_view name) {
  constexpr std::pair<std::string_view, host::LockManner> kNames[] = {
      {"nested", host::LockManner::kNested},
      {"single", host::LockManner::kSingle},
      {"uncounted", host::LockManner::kUncounted},
      {"copied", host::LockManner::kCopied}};
  return Choose(kNames, name, SetLockManner);
}
}  // namespace

uint64_t Seed() { return SeedSetting(); }
void SetSeed(uint64_t seed) { SeedSetting() = seed; }

}  // namespace support

// What the plug-in registers with older hosts is made at its start and lives as long as the
// process; each test loads it anew.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:host::Host::StartPlugin\n";
}

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  support::AllBut allBut;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument.starts_with("--plugin=")) {
      support::SetPluginPath(argument.substr(9));
    } else if (argument.starts_with("--load-address=")) {
      support::SetLoadAddress(std::strtoul(argv[i] + 15, nullptr, 0));
    } else if (argument.starts_with("--seed=")) {
      support::SetSeed(std::strtoull(argv[i] + 7, nullptr, 10));
    } else if (argument == "--every-method") {
      support::RequireEveryMethod();
    } else if (argument.starts_with("--all-but=")) {
      allBut.Name(argv[i] + 10);
    } else if (argument.starts_with("--instruction-set=") &&
               support::UseInstructionSet(argument.substr(18))) {
    } else if (argument.starts_with("--locks=") && support::UseLocks(argument.substr(8))) {
    } else {
      std::fprintf(stderr, "unknown option %s\n", argv[i]);
      return 2;
    }
  }
  ::testing::UnitTest::GetInstance()->listeners().Append(new support::PrintSeed);
  const int failed = RUN_ALL_TESTS();
  return failed == 0 && allBut.Holds() ? 0 : 1;
}
