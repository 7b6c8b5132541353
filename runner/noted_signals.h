// Signals that are to be heeded when the time has come.
#pragma once

#include <csignal>

namespace runner {

// While this lives, SIGINT, SIGTERM and SIGHUP are only noted, and only where signals are let in.
// One that is ignored stays ignored. At most one at a time.
class NotedSignals {
 public:
  NotedSignals();
  ~NotedSignals();
  NotedSignals(const NotedSignals&) = delete;
  NotedSignals& operator=(const NotedSignals&) = delete;

  // Whether one was noted, or waits to be let in.
  bool HasCome() const { return Number() != 0; }
  // Which; 0: none.
  int Number() const;
  // The signals that are blocked where they are let in.
  const sigset_t& LetIn() const { return before; }

 private:
  sigset_t before{};
  sigset_t noted{};
};

}  // namespace runner
