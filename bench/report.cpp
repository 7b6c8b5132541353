#include "bench/report.h"

#include <malloc.h>

#include <cstdio>
#include <nlohmann/json.hpp>

#include "bench/contents.h"
#include "bench/host_calls.h"
#include "bench/map_case.h"
#include "bench/peers/peers.h"

namespace bench {

namespace {

// Pictures up to this many pixels are icons: what counts for them is what a call costs besides.
constexpr int64_t kIconPixels = 1024;
constexpr double kIconGoal = 1.5;
// From so many pixels on pictures don't fit into caches, and the goals are for them.
constexpr int64_t kLargePixels = 4'000'000;

double GoalFor(const Goal& goal, const std::string& instructionSet) {
  return instructionSet == "avx512" ? goal.limitAvx512
         : instructionSet == "avx2" ? goal.limitAvx2
                                    : 0;
}

void RequireRight(const Case& what, const Work& work, Stage& stage) {
  for (const Output output : {Output::fresh, Output::prepared}) {
    stage.SetOutput(output);
    const std::string wrong = work.check();
    if (!wrong.empty()) throw host::Error(what.name + " is wrong: " + wrong);
  }
}

// The C library gives large blocks back to the system at once, from some size on that it adapts;
// the largest that it comes to by itself is 32 MB.
void KeepFreedMemory(bool keepAll) {
  mallopt(M_MMAP_THRESHOLD, keepAll ? 1 << 30 : 32 << 20);
  mallopt(M_TRIM_THRESHOLD, keepAll ? 1 << 30 : 64 << 20);
}

// A peer's figure is told apart by whether its result is the plug-in's.
bool SameResult(const Work& work, const std::function<void()>& run, Stage& stage) {
  stage.SpoilTarget();
  run();
  return work.targetIsRight && work.targetIsRight();
}

}  // namespace

const PeerFigure* Figures::BestPeer() const {
  const PeerFigure* best = nullptr;
  for (const PeerFigure& peer : peers) {
    if (best == nullptr || peer.nanoseconds < best->nanoseconds) best = &peer;
  }
  return best;
}

std::optional<bool> Figures::GoalMet() const {
  std::optional<bool> met;
  if (limitGoal > 0 && limitRatio > 0) met = limitRatio <= limitGoal;
  if (const PeerFigure* best = BestPeer(); best != nullptr && peerGoal > 0) {
    met = met.value_or(true) && best->timesAsFast >= peerGoal;
  }
  return met;
}

Figures Run(const Case& what, Size size, const Plan& plan) {
  KeepFreedMemory(what.ownMemory);
  Stage stage(plan.starter, what.source, what.target);
  const Work work = what.prepare(stage, size);
  RequireRight(what, work, stage);

  std::vector<Contender> contenders;
  const auto plugin = [&](Output output) {
    return [&, output] {
      stage.SetOutput(output);
      work.call();
    };
  };
  contenders.push_back({"plug-in", plugin(Output::prepared)});
  contenders.push_back({"whole call", plugin(Output::fresh)});

  const bool icon = size.Pixels() <= kIconPixels;
  const std::function<void()> limit =
      icon ? RepeatHostCalls(stage, work) : MakeLimit(what.limit, work.area);
  const std::string limitName = icon ? "host calls alone" : NameOf(what.limit);
  if (limit) contenders.push_back({limitName, limit});

  Figures figures;
  if (plan.withPeers && !what.peers.empty()) {
    for (const Peer& peer : AllPeers()) {
      if (peer.operation != what.peers) continue;
      const auto run = peer.prepare(work.area);
      figures.peers.push_back({peer.library, 0, 0, SameResult(work, run, stage)});
      contenders.push_back({peer.library, run});
    }
  }

  const std::vector<Rounds> rounds = Measure(contenders, plan.effort);
  const auto perPixel = [&](size_t i) {
    return Median(rounds[i]) / static_cast<double>(work.pixels);
  };
  figures.operation = what.name;
  figures.size = size;
  figures.per = what.per;
  figures.plugin = perPixel(0);
  figures.wholeCall = perPixel(1);
  const Rounds& compared = rounds[icon || what.timed == Output::fresh ? 1 : 0];
  if (limit) {
    figures.limit = limitName;
    figures.limitTime = perPixel(2);
    figures.limitRatio = MedianRatio(compared, rounds[2]);
  }
  for (size_t i = 0; i < figures.peers.size(); ++i) {
    const size_t at = contenders.size() - figures.peers.size() + i;
    figures.peers[i].nanoseconds = perPixel(at);
    figures.peers[i].timesAsFast = MedianRatio(rounds[at], compared);
  }
  if (icon) figures.limitGoal = kIconGoal;
  if (size.Pixels() >= kLargePixels) {
    figures.limitGoal = GoalFor(what.goal, plan.instructionSet);
    figures.peerGoal = what.goal.peer;
  }
  return figures;
}

nlohmann::json MeasureLimits(Size size, const Plan& plan) {
  Stage stage(plan.starter, Layout::rgba, Layout::rgba);
  const std::vector<Picture> sources = {stage.Paint(size, Photo), stage.Paint(size, Noise)};
  const Area area = AreaOf(sources, stage.Target(size), WholeOf(size));
  std::vector<Contender> contenders;
  for (const Limit limit :
       {Limit::copy, Limit::read, Limit::fill, Limit::twoReadsAndWrite, Limit::moveInPlace}) {
    contenders.push_back({NameOf(limit), MakeLimit(limit, area)});
  }
  const std::vector<Rounds> rounds = Measure(contenders, plan.effort);
  nlohmann::json limits = nlohmann::json::array();
  for (size_t i = 0; i < contenders.size(); ++i) {
    limits.push_back({{"width", size.width},
                      {"height", size.height},
                      {"limit", contenders[i].name},
                      {"time", Median(rounds[i]) / static_cast<double>(size.Pixels())}});
  }
  return limits;
}

void PrintHeading() {
  std::printf("%-46s %10s %8s %8s  %-30s  %-26s %s\n", "operation", "size", "ns/pixel", "whole",
              "ratio to the limit", "ratio to the best peer", "goal");
}

void Print(const Figures& figures) {
  const std::string size =
      std::to_string(figures.size.width) + "x" + std::to_string(figures.size.height);
  char limit[80] = "-";
  if (!figures.limit.empty()) {
    char goal[24] = "";
    if (figures.limitGoal > 0) std::snprintf(goal, sizeof goal, " (<= %.2f)", figures.limitGoal);
    std::snprintf(limit, sizeof limit, "%.2f %s%s", figures.limitRatio, figures.limit.c_str(),
                  goal);
  }
  char peer[80] = "-";
  if (const PeerFigure* best = figures.BestPeer()) {
    char goal[24] = "";
    if (figures.peerGoal > 0) std::snprintf(goal, sizeof goal, " (>= %.2f)", figures.peerGoal);
    std::snprintf(peer, sizeof peer, "%.2f %s%s%s", best->timesAsFast, best->library.c_str(),
                  best->sameResult ? "" : "~", goal);
  }
  const auto met = figures.GoalMet();
  std::printf("%-46s %10s %8.3f %8.3f  %-30s  %-26s %s\n", figures.operation.c_str(), size.c_str(),
              figures.plugin, figures.wholeCall, limit, peer,
              !met   ? "-"
              : *met ? "yes"
                     : "NO");
  std::fflush(stdout);
}

nlohmann::json ToJson(const Figures& figures) {
  nlohmann::json json = {
      {"operation", figures.operation},
      {"width", figures.size.width},
      {"height", figures.size.height},
      {"per", figures.per},
      {"plugin", figures.plugin},
      {"whole_call", figures.wholeCall},
      {"limit", figures.limit},
      {"limit_time", figures.limitTime},
      {"limit_ratio", figures.limitRatio},
      {"limit_goal", figures.limitGoal},
      {"peer_goal", figures.peerGoal},
      {"peers", nlohmann::json::array()},
  };
  for (const PeerFigure& peer : figures.peers) {
    json["peers"].push_back({{"library", peer.library},
                             {"time", peer.nanoseconds},
                             {"ratio", peer.timesAsFast},
                             {"same_result", peer.sameResult}});
  }
  if (const auto met = figures.GoalMet()) json["goal_met"] = *met;
  return json;
}

}  // namespace bench
