// Every registered entry, with every host function missing and every host call failing.
#include <iostream>

#include "tests/faults/fault_test.h"

namespace faults {
namespace {

// A reference that isn't taken can't be told from one that is: the host's function returns nothing.
bool CanFail(std::string_view entry) { return entry != "REALLockObject"; }

// So many host calls, that can fail, a row makes at least, by what it opens and makes.
int64_t CallsImplied(const Case& row, const Opening& opening) {
  constexpr int kReferencesToRead = 1;
  constexpr int kReferencesToMake = 2;
  // Without pixels there is only the alpha channel to ask for, and the lock to be refused.
  const int toRead = row.inPlace && opening.drawn ? 2 : opening.CallsToRead() - kReferencesToRead;
  const bool makes = !(row.alphaOutput && opening.Alpha() && !opening.makesAlpha);
  const int toMake = makes ? opening.CallsToMake() - kReferencesToMake : 0;
  return int64_t{row.sources} * toRead + int64_t{row.outputs} * toMake;
}

class HostFaults : public FaultTest {
 protected:
  static void Tell(const char* what, int64_t count, int64_t implied) {
    std::cout << GetParam().name << ", " << what << ": " << count << ", at least " << implied
              << " by the tables\n";
  }
};

// The plug-in whose variables were put back calls the host as one does that was just loaded.
TEST_P(HostFaults, StartAnewEachTime) {
  const std::vector<Prepared> rows = PrepareRows();
  for (const size_t i : {size_t{0}, rows.size() / 2, rows.size() - 1}) {
    Load();
    Prepared first = rows[i];
    first.callable = CallableOf(*first.row);
    const Outcome outcome = Run(first, {});
    EXPECT_EQ(outcome.calls, rows[i].reference.calls) << first.row->Name();
    EXPECT_EQ(outcome.text, rows[i].reference.whole);
  }
}

TEST_P(HostFaults, EveryFailingCallHasItsDocumentedOutcome) {
  int64_t faults = 0;
  int64_t implied = 0;
  for (const Prepared& prepared : PrepareRows()) {
    const Reference& reference = prepared.reference;
    const std::vector<Phase> phases = PhasesOf(*prepared.row, reference);
    implied += CallsImplied(*prepared.row, GetParam());
    for (size_t k = 0; k < reference.calls.size(); ++k) {
      const std::string& entry = reference.calls[k];
      if (!CanFail(entry)) continue;
      const Outcome outcome =
          Run(prepared, [&] { Host().faults.FailNthOfAll(static_cast<int64_t>(k + 1)); });
      Check(outcome, AllowedWhenFailing(*prepared.row, GetParam(), reference, entry, phases[k]),
            prepared, entry, "call " + std::to_string(k + 1) + ", " + entry + ", fails");
      ++faults;
    }
  }
  Tell("failing calls", faults, implied);
  EXPECT_GE(faults, implied);
}

TEST_P(HostFaults, EveryMissingEntryHasItsDocumentedOutcome) {
  int64_t faults = 0;
  const std::vector<Prepared> rows = PrepareRows();
  const std::vector<std::string> entries = host::FaultInjector::AllEntries();
  for (const std::string& entry : entries) {
    for (const Prepared& prepared : rows) {
      const Outcome outcome = Run(prepared, [&] { Host().faults.Hide(entry); });
      Check(outcome, AllowedWhenMissing(*prepared.row, GetParam(), prepared.reference, entry),
            prepared, entry, "without " + entry);
      ++faults;
    }
  }
  const auto implied = static_cast<int64_t>(Cases().size() * entries.size());
  Tell("missing entries", faults, implied);
  EXPECT_GE(faults, implied);
}

INSTANTIATE_TEST_SUITE_P(Openings, HostFaults, ::testing::ValuesIn(Openings()),
                         [](const auto& opening) { return opening.param.name; });

}  // namespace
}  // namespace faults
