// What is timed: one row for each operation, and what a row needs to run.
#pragma once

#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "bench/limits.h"
#include "bench/stage.h"

namespace bench {

// How fast is fast enough, on large pictures: at most so many times the limit, by the instruction
// set in use, and at least so many times as fast as the fastest library. 0: no such goal.
struct Goal {
  double limitAvx2 = 0;
  double limitAvx512 = 0;
  double peer = 0;
};

// A case at one size, ready to be run.
struct Work {
  std::function<void()> call;          // the plug-in's, its result let go
  std::function<std::string()> check;  // calls the plug-in once; says what is wrong, if anything
  Area area;                           // for the limit and the peers
  int64_t pixels = 0;                  // that the call works on
  std::vector<Picture> sources;        // in the order of the area's
  // Whether the target holds what the plug-in has to give: tells which peers compute the same.
  std::function<bool()> targetIsRight;
};

struct Case {
  std::string name;  // the registered one; what is special about the case after a blank
  Limit limit = Limit::none;
  Goal goal;
  std::function<Work(Stage&, Size)> prepare;
  std::string peers;  // the name under which libraries have it; empty: none does
  Layout source = Layout::rgba;
  Layout target = Layout::rgba;
  Output timed = Output::prepared;  // what the goal is for
  const char* per = "pixel";
  // Larger pictures take the plain restatement minutes.
  int64_t largest = std::numeric_limits<int64_t>::max();
  // The call takes much memory of its own for what it hands over; timed into prepared memory, it
  // gets what an earlier call has freed.
  bool ownMemory = false;
};

// Every case, in the order of the report.
const std::vector<Case>& AllCases();

// By family.
std::vector<Case> TonalCases();
std::vector<Case> ColourCases();
std::vector<Case> SearchCases();
std::vector<Case> CompositionCases();
std::vector<Case> ClassCases();

}  // namespace bench
