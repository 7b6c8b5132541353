// A test that counts the instructions of calls, and is skipped where nothing counts them.
#pragma once

#include "tests/steps/instructions.h"
#include "tests/support/fixture.h"

namespace steps {

class CountingTest : public support::PluginTest {
 protected:
  void SetUp() override {
    if (!CanCount()) GTEST_SKIP() << "only valgrind counts instructions; ctest starts it";
  }

  // Of the second call: the first looks the host's functions up.
  static int64_t Count(const std::function<void()>& call) {
    call();
    return CountInstructions(call);
  }
};

}  // namespace steps
