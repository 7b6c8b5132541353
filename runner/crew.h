// Worker processes that do numbered tasks: a task that crashes takes its process with it and
// nothing else.
#pragma once

#include <sys/types.h>

#include <csignal>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace runner {

// How a task ended.
struct TaskReport {
  enum class Outcome { kDone, kFailed, kDied };
  size_t task = 0;
  Outcome outcome = Outcome::kDone;
  std::string text;  // what the task gave, why it failed, or what its process died of
  pid_t process = 0;
};

// Makes processes as tasks come, at most `size` at a time. One thread; no other child processes.
class Crew {
 public:
  // Does a task in a worker process and gives text; what it throws makes the task fail.
  using Task = std::function<std::string(size_t)>;

  Crew(size_t size, Task taskFunction) : limit(size), task(std::move(taskFunction)) {}
  // Ends the workers, in the middle of their tasks if need be, and waits for them.
  ~Crew();
  Crew(const Crew&) = delete;
  Crew& operator=(const Crew&) = delete;

  bool HasRoom() const;
  bool IsBusy() const;
  // Needs room. Throws Failure where no process can be made.
  void Start(size_t taskNumber);
  // Waits until at least one task has ended or a signal was handled; signals are as in `duringWait`
  // while it waits.
  std::vector<TaskReport> Wait(const sigset_t& duringWait);
  // Those that live.
  std::vector<pid_t> Processes() const;

 private:
  struct Worker {
    pid_t process = 0;
    int socket = -1;
    std::optional<size_t> task;
  };
  Worker& Hire();
  [[noreturn]] void Work(int socket) const;
  std::optional<TaskReport> Receive(Worker* worker);

  size_t limit;
  Task task;
  std::vector<Worker> workers;
};

}  // namespace runner
