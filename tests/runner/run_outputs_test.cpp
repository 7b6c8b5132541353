// Where the results of picturehost run go.
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <thread>

#include "tests/runner/run_fixture.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

class RunOutputs : public RunCommand {
 protected:
  RunOutputs() { Save(image, At("in.png"), "png"); }

  void ExpectInverted(const std::string& path) {
    ExpectPixels(path, 5, 5, [&](int x, int y) { return Inverted(image.At(x, y)); });
  }

  // A line of a shell that has the program as $0 and the folder as its own.
  int Shell(const std::string& line) {
    return std::system(("cd '" + scratch.Folder().native() + "' && sh -c '" + line + "' '" +
                        PICTURE_HOST_PROGRAM + "'")
                           .c_str());
  }

  const Image image = Noise(5, 5);
};

TEST_F(RunOutputs, PipesGetAPng) {
  WriteBytes(At("out.png"), Done({"run", "InvertKRT", At("in.png"), "-o", "/dev/stdout"}));
  ExpectInverted(At("out.png"));
}

TEST_F(RunOutputs, AFifoGetsAPngAndStays) {
  ASSERT_EQ(::mkfifo(At("fifo").c_str(), 0600), 0);
  std::thread reader([&] { WriteBytes(At("out.png"), ReadBytes(At("fifo"))); });
  Done({"run", "InvertKRT", At("in.png"), "-o", At("fifo")});
  reader.join();
  ExpectInverted(At("out.png"));
  EXPECT_TRUE(fs::is_fifo(At("fifo")));
}

TEST_F(RunOutputs, StandardOutputIntoAFileGoesOnWhereTheFileStands) {
  for (const std::string name : {"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"}) {
    for (const std::string arrow : {">", ">>"}) {
      WriteBytes(At("out"), arrow == ">" ? "much that the shell takes away" : "old ");
      ASSERT_EQ(Shell("(printf begin; \"$0\" run InvertKRT in.png -o " + name + "; printf end) " +
                      arrow + " out"),
                0);
      std::string bytes = ReadBytes(At("out"));
      const std::string start = arrow == ">" ? "begin" : "old begin";
      ASSERT_TRUE(bytes.starts_with(start) && bytes.ends_with("end")) << name << arrow;
      WriteBytes(At("out.png"), bytes.substr(start.size(), bytes.size() - start.size() - 3));
      ExpectInverted(At("out.png"));
    }
  }
}

TEST_F(RunOutputs, PrintedValuesFollowThePictureOnStandardOutput) {
  ASSERT_EQ(Shell("\"$0\" run -e isWhiteKRT -e InvertKRT in.png -o /dev/stdout > out"), 0);
  const std::string bytes = ReadBytes(At("out")), printed = "isWhiteKRT = false\n";
  ASSERT_TRUE(bytes.ends_with(printed));
  WriteBytes(At("out.png"), bytes.substr(0, bytes.size() - printed.size()));
  ExpectInverted(At("out.png"));
}

TEST_F(RunOutputs, AnotherDescriptorIsWritten) {
  ASSERT_EQ(Shell("\"$0\" run InvertKRT in.png -o /dev/fd/7 7> out.png"), 0);
  ExpectInverted(At("out.png"));
  ASSERT_NE(Shell("\"$0\" run InvertKRT in.png -o /dev/fd/7 2> errors"), 0);
  EXPECT_EQ(ReadBytes(At("errors")), "picturehost: can't write '/dev/fd/7': Bad file descriptor\n");
}

TEST_F(RunOutputs, APictureWrittenOverItselfKeepsItsNames) {
  fs::create_hard_link(At("in.png"), At("same.png"));
  fs::create_symlink("in.png", At("link.png"));
  Done({"run", "InvertKRT", At("in.png"), "-o", At("link.png")});
  EXPECT_TRUE(fs::is_symlink(At("link.png")));
  EXPECT_EQ(fs::hard_link_count(At("in.png")), 2U);
  ExpectInverted(At("same.png"));
}

}  // namespace
}  // namespace runner
