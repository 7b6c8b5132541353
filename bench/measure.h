// Contenders timed against each other, in turns.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Contender {
  std::string name;
  std::function<void()> run;
};

// How long to measure: so many rounds, in each of which every contender runs for about so long.
struct Effort {
  int rounds = 15;
  double secondsPerTurn = 0.01;
  double secondsAtMost = 12;  // fewer rounds where contenders are slow
};

// Nanoseconds of processor time per run of one contender in each round. Contenders take turns
// within a round, so that what else the machine does meets all of them, and figures of one round
// can be compared. Threads that a contender starts count in full.
using Rounds = std::vector<double>;

// The rounds of each contender, in their order. Google Benchmark does the timing.
std::vector<Rounds> Measure(const std::vector<Contender>& contenders, const Effort& effort);

double Median(std::vector<double> values);
// The median of one contender's time over another's, round by round.
double MedianRatio(const Rounds& of, const Rounds& to);

}  // namespace bench
