// The plug-in's start, and every row after it, where what the start needs fails.
#include <algorithm>

#include "tests/faults/fault_test.h"

namespace faults {
namespace {

const char* const kStart[] = {"RegisterPluginVersion", "REALGetRBVersion", "PluginRegisterClass",
                              "PluginRegisterClassExtension", "PluginRegisterMethod"};

// The start's calls, in their order.
std::vector<std::string> CallsOfStart() {
  std::vector<std::string> calls = {"REALGetRBVersion", "RegisterPluginVersion",
                                    "PluginRegisterClass", "PluginRegisterClass",
                                    "PluginRegisterClassExtension"};
  calls.insert(calls.end(), 6, "PluginRegisterMethod");
  return calls;
}

class RegistrationFaults : public FaultTest {
 protected:
  // Each test starts the plug-in itself.
  void SetUp() override {}

  struct Counts {
    size_t classes, extensions, methods;
    friend bool operator==(const Counts&, const Counts&) = default;
  };
  Counts Registered() {
    const auto& classes = Host().registry.Classes();
    const auto extensions = static_cast<size_t>(
        std::count_if(classes.begin(), classes.end(), [](const auto& c) { return c.extension; }));
    return {classes.size() - extensions, extensions, Host().registry.GlobalMethods().size()};
  }
};

TEST_P(RegistrationFaults, AFailingCallLosesItsOwnRowAlone) {
  const std::vector<std::string> calls = CallsOfStart();
  for (size_t k = 0; k <= calls.size(); ++k) {
    host::Host& host = StartWithoutPlugin(GetParam().settings);
    if (k < calls.size()) host.faults.FailNthOfAll(static_cast<int64_t>(k + 1));
    host.faults.StartRecord();
    support::LoadPluginUnderTest(host);
    EXPECT_EQ(host.faults.StopRecord(), calls);
    const std::string failing = k < calls.size() ? calls[k] : "nothing";
    Counts expected = {2, 1, 6};
    if (failing == "PluginRegisterClass") --expected.classes;
    if (failing == "PluginRegisterClassExtension") --expected.extensions;
    if (failing == "PluginRegisterMethod") --expected.methods;
    EXPECT_EQ(Registered(), expected) << "call " << k + 1 << ", " << failing << ", fails";
  }
}

// Without the host's version the plug-in counts it among the oldest: it makes no pictures with an
// alpha channel, and undoes locks that are refused.
TEST_P(RegistrationFaults, RowsAreCalledWithoutWhatTheStartLacked) {
  Load();
  const std::vector<Prepared> rows = PrepareRows();
  int64_t called = 0;
  for (const std::string entry : kStart) {
    Load({entry});
    for (const Prepared& before : rows) {
      const Case& row = *before.row;
      if (!IsRegistered(row)) continue;
      const Prepared prepared{&row, CallableOf(row), {}};
      const bool fails = entry == "REALGetRBVersion" && row.alphaOutput && GetParam().Alpha();
      Check(Run(prepared, {}), {fails ? row.failure : before.reference.whole}, prepared, entry,
            "without " + entry);
      ++called;
    }
  }
  // Every row but those that the missing entry would have registered.
  const auto rowsOf = [](const auto& belongs) {
    return std::count_if(Cases().begin(), Cases().end(), belongs);
  };
  const auto all = static_cast<int64_t>(Cases().size());
  const auto globals = rowsOf([](const Case& row) { return row.className.empty(); });
  const auto methods = rowsOf([](const Case& row) { return row.className == "Picture"; });
  EXPECT_EQ(called, 5 * all - globals - methods - (all - globals - methods));
}

INSTANTIATE_TEST_SUITE_P(Openings, RegistrationFaults, ::testing::ValuesIn(Openings()),
                         [](const auto& opening) { return opening.param.name; });

}  // namespace
}  // namespace faults
