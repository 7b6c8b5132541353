#include "runner/crew.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <map>
#include <stdexcept>

#include "runner/failure.h"

namespace runner {
namespace {

using Outcome = TaskReport::Outcome;

// Does tasks 0 to count - 1.
std::map<size_t, TaskReport> DoAll(size_t workers, size_t count,
                                   const std::function<std::string(size_t)>& task,
                                   const TaskLimits& limits = {}) {
  Crew crew(
      workers, [&](const std::string& order) { return task(std::stoul(order)); }, limits);
  sigset_t none;
  sigemptyset(&none);
  std::map<size_t, TaskReport> reports;
  size_t next = 0;
  while (next < count || crew.IsBusy()) {
    while (next < count && crew.HasRoom())
      if (crew.Start(next, std::to_string(next))) ++next;
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

TEST(Crew, LongTextsComeWhole) {
  const auto textOf = [](size_t task) {
    std::string text;
    for (int i = 0; i < 200'000; ++i) text += std::to_string(i + int(task));
    return text;
  };
  const auto reports = DoAll(2, 4, textOf);
  ASSERT_EQ(reports.size(), 4U);
  for (const auto& [task, report] : reports) EXPECT_TRUE(report.text == textOf(task)) << task;
}

TEST(Crew, ATaskThatTakesTooLongIsEndedAndTheOthersGoOn) {
  const auto reports = DoAll(2, 6,
                             [](size_t task) -> std::string {
                               while (task == 1) ::pause();
                               return "done";
                             },
                             {std::chrono::milliseconds(200), 0});
  ASSERT_EQ(reports.size(), 6U);
  for (const auto& [task, report] : reports)
    EXPECT_EQ(report.outcome, task == 1 ? Outcome::kLate : Outcome::kDone) << task;
}

TEST(Crew, ATaskThatWantsTooMuchMemoryFailsAndTheOthersGoOn) {
#ifdef PICTURE_SANITIZED
  GTEST_SKIP() << "the sanitizers' own memory is beyond any limit";
#endif
  const auto reports =
      DoAll(1, 3,
            [](size_t task) {
              const std::vector<char> block(task == 1 ? 200'000'000 : 1'000'000, 'x');
              return std::to_string(block.size());
            },
            {std::chrono::milliseconds(0), 50'000'000});
  ASSERT_EQ(reports.size(), 3U);
  EXPECT_EQ(reports.at(0).text, "1000000");
  EXPECT_EQ(reports.at(1).outcome, Outcome::kFailed);
  EXPECT_EQ(reports.at(1).text, "there isn't enough memory");
  EXPECT_EQ(reports.at(2).text, "1000000");
}

// While it lives, no descriptor can be opened.
class NoMoreFiles {
 public:
  NoMoreFiles() {
    ::getrlimit(RLIMIT_NOFILE, &before);
    const int next = ::dup(0);
    ::close(next);
    const rlimit none{rlim_t(next), before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
  }
  ~NoMoreFiles() { ::setrlimit(RLIMIT_NOFILE, &before); }

 private:
  rlimit before{};
};

// The second process needs descriptors that there aren't.
TEST(Crew, GoesOnWithTheWorkersThatCouldBeMade) {
  Crew crew(3, [](const std::string& order) { return order; });
  ASSERT_TRUE(crew.Start(0, "zero"));
  const NoMoreFiles noMore;
  EXPECT_FALSE(crew.Start(1, "one"));
  EXPECT_EQ(crew.Shortage(), "can't make a worker process: Too many open files");
  EXPECT_FALSE(crew.HasRoom());
  sigset_t nothing;
  sigemptyset(&nothing);
  ASSERT_EQ(crew.Wait(nothing).at(0).text, "zero");
  ASSERT_TRUE(crew.Start(1, "one"));
  ASSERT_EQ(crew.Wait(nothing).at(0).text, "one");
  Crew other(1, [](const std::string& order) { return order; });
  EXPECT_THROW(other.Start(0, "zero"), Failure);
}

TEST(Crew, EndsWorkersInTheMiddleOfATask) {
  std::vector<pid_t> processes;
  {
    Crew crew(2, [](const std::string&) -> std::string {
      for (;;) ::pause();
    });
    crew.Start(0, "");
    crew.Start(1, "");
    processes = crew.Processes();
  }
  ASSERT_EQ(processes.size(), 2U);
  for (const pid_t process : processes) EXPECT_NE(::kill(process, 0), 0);
}

}  // namespace
}  // namespace runner
