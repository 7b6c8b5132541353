// Every registered entry, and the plug-in's start, with every call of malloc and calloc failing.
#include <iostream>

#include "tests/faults/fault_test.h"

namespace faults {
namespace {

class MemoryFaults : public FaultTest {
 protected:
  // Each test loads what it needs.
  void SetUp() override {}
};

// So many blocks of memory a row takes at least that its entry is known to take.
int64_t BlocksImplied(const Case& row, const Opening& opening) {
  const bool makes = !(row.alphaOutput && opening.Alpha() && !opening.makesAlpha);
  if (row.entry.starts_with("PicturetoBinaryString")) return 1;
  if (row.entry.starts_with("BinaryStringtoPicture")) return row.hidden.empty() ? 0 : 1;
  if (row.entry.starts_with("ExtractColorRectangleMask")) return makes ? 2 : 0;
  if (row.entry.starts_with("RenderSamples")) return row.failure == "nil" && row.outputs > 0;
  // A picture without pixels isn't opened to be scrolled, but its mask is.
  if (row.label == "wrapping, with the mask") return opening.drawn ? 1 : 2;
  if (row.entry.starts_with("ScrollKRT") && row.label == "wrapping") return opening.drawn ? 0 : 2;
  if (row.label == "wrapping") return opening.drawn ? 0 : 1;
  return 0;
}

TEST_P(MemoryFaults, EveryRowHasItsDocumentedOutcomeWithoutMemory) {
  LoadInternalsInstead();
  support::MemoryCalls& memory = support::MemoryCallsOf(internals);
  int64_t faults = 0;
  int64_t implied = 0;
  for (const Prepared& prepared : PrepareRows()) {
    int64_t blocks = 0;
    const auto count = [&] { memory.FailNth(0); };
    Run(prepared, count);
    blocks = memory.made;
    implied += BlocksImplied(*prepared.row, GetParam());
    for (int64_t k = 1; k <= blocks; ++k) {
      const Outcome outcome = Run(prepared, [&] { memory.FailNth(k); });
      Check(outcome, AllowedWithoutMemory(*prepared.row, GetParam(), prepared.reference), prepared,
            "memory", "block " + std::to_string(k) + " of memory isn't there");
      ++faults;
    }
    memory.FailNth(0);
  }
  std::cout << GetParam().name << ", failing allocations: " << faults << ", at least " << implied
            << " by the tables\n";
  EXPECT_GE(faults, implied);
}

// Hosts that read short definitions have them made in memory. A definition that can't be made isn't
// registered, nor are rows that can't be made; whatever is there can be called.
TEST_P(MemoryFaults, TheStartRegistersWhatThereIsMemoryFor) {
  StartWithoutPlugin(GetParam().settings);
  const int64_t blocks = support::LoadInternalsWithoutMemory(Host(), 0);
  // Two classes of a definition, properties and methods each, the extension without properties.
  EXPECT_EQ(blocks, GetParam().Old() ? 2 * 3 + 2 : 0);
  for (int64_t k = 1; k <= blocks; ++k) {
    StartWithoutPlugin(GetParam().settings);
    support::LoadInternalsWithoutMemory(Host(), k);
    const auto& classes = Host().registry.Classes();
    size_t definitions = classes.size();
    size_t rows = 0;
    for (const host::RegisteredClass& known : classes) {
      rows += known.properties.size() + known.methods.size();
    }
    const bool definitionFails = k == 1 || k == 4 || k == 7;
    EXPECT_EQ(definitions, definitionFails ? 2U : 3U) << "block " << k;
    constexpr size_t kSepia[] = {12, 2};
    constexpr size_t kLut[] = {6, 3};
    constexpr size_t kExtension = 40;
    const size_t lost[] = {14, kSepia[0], kSepia[1], 9, kLut[0], kLut[1], kExtension, kExtension};
    EXPECT_EQ(rows, 14 + 9 + kExtension - lost[k - 1]) << "block " << k;
    EXPECT_EQ(Host().registry.GlobalMethods().size(), 6U);
    EXPECT_TRUE(Host().census.Errors().empty()) << Host().census.Errors().front();
  }
}

INSTANTIATE_TEST_SUITE_P(Openings, MemoryFaults, ::testing::ValuesIn(Openings()),
                         [](const auto& opening) { return opening.param.name; });

}  // namespace
}  // namespace faults
