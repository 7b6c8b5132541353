// A batch that is interrupted, and workers that are killed.
#include <csignal>
#include <filesystem>
#include <thread>

#include "tests/runner/batch_fixture.h"

namespace runner {
namespace {

using BatchSignals = Batch;

TEST_F(BatchSignals, AWorkerThatDiesIsReportedAndTheRestGoesOn) {
  SaveSlow("slow.bmp");
  Save(Noise(8, 8), scratch / "next.png", "png");
  Program program(
      {"batch", "InvertKRT", "slow.bmp", "next.png", "-d", "out", "-f", "png", "-j", "1"}, Here());
  ASSERT_TRUE(WaitForUnfinished("out"));
  const std::vector<pid_t> workers = program.Children();
  ASSERT_EQ(workers.size(), 1U);
  ::kill(workers[0], SIGKILL);
  const Finished finished = program.Wait();
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.err,
            "picturehost: slow.bmp: the process that worked on it died: Killed\n"
            "1 written to out, 1 failed\n");
  EXPECT_EQ(Names("out"), std::vector<std::string>{"next.png"});
  ExpectInverted("next.png", "out/next.png");
}

TEST_F(BatchSignals, AnInterruptLeavesWholeFilesAndCanBeTakenUpAgain) {
  Save(Noise(8, 8), scratch / "first.png", "png");
  SaveSlow("slow.bmp");
  Save(Noise(8, 8), scratch / "last.png", "png");
  const std::vector<std::string> arguments = {"batch",    "InvertKRT", "first.png", "slow.bmp",
                                              "last.png", "-d",        "out",       "-f",
                                              "png",      "-j",        "1",         "--resume"};
  for (const int signal : {SIGINT, SIGTERM}) {
    Program program(arguments, Here());
    ASSERT_TRUE(WaitForUnfinished("out"));
    // Until the unfinished file is the slow one's.
    while (!fs::exists(scratch / "out/first.png")) std::this_thread::yield();
    ASSERT_TRUE(WaitForUnfinished("out"));
    const std::vector<pid_t> workers = program.Children();
    ::kill(program.Process(), signal);
    const Finished finished = program.Wait();
    EXPECT_EQ(finished.status, 128 + signal);
    EXPECT_NE(finished.err.find("picturehost: interrupted, "), std::string::npos);
    EXPECT_EQ(Names("out"), std::vector<std::string>{"first.png"});
    for (const pid_t worker : workers) EXPECT_NE(::kill(worker, 0), 0);
  }
  const Finished finished = RunProgram(arguments, Here());
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(finished.err, "2 written to out, 1 done before\n");
  ExpectInverted("slow.bmp", "out/slow.png");
  ExpectInverted("last.png", "out/last.png");
}

TEST_F(BatchSignals, ASignalThatIsIgnoredDoesNotInterrupt) {
  SaveSlow("slow.bmp");
  Save(Noise(8, 8), scratch / "last.png", "png");
  for (const int signal : {SIGHUP, SIGINT}) {
    Surroundings around = Here();
    around.ignored = signal;
    Program program(
        {"batch", "InvertKRT", "slow.bmp", "last.png", "-d", "out", "-f", "png", "-j", "1"},
        around);
    ASSERT_TRUE(WaitForUnfinished("out"));
    const std::vector<pid_t> workers = program.Children();
    ASSERT_EQ(workers.size(), 1U);
    ::kill(workers[0], signal);
    ::kill(program.Process(), signal);
    const Finished finished = program.Wait();
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.err, "2 written to out\n");
    fs::remove_all(scratch / "out");
  }
}

TEST_F(BatchSignals, WorkersDoNotOutliveTheProgram) {
  SaveSlow("slow.bmp");
  Program program({"batch", "InvertKRT", "slow.bmp", "-d", "out", "-f", "png", "-j", "1"}, Here());
  ASSERT_TRUE(WaitForUnfinished("out"));
  ::kill(program.Process(), SIGKILL);
  program.Wait();  // its pipes close when the last of them has ended
  EXPECT_EQ(Names("out"), std::vector<std::string>{});
}

}  // namespace
}  // namespace runner
