// A million calls over all entries in one process: nothing is left behind, however little.
#include <malloc.h>
#include <unistd.h>

#include <fstream>
#include <iostream>

#include "tests/faults/cases.h"
#include "tests/support/fixture.h"

namespace faults {
namespace {

#ifdef PICTURE_SANITIZED
constexpr int64_t kCalls = 100'000;  // with leaks looked for at the end
#else
constexpr int64_t kCalls = 1'000'000;
#endif

// What a call may leave on the average before it is noticed: the smallest block of memory there is
// is larger, and a leak in one row of a hundred would be, too.
constexpr double kMostBytesPerCall = 0.25;

class Soak : public support::PluginTest {
 protected:
  // Live objects of the host, of every kind.
  int64_t LiveObjects() {
    int64_t count = 0;
    for (const host::Kind kind :
         {host::Kind::kInstance, host::Kind::kPicture, host::Kind::kString,
          host::Kind::kMemoryBlock, host::Kind::kGraphics, host::Kind::kPlatform}) {
      count += Host().census.Live(kind);
    }
    return count;
  }

  static int64_t ResidentBytes() {
    std::ifstream file("/proc/self/statm");
    int64_t size = 0;
    int64_t resident = 0;
    file >> size >> resident;
    return resident * sysconf(_SC_PAGESIZE);
  }

  // Calls the rows one after the other, `count` calls in all. Each has a plug-in that has seen all
  // the others.
  void CallRows(const Opening& opening, int64_t count) {
    const Watch nothing{[] {}, [] {}};
    std::vector<std::pair<const Case*, const host::Callable*>> rows;
    for (const Case& row : Cases()) {
      if (!row.hidden.empty()) continue;
      const bool isMethod = row.part == Part::kMethod || row.part == Part::kSetter;
      rows.emplace_back(&row, isMethod ? &Host().registry.Find(row.className, row.entry) : nullptr);
    }
    for (int64_t i = 0; i < count; ++i) {
      const auto& [row, callable] = rows[static_cast<size_t>(i) % rows.size()];
      Scene scene(Host(), opening, callable, nothing, {});
      row->run(scene);
      Host().TakeException();
    }
  }
};

TEST_F(Soak, AMillionCallsLeaveNothing) {
  std::vector<Opening> openings;
  for (const Opening& opening : Openings()) {
    if (opening.hidden.empty()) openings.push_back(opening);
  }
  const int64_t each = kCalls / static_cast<int64_t>(openings.size()) + 1;
  const int64_t warmUp = each / 10;
  int64_t calls = 0;
  int64_t growth = 0;
  for (const Opening& opening : openings) {
    Start(opening.settings);
    CallRows(opening, warmUp);
    const host::Snapshot before = Host().census.Take();
    const int64_t objects = LiveObjects();
    const int64_t resident = ResidentBytes();
    CallRows(opening, each - warmUp);
    EXPECT_EQ(Host().census.DifferenceText(before), "") << opening;
    EXPECT_EQ(LiveObjects(), objects) << opening;
    growth += ResidentBytes() - resident;
    calls += each;
  }
  std::cout << calls << " calls in " << openings.size() << " ways of opening pictures; "
            << ResidentBytes() / 1024 << " KiB resident, " << growth / 1024
            << " KiB more than after each way's first calls\n";
  EXPECT_GE(calls, kCalls);
#ifndef PICTURE_SANITIZED
  // The sanitizer keeps freed memory for a while.
  EXPECT_LE(static_cast<double>(growth), kMostBytesPerCall * static_cast<double>(calls));
#endif
}

}  // namespace
}  // namespace faults
