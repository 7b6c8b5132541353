#include "runner/crew.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <map>
#include <stdexcept>

namespace runner {
namespace {

using Outcome = TaskReport::Outcome;

// Does tasks 0 to count - 1.
std::map<size_t, TaskReport> DoAll(size_t workers, size_t count, const Crew::Task& task) {
  Crew crew(workers, task);
  sigset_t none;
  sigemptyset(&none);
  std::map<size_t, TaskReport> reports;
  size_t next = 0;
  while (next < count || crew.IsBusy()) {
    while (next < count && crew.HasRoom()) crew.Start(next++);
    EXPECT_LE(crew.Processes().size(), workers);
    for (const TaskReport& report : crew.Wait(none)) {
      EXPECT_EQ(reports.count(report.task), 0U) << report.task;
      reports[report.task] = report;
    }
  }
  return reports;
}

TEST(Crew, DoesEveryTaskOnceAndElsewhere) {
  const auto reports = DoAll(3, 50, [](size_t task) {
    return std::to_string(task) + " by " + std::to_string(::getpid());
  });
  ASSERT_EQ(reports.size(), 50U);
  for (const auto& [task, report] : reports) {
    EXPECT_EQ(report.outcome, Outcome::kDone);
    EXPECT_EQ(report.text, std::to_string(task) + " by " + std::to_string(report.process));
    EXPECT_NE(report.process, ::getpid());
  }
}

TEST(Crew, AFailureIsTextAndAWorkerThatDiesTakesOneTaskAlong) {
  const auto reports = DoAll(2, 20, [](size_t task) -> std::string {
    if (task == 3) throw std::runtime_error("no good");
    if (task % 5 == 1) ::raise(SIGKILL);
    if (task == 7) ::_exit(9);
    return "";
  });
  ASSERT_EQ(reports.size(), 20U);
  for (const auto& [task, report] : reports) {
    const bool dies = task % 5 == 1 || task == 7;
    EXPECT_EQ(report.outcome, dies        ? Outcome::kDied
                              : task == 3 ? Outcome::kFailed
                                          : Outcome::kDone)
        << task;
    if (dies) {
      EXPECT_EQ(report.text, task == 7 ? "exit status 9" : "Killed");
    }
  }
  EXPECT_EQ(reports.at(3).text, "no good");
}

TEST(Crew, LongTextsAreCutNotLost) {
  const auto reports = DoAll(1, 2, [](size_t) { return std::string(1'000'000, 'x'); });
  EXPECT_EQ(reports.size(), 2U);
  EXPECT_GT(reports.at(1).text.size(), 50'000U);
}

TEST(Crew, EndsWorkersInTheMiddleOfATask) {
  std::vector<pid_t> processes;
  {
    Crew crew(2, [](size_t) -> std::string {
      for (;;) ::pause();
    });
    crew.Start(0);
    crew.Start(1);
    processes = crew.Processes();
  }
  ASSERT_EQ(processes.size(), 2U);
  for (const pid_t process : processes) EXPECT_NE(::kill(process, 0), 0);
}

}  // namespace
}  // namespace runner
