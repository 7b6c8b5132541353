// Targets that have several names, or none of their own.
#include <fcntl.h>
#include <sys/resource.h>

#include <csignal>
#include <thread>

#include "tests/runner/disk_calls.h"
#include "tests/runner/output_file_fixture.h"

namespace runner {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

using OutputLinks = OutputFiles;

TEST_F(OutputLinks, SymbolicLinksAreFollowed) {
  fs::create_directories(At("deep/er"));
  WriteBytes(At("real"), "before");
  fs::create_symlink("../../real", At("deep/er/second"));
  fs::create_symlink("deep/er/second", At("first"));
  Put(At("first"), "after");
  EXPECT_EQ(fs::read_symlink(At("first")), "deep/er/second");
  EXPECT_EQ(fs::read_symlink(At("deep/er/second")), "../../real");
  EXPECT_FALSE(fs::is_symlink(At("real")));
  EXPECT_EQ(ReadBytes(At("real")), "after");
  EXPECT_EQ(Names(), (Texts{"deep", "first", "real"}));
  EXPECT_EQ(NamesIn(At("deep/er")), Texts{"second"});
}

TEST_F(OutputLinks, ALinkToNothingMakesTheFileThatItNames) {
  fs::create_directory(At("folder"));
  fs::create_symlink(At("folder/real"), At("second"));
  fs::create_symlink("second", At("first"));
  Put(At("first"), "text");
  EXPECT_TRUE(fs::is_symlink(At("first")));
  EXPECT_TRUE(fs::is_symlink(At("second")));
  EXPECT_EQ(ReadBytes(At("folder/real")), "text");
  fs::create_symlink("missing/real", At("nowhere"));
  EXPECT_EQ(ErrorOf([&] { OutputFile{At("nowhere")}; }),
            "can't write '" + At("nowhere") + "': No such file or directory");
  EXPECT_EQ(Names(), (Texts{"first", "folder", "nowhere", "second"}));
}

TEST_F(OutputLinks, LinksWithoutAnEndAreAnError) {
  fs::create_symlink("two", At("one"));
  fs::create_symlink("one", At("two"));
  EXPECT_EQ(ErrorOf([&] { OutputFile{At("one")}; }),
            "can't write '" + At("one") + "': Too many levels of symbolic links");
  fs::create_symlink(".", At("folder"));
  EXPECT_EQ(ErrorOf([&] { OutputFile{At("folder")}; }),
            "can't write '" + At("folder") + "': Is a directory");
  EXPECT_EQ(Names(), (Texts{"folder", "one", "two"}));
}

class HardLinks : public OutputFiles {
 protected:
  HardLinks() {
    WriteBytes(At("out"), kBefore);
    fs::create_hard_link(At("out"), At("same"));
    inode = StatusOf(At("out")).st_ino;
  }

  void ExpectContent(const std::string& content) {
    EXPECT_EQ(StatusOf(At("out")).st_ino, inode);
    EXPECT_EQ(StatusOf(At("same")).st_ino, inode);
    EXPECT_EQ(StatusOf(At("out")).st_nlink, 2U);
    EXPECT_TRUE(ReadBytes(At("same")) == content);
    EXPECT_EQ(Names(), (Texts{"out", "same"}));
  }

  bool IsPlace(const DiskCall& call) const { return call.inode == inode; }

  const std::string kBefore = std::string(150'000, 'b');
  const std::string kLonger = std::string(200'000, 'l');
  ino_t inode = 0;
};

TEST_F(HardLinks, AllNamesSeeTheNewBytes) {
  for (const std::string& text : {kLonger, std::string("short"), std::string()}) {
    Put(At("out"), text);
    ExpectContent(text);
  }
}

TEST_F(HardLinks, TheyLoseTheBitsForPrograms) {
  ASSERT_EQ(::chmod(At("out").c_str(), 06755), 0);
  Put(At("out"), "after");
  ExpectContent("after");
  EXPECT_EQ(ModeOf(At("out")), 0755U);
}

TEST_F(HardLinks, ALinkedFileBehindASymbolicLinkIsWrittenOver) {
  fs::create_symlink("same", At("link"));
  Put(At("link"), kLonger);
  EXPECT_TRUE(fs::is_symlink(At("link")));
  fs::remove(At("link"));
  ExpectContent(kLonger);
}

TEST_F(HardLinks, AFileThatCannotBeCopiedIsRefusedAtOnce) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can become someone else";
  ASSERT_EQ(::chown(scratch.Folder().c_str(), 12345, 12345), 0);
  ASSERT_EQ(::chown(At("out").c_str(), 12345, 12345), 0);
  ASSERT_EQ(::chmod(At("out").c_str(), 0200), 0);
  EXPECT_EQ(StatusOfChild([&] {
              return ::setgid(12345) == 0 && ::setuid(12345) == 0 &&
                     ErrorOf([&] { OutputFile{At("out")}; }) ==
                         "can't write '" + At("out") + "': Permission denied";
            }),
            0);
  ExpectContent(kBefore);
}

// The limit lets the old bytes be copied and the new ones begin.
TEST_F(HardLinks, ADiskThatFillsUpInTheMiddleLeavesTheOldBytes) {
  for (const rlim_t limit : {rlim_t{160'000}, rlim_t{100'000}}) {
    const int status = StatusOfChild([&] {
      OutputFile::CleanUpOnSignals();
      OutputFile file(At("out"));
      WriteText(&file, kLonger);
      const rlimit most{limit, limit};
      ::setrlimit(RLIMIT_FSIZE, &most);
      return ErrorOf([&] { file.Commit(); }) == "can't write '" + At("out") + "': File too large";
    });
    EXPECT_EQ(status, 0);
    ExpectContent(kBefore);
  }
}

TEST_F(HardLinks, WhereTheOldBytesCannotBeBroughtBackTheCopyStays) {
  for (const std::string end : {"", "-2"}) {  // the second time, the first copy stays as it is
    OutputFile file(At("out"));
    WriteText(&file, kLonger);
    int calls = 0;
    const WatchedDisk disk([&](const DiskCall& call) {
      return call.name == "pwrite" && IsPlace(call) && ++calls > 1 ? ENOSPC : 0;
    });
    EXPECT_EQ(ErrorOf([&] { file.Commit(); }), "can't write '" + At("out") +
                                                   "': No space left on device; what was in it is "
                                                   "in '" +
                                                   At("out.picturehost-copy" + end) + "'");
  }
  EXPECT_TRUE(ReadBytes(At("out.picturehost-copy")) == kBefore);
  EXPECT_EQ(Names(), (Texts{"out", "out.picturehost-copy", "out.picturehost-copy-2", "same"}));
}

TEST_F(HardLinks, TheCopyOfALongNameHasAPossibleName) {
  std::string name = "x";
  for (int i = 0; i < 127; ++i) name += "\u00E4";
  fs::rename(At("same"), At(name));
  std::string copy;
  {
    OutputFile file(At(name));
    WriteText(&file, "after");
    const WatchedDisk disk([&](const DiskCall& call) {
      if (call.name == "pwrite" && IsPlace(call))
        for (const std::string& other : Names())
          if (other.ends_with(".picturehost-copy")) copy = other;
      return 0;
    });
    file.Commit();
  }
  // 255 bytes but for the one that would be half a character.
  EXPECT_EQ(copy, name.substr(0, 1 + 2 * 118) + ".picturehost-copy");
  EXPECT_EQ(ReadBytes(At("out")), "after");
}

TEST_F(HardLinks, TheCopyIsNoMoreOpenThanTheFile) {
  ASSERT_EQ(::chmod(At("out").c_str(), 0640), 0);
  mode_t mode = 0;
  {
    OutputFile file(At("out"));
    WriteText(&file, "after");
    const WatchedDisk disk([&](const DiskCall& call) {
      if (call.name == "pwrite" && IsPlace(call)) mode = ModeOf(At("out.picturehost-copy"));
      return 0;
    });
    file.Commit();
  }
  EXPECT_EQ(mode, 0640U);
}

TEST_F(HardLinks, ASignalWaitsUntilTheBytesAreComplete) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGUSR1}) {
    const std::string text = kLonger + std::to_string(signal);
    const int status = StatusOfChild([&] {
      ::signal(signal, SIG_DFL);
      OutputFile::CleanUpOnSignals();
      OutputFile file(At("out"));
      WriteText(&file, text);
      const WatchedDisk disk([&](const DiskCall& call) {
        if (call.name == "pwrite" && IsPlace(call)) ::kill(::getpid(), signal);
        return 0;
      });
      file.Commit();
      return false;
    });
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
    // No other signal than those that are cared for takes the unfinished file away.
    if (signal == SIGUSR1) fs::remove(Unfinished());
    ExpectContent(text);
  }
}

class Descriptors : public OutputFiles {
 protected:
  // Commits into a descriptor of this process.
  static void PutInto(int number, const std::string& text, const std::string& folder = "/dev/fd/") {
    Put(folder + std::to_string(number), text);
  }
};

TEST_F(Descriptors, AFileIsWrittenAtItsPosition) {
  WriteBytes(At("out"), "0123456789");
  fs::create_symlink("/dev/fd", At("link"));
  const ino_t inode = StatusOf(At("out")).st_ino;
  const int file = ::open(At("out").c_str(), O_WRONLY);
  ASSERT_EQ(::lseek(file, 2, SEEK_SET), 2);
  PutInto(file, "ab");
  PutInto(file, "c", "/proc/self/fd/");
  PutInto(file, "d", "/proc/" + std::to_string(::getpid()) + "/fd/");
  PutInto(file, "e", At("link/"));
  fs::create_symlink("/proc/self/fd/" + std::to_string(file), At("number"));
  Put(At("number"), "f");
  EXPECT_EQ(::write(file, "g", 1), 1);
  ::close(file);
  EXPECT_EQ(ReadBytes(At("out")), "01abcdefg9");
  EXPECT_EQ(StatusOf(At("out")).st_ino, inode);
  EXPECT_EQ(Names(), (Texts{"link", "number", "out"}));
}

TEST_F(Descriptors, AFileThatIsAppendedToIsAppendedTo) {
  WriteBytes(At("out"), "before ");
  const int file = ::open(At("out").c_str(), O_WRONLY | O_APPEND);
  PutInto(file, "after");
  ::close(file);
  EXPECT_EQ(ReadBytes(At("out")), "before after");
}

TEST_F(Descriptors, AFileWithoutNameIsWritten) {
  const int file = ::open(At("out").c_str(), O_RDWR | O_CREAT, 0600);
  fs::remove(At("out"));
  PutInto(file, "text");
  char bytes[5] = {};
  EXPECT_EQ(::pread(file, bytes, 5, 0), 4);
  EXPECT_STREQ(bytes, "text");
  ::close(file);
  EXPECT_EQ(Names(), Texts{});
}

TEST_F(Descriptors, APipeIsWrittenAlsoWhereItDoesNotWait) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_NONBLOCK), 0);
  const std::string text(1 << 20, 'x');
  std::string got;
  std::thread reader([&] {
    ::fcntl(ends[0], F_SETFL, 0);
    char chunk[1000];
    for (ssize_t count = 1; count > 0 && got.size() < text.size();) {
      count = ::read(ends[0], chunk, sizeof chunk);
      got.append(chunk, size_t(std::max<ssize_t>(count, 0)));
    }
  });
  EXPECT_EQ(ErrorOf([&] { PutInto(ends[1], text); }), "(no error)");
  ::close(ends[1]);
  reader.join();
  ::close(ends[0]);
  EXPECT_TRUE(got == text);
}

TEST_F(Descriptors, OneThatCannotBeWrittenIsAnError) {
  WriteBytes(At("out"), "before");
  const int file = ::open(At("out").c_str(), O_RDONLY);
  const std::string name = "/dev/fd/" + std::to_string(file);
  EXPECT_EQ(ErrorOf([&] { OutputFile{name}; }), "can't write '" + name + "': Bad file descriptor");
  ::close(file);
  EXPECT_EQ(ErrorOf([&] { OutputFile{name}; }), "can't write '" + name + "': Bad file descriptor");
  EXPECT_EQ(ReadBytes(At("out")), "before");
}

TEST_F(Descriptors, ANumberInAnotherFolderIsAName) {
  Put(At("1"), "text");
  EXPECT_EQ(ReadBytes(At("1")), "text");
}

TEST_F(Descriptors, NamesOfDescriptorsAndDevicesAreDirect) {
  WriteBytes(At("out"), "");
  fs::create_symlink("/dev/stdout", At("link"));
  EXPECT_TRUE(OutputFile::IsDirect("/dev/stdout"));
  EXPECT_TRUE(OutputFile::IsDirect("/dev/null"));
  EXPECT_TRUE(OutputFile::IsDirect(At("link")));
  EXPECT_FALSE(OutputFile::IsDirect(At("out")));
  EXPECT_FALSE(OutputFile::IsDirect(At("new")));
  EXPECT_FALSE(OutputFile::IsDirect(scratch.Folder()));
}

TEST_F(OutputLinks, AFifoIsWrittenAndStays) {
  ASSERT_EQ(::mkfifo(At("fifo").c_str(), 0600), 0);
  std::string got;
  std::thread reader([&] { got = ReadBytes(At("fifo")); });
  Put(At("fifo"), "text");
  reader.join();
  EXPECT_EQ(got, "text");
  EXPECT_TRUE(fs::is_fifo(At("fifo")));
  EXPECT_EQ(Names(), Texts{"fifo"});
}

}  // namespace
}  // namespace runner
