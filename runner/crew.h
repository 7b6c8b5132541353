// Worker processes that do numbered tasks: a task that crashes takes its process with it and
// nothing else.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace runner {

// How a task ended.
struct TaskReport {
  // kLate: it took too long, and its process was ended.
  enum class Outcome { kDone, kFailed, kDied, kLate };
  uint64_t task = 0;
  Outcome outcome = Outcome::kDone;
  std::string text;  // what the task gave, why it failed, or what its process died of
  pid_t process = 0;
  double seconds = 0;  // from the start to the report
};

// What one task may take; zero: as much as it wants.
struct TaskLimits {
  std::chrono::milliseconds time{0};
  uint64_t memory = 0;  // bytes that a worker may have besides what it began with
};

// Makes processes as tasks come, at most `size` at a time. One thread; no other child processes.
class Crew {
 public:
  // Does what an order says, in a worker process, and gives text; what it throws makes the task
  // fail.
  using Task = std::function<std::string(const std::string& order)>;

  Crew(size_t size, Task taskFunction, TaskLimits taskLimits = {})
      : most(size), limits(taskLimits), task(std::move(taskFunction)) {}
  // Ends the workers, in the middle of their tasks if need be, and waits for them.
  ~Crew();
  Crew(const Crew&) = delete;
  Crew& operator=(const Crew&) = delete;

  bool HasRoom() const;
  bool IsBusy() const;
  // Needs room. False: no process could be made, and the work goes on with those that there are.
  // Throws Failure where there is none.
  bool Start(uint64_t taskNumber, const std::string& order);
  // Waits until at least one task has ended, was ended, or a signal was handled; signals are as in
  // `duringWait` while it waits.
  std::vector<TaskReport> Wait(const sigset_t& duringWait);
  // Those that live.
  std::vector<pid_t> Processes() const;
  // Why there are fewer workers than were wanted; empty: there aren't.
  const std::string& Shortage() const { return shortage; }

 private:
  using Clock = std::chrono::steady_clock;
  struct Worker {
    pid_t process = 0;
    int socket = -1;
    std::optional<uint64_t> task;
    std::string report;  // the part that has come
    Clock::time_point started;
    Clock::time_point end;  // when it is ended, or ended for good
    bool isLate = false;
  };
  Worker* Hire();
  [[noreturn]] void Work(int socket) const;
  std::optional<TaskReport> Receive(Worker* worker);
  // Closes its socket, on which an idle worker ends, and gives its status.
  static int Dismiss(Worker* worker);
  std::optional<timespec> TimeLeft() const;
  void EndLateWorkers();

  size_t most;
  TaskLimits limits;
  Task task;
  std::vector<Worker> workers;
  std::string shortage;
};

}  // namespace runner
