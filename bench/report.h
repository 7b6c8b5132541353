// The figures of a case, as they are measured, printed and kept.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "bench/case.h"
#include "bench/measure.h"

namespace bench {

struct PeerFigure {
  std::string library;
  double nanoseconds = 0;  // per pixel
  double timesAsFast = 0;  // as many times as fast is the plug-in
  bool sameResult = false;
};

// Times are nanoseconds per pixel.
struct Figures {
  std::string operation;
  Size size;
  std::string per;
  double plugin = 0;     // into memory that is there already
  double wholeCall = 0;  // with a picture that the host makes for the call
  std::string limit;     // what the plug-in is compared with; empty: nothing
  double limitTime = 0;
  double limitRatio = 0;
  double limitGoal = 0;  // at most this; 0: no goal
  double peerGoal = 0;   // at least this; 0: no goal
  std::vector<PeerFigure> peers;

  const PeerFigure* BestPeer() const;
  // Nothing where there is no goal, or nothing to hold it against.
  std::optional<bool> GoalMet() const;
};

struct Plan {
  Starter starter;
  std::string instructionSet;  // in use
  Effort effort;
  bool withPeers = true;
};

// Checks the plug-in's result, then times it. Throws host::Error, which says what is wrong, when
// the result isn't what it has to be.
Figures Run(const Case& what, Size size, const Plan& plan);

// What memory alone takes, by each kind of limit.
nlohmann::json MeasureLimits(Size size, const Plan& plan);

void PrintHeading();
void Print(const Figures& figures);
nlohmann::json ToJson(const Figures& figures);

}  // namespace bench
