#include "runner/output_file.h"

#include <csignal>

#include "tests/runner/output_file_fixture.h"

namespace runner {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

TEST_F(OutputFiles, TakesItsPlaceOnlyWhenCommitted) {
  WriteBytes(At("out"), "before");
  {
    OutputFile file(At("out"));
    WriteText(&file, "after");
    EXPECT_EQ(ReadBytes(At("out")), "before");
  }
  EXPECT_EQ(ReadBytes(At("out")), "before");
  EXPECT_EQ(Names(), Texts{"out"});
  {
    OutputFile file(At("out"));
    WriteText(&file, "af");
    OutputFile moved(std::move(file));
    WriteText(&moved, "ter");
    moved.Commit();
  }
  EXPECT_EQ(ReadBytes(At("out")), "after");
  EXPECT_EQ(Names(), Texts{"out"});
}

TEST_F(OutputFiles, SeveralAtOnceDoNotMeet) {
  OutputFile one(At("one")), two(At("two"));
  WriteText(&one, "1");
  WriteText(&two, "2");
  two.Commit();
  one.Commit();
  EXPECT_EQ(ReadBytes(At("one")), "1");
  EXPECT_EQ(ReadBytes(At("two")), "2");
}

TEST_F(OutputFiles, SaysWhyItCannotBeWritten) {
  EXPECT_EQ(ErrorOf([&] { OutputFile{At("no/out")}; }),
            "can't write '" + At("no/out") + "': No such file or directory");
  EXPECT_EQ(ErrorOf([&] { OutputFile(scratch.Folder()); }),
            "can't write '" + scratch.Folder().native() + "': Is a directory");
  EXPECT_EQ(ErrorOf([&] { OutputFile{At(std::string(300, 'x'))}; }),
            "can't write '" + At(std::string(300, 'x')) + "': File name too long");
  EXPECT_EQ(ErrorOf([] { OutputFile{""}; }), "can't write '': No such file or directory");
  EXPECT_EQ(ErrorOf([] {
              OutputFile full("/dev/full");
              WriteText(&full, "text");
            }),
            "can't write '/dev/full': No space left on device");
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
  EXPECT_EQ(Names(), Texts{});
}

TEST_F(OutputFiles, OnlySoManyAreOpenAtATime) {
  std::vector<OutputFile> files;
  for (int i = 0; i < 64; ++i) files.emplace_back(At(std::to_string(i)));
  EXPECT_EQ(ErrorOf([&] { OutputFile{At("more")}; }),
            "can't write '" + At("more") + "': Too many open files");
  files[40].Commit();
  Put(At("more"), "text");
  OutputFile::CommitAll({files.data(), 40});
  OutputFile::CommitAll({files.data() + 41, 23});
  EXPECT_EQ(Names().size(), 65U);
  EXPECT_EQ(Unfinished(), "(none)");
}

TEST_F(OutputFiles, ASignalLeavesNothingBehind) {
  WriteBytes(At("out"), "before");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const int status = StatusOfChild([&] {
      ::signal(signal, SIG_DFL);
      OutputFile::CleanUpOnSignals();
      OutputFile file(At("out"));
      WriteText(&file, "half");
      if (Names().size() == 2) ::raise(signal);
      return false;
    });
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), signal);
    EXPECT_EQ(Names(), Texts{"out"});
    EXPECT_EQ(ReadBytes(At("out")), "before");
  }
}

TEST_F(OutputFiles, ASignalThatIsIgnoredStaysIgnored) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const int status = StatusOfChild([&] {
      ::signal(signal, SIG_IGN);
      OutputFile::CleanUpOnSignals();
      OutputFile file(At("out"));
      WriteText(&file, "text");
      ::raise(signal);
      file.Commit();
      return true;
    });
    EXPECT_EQ(status, 0) << signal;
    EXPECT_EQ(ReadBytes(At("out")), "text");
    fs::remove(At("out"));
  }
}

TEST_F(OutputFiles, WhatAKilledProcessLeftCanBeRemoved) {
  const pid_t child = ::fork();
  if (child == 0) {
    OutputFile file(At("out"));
    WriteText(&file, "half");
    ::raise(SIGKILL);
  }
  ::waitpid(child, nullptr, 0);
  EXPECT_EQ(Names().size(), 1U);
  OutputFile::RemoveLeftovers(scratch.Folder(), child);
  EXPECT_EQ(Names(), Texts{});
}

}  // namespace
}  // namespace runner
