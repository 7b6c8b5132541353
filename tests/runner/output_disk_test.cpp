// What reaches the disk in which order, and what is there when that is cut short.
#include <fcntl.h>

#include <cerrno>
#include <csignal>
#include <set>
#include <sstream>

#include "places.h"
#include "runner/commands.h"
#include "tests/runner/disk_calls.h"
#include "tests/runner/output_file_fixture.h"

namespace runner {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;
using Calls = std::vector<DiskCall>;

class OutputDisk : public OutputFiles {
 protected:
  ino_t Inode(const std::string& name) { return StatusOf(At(name)).st_ino; }

  // The calls that an action makes.
  static Calls CallsOf(const std::function<void()>& action) {
    Calls calls;
    const WatchedDisk disk([&](const DiskCall& call) {
      if (calls.empty() || !(calls.back() == call)) calls.push_back(call);
      return 0;
    });
    action();
    return calls;
  }

  // Files called a, b and so on with the text "new", ready to be committed over "old".
  std::vector<OutputFile> Stage(const std::string& names) {
    std::vector<OutputFile> files;
    for (const char name : names) {
      WriteBytes(At({name}), "old");
      files.emplace_back(At({name}));
      WriteText(&files.back(), "new");
    }
    return files;
  }

  // Kills a process that commits "new" bytes before its first call, its second and so on. `look` is
  // called each time.
  int KillEverywhere(const std::string& text, const std::function<void()>& prepare,
                     const std::function<void()>& look) {
    for (int killed = 0;; ++killed) {
      prepare();
      const int status = StatusOfChild([&] {
        OutputFile file(At("out"));
        WriteText(&file, text);
        int calls = 0;
        const WatchedDisk disk([&](const DiskCall&) {
          if (calls++ == killed) ::raise(SIGKILL);
          return 0;
        });
        file.Commit();
        return true;
      });
      if (status == 0) return killed;
      EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
      look();
      if (HasFailure() || killed == 1000) return killed;
      for (const std::string& name : Names()) fs::remove(At(name));
    }
  }
};

TEST_F(OutputDisk, BytesAreFlushedBeforeThePlaceAndTheFolderAfterIt) {
  OutputFile file(At("out"));
  WriteText(&file, "text");
  const Calls calls = CallsOf([&] { file.Commit(); });
  EXPECT_EQ(calls,
            (Calls{{"fsync", Inode("out")}, {"rename", Inode("out")}, {"fsync", Inode(".")}}));
}

TEST_F(OutputDisk, OfSeveralAllAreFlushedFirstAndEachFolderOnce) {
  fs::create_directory(At("sub"));
  std::vector<OutputFile> files;
  for (const std::string name : {"a", "sub/b", "c"}) {
    files.emplace_back(At(name));
    WriteText(&files.back(), name);
  }
  const Calls calls = CallsOf([&] { OutputFile::CommitAll(files); });
  EXPECT_EQ(calls, (Calls{{"fsync", Inode("a")},
                          {"fsync", Inode("sub/b")},
                          {"fsync", Inode("c")},
                          {"rename", Inode("a")},
                          {"rename", Inode("sub/b")},
                          {"rename", Inode("c")},
                          {"fsync", Inode(".")},
                          {"fsync", Inode("sub")}}));
}

TEST_F(OutputDisk, TheFolderCanBeLeftToTheCaller) {
  fs::create_directory(At("sub"));
  fs::create_symlink("sub/real", At("link"));
  OutputFile plain(At("out")), linked(At("link"));
  Calls calls = CallsOf([&] { plain.Commit(OutputFile::Folder::kLeftToCaller); });
  EXPECT_EQ(calls, (Calls{{"fsync", Inode("out")}, {"rename", Inode("out")}}));
  calls = CallsOf([&] { OutputFile::FlushFolder(scratch.Folder()); });
  EXPECT_EQ(calls, (Calls{{"fsync", Inode(".")}}));
  // The caller doesn't know this one.
  calls = CallsOf([&] { linked.Commit(OutputFile::Folder::kLeftToCaller); });
  EXPECT_EQ(calls, (Calls{{"fsync", Inode("sub/real")},
                          {"rename", Inode("sub/real")},
                          {"fsync", Inode("sub")}}));
}

// The program itself, in a process of its own; its workers are processes, too.
using Forked = OutputDisk;
TEST_F(Forked, ABatchFlushesEachFileOnceAndItsFolderAtTheEnd) {
  std::vector<std::string> words = {"picturehost", "batch",        "InvertKRT", "-j",         "1",
                                    "--plugin",    PICTURE_PLUGIN, "-d",        At("new/out")};
  for (const std::string name : {"a.png", "b.png"}) {
    Save(Noise(5, 5), At(name), "png");
    words.push_back(At(name));
  }
  std::vector<const char*> pointers;
  for (const std::string& word : words) pointers.push_back(word.c_str());
  const int status = StatusOfChild([&] {
    const int list = ::open(At("calls").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    ::dup2(::open("/dev/null", O_WRONLY), 1);
    const WatchedDisk disk([&](const DiskCall& call) {
      if (call.name == "unlink") return 0;
      const std::string line = call.name + " " + std::to_string(call.inode) + "\n";
      return ::write(list, line.data(), line.size()) < 0 ? errno : 0;
    });
    return Main(int(pointers.size()), pointers.data()) == 0;
  });
  EXPECT_EQ(status, 0);
  std::ostringstream expected;
  for (const DiskCall& call : Calls{{"fsync", Inode("new")},
                                    {"fsync", Inode(".")},
                                    {"fsync", Inode("new/out/a.png")},
                                    {"rename", Inode("new/out/a.png")},
                                    {"fsync", Inode("new/out/b.png")},
                                    {"rename", Inode("new/out/b.png")},
                                    {"fsync", Inode("new/out")}})
    expected << call << "\n";
  EXPECT_EQ(ReadBytes(At("calls")), expected.str());
}

TEST_F(OutputDisk, AFileWithSeveralNamesIsCopiedBeforeItIsWrittenOver) {
  WriteBytes(At("out"), "before");
  fs::create_hard_link(At("out"), At("same"));
  OutputFile file(At("out"));
  WriteText(&file, "after");
  const ino_t bytes = StatusOf(Unfinished()).st_ino;
  const Calls calls = CallsOf([&] { file.Commit(); });
  ASSERT_EQ(calls.size(), 9U);
  const ino_t copy = calls[1].inode;
  EXPECT_EQ(std::set({copy, bytes, Inode("out"), Inode(".")}).size(), 4U);
  EXPECT_EQ(calls, (Calls{{"fsync", bytes},
                          {"pwrite", copy},
                          {"fsync", copy},
                          {"fsync", Inode(".")},
                          {"pwrite", Inode("out")},
                          {"fsync", Inode("out")},
                          {"unlink", copy},
                          {"unlink", bytes},
                          {"fsync", Inode(".")}}));
}

TEST_F(OutputDisk, AKillLeavesTheOldBytesOrTheNew) {
  std::set<std::string> seen;
  const int calls = KillEverywhere(
      "after", [&] { WriteBytes(At("out"), "before"); },
      [&] {
        seen.insert(ReadBytes(At("out")));
        EXPECT_LE(Names().size(), 2U);
      });
  EXPECT_EQ(calls, 3);
  EXPECT_EQ(seen, (std::set<std::string>{"after", "before"}));
}

TEST_F(OutputDisk, AKillWhileAFileIsWrittenOverLeavesACopyToGoBackTo) {
  const std::string before(150'000, 'b'), after(200'000, 'a');
  int old = 0, mixed = 0, changed = 0;
  KillEverywhere(
      after,
      [&] {
        WriteBytes(At("out"), before);
        fs::create_hard_link(At("out"), At("same"));
      },
      [&] {
        EXPECT_EQ(StatusOf(At("out")).st_nlink, 2U);
        EXPECT_EQ(Inode("out"), Inode("same"));
        const std::string now = ReadBytes(At("out"));
        if (now == before) {
          ++old;
        } else if (now == after) {
          ++changed;
        } else {
          ++mixed;
          EXPECT_TRUE(ReadBytes(At("out.picturehost-copy")) == before);
        }
      });
  EXPECT_GE(old, 2);
  EXPECT_GE(mixed, 2);
  EXPECT_GE(changed, 2);
}

// Each call fails in its turn, all others are made.
TEST_F(OutputDisk, AnErrorLeavesTheOldBytesAndNothingElse) {
  const std::string before(150'000, 'b'), after(200'000, 'a');
  for (const bool linked : {false, true}) {
    int failing = 0;
    for (bool failed = true; failed; ++failing) {
      fs::remove(At("same"));
      WriteBytes(At("out"), before);
      if (linked) fs::create_hard_link(At("out"), At("same"));
      OutputFile file(At("out"));
      WriteText(&file, after);
      int calls = 0;
      std::string error;
      {
        const WatchedDisk disk([&](const DiskCall& call) {
          return call.name != "unlink" && calls++ == failing ? EIO : 0;
        });
        error = ErrorOf([&] { file.Commit(); });
      }
      failed = error != "(no error)";
      const bool kept = error.starts_with("can't write");
      const std::string what = kept ? "can't write '" + At("out")
                                    : "can't flush the folder '" + scratch.Folder().native();
      EXPECT_EQ(error, failed ? what + "': Input/output error" : "(no error)");
      EXPECT_TRUE(ReadBytes(At("out")) == (kept ? before : after));
      EXPECT_EQ(Names(), linked ? (Texts{"out", "same"}) : Texts{"out"}) << failing;
    }
    EXPECT_EQ(failing - 1, linked ? 12 : 3);
  }
}

TEST_F(OutputDisk, WhatCannotBeFlushedIsNoError) {
  for (const int error : {EINVAL, ENOTSUP, EROFS}) {
    const WatchedDisk disk(
        [error](const DiskCall& call) { return call.name == "fsync" ? error : 0; });
    Put(At("out"), std::to_string(error));
    EXPECT_EQ(ReadBytes(At("out")), std::to_string(error));
  }
}

TEST_F(OutputDisk, AFlushThatIsInterruptedIsDoneAgain) {
  std::multiset<ino_t> flushed;
  {
    const WatchedDisk disk([&](const DiskCall& call) {
      if (call.name != "fsync") return 0;
      flushed.insert(call.inode);
      return flushed.count(call.inode) == 1 ? EINTR : 0;
    });
    Put(At("out"), "text");
  }
  EXPECT_EQ(flushed, (std::multiset<ino_t>{Inode("."), Inode("."), Inode("out"), Inode("out")}));
}

TEST_F(OutputDisk, OfSeveralNoneTakesItsPlaceWhereOneCannotBeFlushed) {
  std::vector<OutputFile> files = Stage("abc");
  int flushes = 0;
  const WatchedDisk disk(
      [&](const DiskCall& call) { return call.name == "fsync" && ++flushes == 2 ? ENOSPC : 0; });
  EXPECT_EQ(ErrorOf([&] { OutputFile::CommitAll(files); }),
            "can't write '" + At("b") + "': No space left on device");
  for (const std::string name : {"a", "b", "c"}) EXPECT_EQ(ReadBytes(At(name)), "old");
  EXPECT_EQ(Names(), (Texts{"a", "b", "c"}));
}

TEST_F(OutputDisk, OfSeveralThoseBeforeTheOneThatFailsAreWrittenAndNamed) {
  std::vector<OutputFile> files = Stage("abcd");
  int renames = 0;
  bool folderFlushed = false;
  const WatchedDisk disk([&](const DiskCall& call) {
    folderFlushed |= call == DiskCall{"fsync", Inode(".")};
    return call.name == "rename" && ++renames == 3 ? EACCES : 0;
  });
  EXPECT_EQ(ErrorOf([&] { OutputFile::CommitAll(files); }),
            "can't write '" + At("c") + "': Permission denied; already written: '" + At("a") +
                "', '" + At("b") + "'");
  EXPECT_EQ(ReadBytes(At("a")), "new");
  EXPECT_EQ(ReadBytes(At("b")), "new");
  EXPECT_EQ(ReadBytes(At("c")), "old");
  EXPECT_EQ(ReadBytes(At("d")), "old");
  EXPECT_EQ(Names(), (Texts{"a", "b", "c", "d"}));
  EXPECT_TRUE(folderFlushed);
}

}  // namespace
}  // namespace runner
