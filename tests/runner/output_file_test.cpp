#include "runner/output_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

#include "runner/failure.h"
#include "tests/runner/images.h"
#include "tests/runner/scratch.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

size_t FilesIn(const fs::path& folder) {
  return size_t(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

void WriteText(OutputFile* file, const std::string& text) { file->Write(text.data(), text.size()); }

std::string ErrorOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const Failure& failure) {
    return failure.what();
  }
  return "(no error)";
}

TEST(OutputFile, TakesItsPlaceOnlyWhenCommitted) {
  const Scratch scratch;
  WriteBytes(scratch / "out", "before");
  {
    OutputFile file(scratch / "out");
    WriteText(&file, "after");
    EXPECT_EQ(ReadBytes(scratch / "out"), "before");
  }
  EXPECT_EQ(ReadBytes(scratch / "out"), "before");
  EXPECT_EQ(FilesIn(scratch.Folder()), 1U);
  {
    OutputFile file(scratch / "out");
    WriteText(&file, "af");
    OutputFile moved(std::move(file));
    WriteText(&moved, "ter");
    moved.Commit();
  }
  EXPECT_EQ(ReadBytes(scratch / "out"), "after");
  EXPECT_EQ(FilesIn(scratch.Folder()), 1U);
}

TEST(OutputFile, SeveralAtOnceDoNotMeet) {
  const Scratch scratch;
  OutputFile one(scratch / "one"), two(scratch / "two");
  WriteText(&one, "1");
  WriteText(&two, "2");
  two.Commit();
  one.Commit();
  EXPECT_EQ(ReadBytes(scratch / "one"), "1");
  EXPECT_EQ(ReadBytes(scratch / "two"), "2");
}

TEST(OutputFile, FollowsLinksAndKeepsRights) {
  const Scratch scratch;
  WriteBytes(scratch / "real", "before");
  ::chmod((scratch / "real").c_str(), 0640);
  fs::create_symlink("real", scratch / "link");
  OutputFile file(scratch / "link");
  WriteText(&file, "after");
  file.Commit();
  EXPECT_TRUE(fs::is_symlink(scratch / "link"));
  EXPECT_EQ(ReadBytes(scratch / "real"), "after");
  EXPECT_EQ(fs::status(scratch / "real").permissions(), fs::perms(0640));
}

TEST(OutputFile, SaysWhyItCannotBeWritten) {
  const Scratch scratch;
  EXPECT_EQ(ErrorOf([&] { OutputFile(scratch / "no/out"); }),
            "can't write '" + (scratch / "no/out") + "': No such file or directory");
  EXPECT_EQ(ErrorOf([&] { OutputFile(scratch.Folder()); }),
            "can't write '" + scratch.Folder().native() + "': Is a directory");
  EXPECT_EQ(ErrorOf([&] { OutputFile{scratch / std::string(300, 'x')}; }),
            "can't write '" + (scratch / std::string(300, 'x')) + "': File name too long");
  EXPECT_EQ(ErrorOf([] { OutputFile{""}; }), "can't write '': No such file or directory");
  EXPECT_EQ(ErrorOf([] {
              OutputFile full("/dev/full");
              WriteText(&full, "text");
            }),
            "can't write '/dev/full': No space left on device");
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
  EXPECT_EQ(FilesIn(scratch.Folder()), 0U);
}

TEST(OutputFile, ASignalLeavesNothingBehind) {
  const Scratch scratch;
  WriteBytes(scratch / "out", "before");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const pid_t child = ::fork();
    if (child == 0) {
      OutputFile::CleanUpOnSignals();
      OutputFile file(scratch / "out");
      WriteText(&file, "half");
      if (FilesIn(scratch.Folder()) == 2) ::raise(signal);
      ::_exit(1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), signal);
    EXPECT_EQ(FilesIn(scratch.Folder()), 1U);
    EXPECT_EQ(ReadBytes(scratch / "out"), "before");
  }
}

TEST(OutputFile, WhatAKilledProcessLeftCanBeRemoved) {
  const Scratch scratch;
  const pid_t child = ::fork();
  if (child == 0) {
    OutputFile file(scratch / "out");
    WriteText(&file, "half");
    ::raise(SIGKILL);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(FilesIn(scratch.Folder()), 1U);
  OutputFile::RemoveLeftovers(scratch.Folder(), child);
  EXPECT_EQ(FilesIn(scratch.Folder()), 0U);
}

}  // namespace
}  // namespace runner
