#include "bench/measure.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>

namespace bench {

namespace {

// Keeps the time of one run of each benchmark, by the benchmark's name.
class Collector : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) times[run.run_name.function_name] = run.GetAdjustedCPUTime();
  }

  std::map<std::string, double> times;
};

}  // namespace

std::vector<Rounds> Measure(const std::vector<Contender>& contenders, const Effort& effort) {
  std::vector<benchmark::internal::Benchmark*> registered;
  for (const Contender& contender : contenders) {
    const auto loop = [run = contender.run](benchmark::State& state) {
      for (auto _ : state) run();
    };
    auto* made = benchmark::RegisterBenchmark(contender.name.c_str(), loop);
    registered.push_back(
        made->Unit(benchmark::kNanosecond)->MeasureProcessCPUTime()->Iterations(1));
  }

  // Two rounds warm up and tell how many runs make a turn.
  Collector collector;
  std::vector<Rounds> rounds(contenders.size());
  double turns = 0;
  int last = effort.rounds;
  for (int round = -2; round < last; ++round) {
    benchmark::RunSpecifiedBenchmarks(&collector, nullptr, "all");
    for (size_t i = 0; i < contenders.size(); ++i) {
      const double time = collector.times[contenders[i].name];
      if (round >= 0) rounds[i].push_back(time);
      if (round != -1) continue;
      turns += std::max(time * 1e-9, effort.secondsPerTurn);
      const double runs = effort.secondsPerTurn * 1e9 / std::max(time, 1.0);
      registered[i]->Iterations(std::clamp<int64_t>(static_cast<int64_t>(runs), 1, 1'000'000));
    }
    if (round == -1) last = std::clamp(static_cast<int>(effort.secondsAtMost / turns), 1, last);
  }
  benchmark::ClearRegisteredBenchmarks();
  return rounds;
}

}  // namespace bench
