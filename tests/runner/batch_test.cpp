// picturehost batch, as a person calls it.
#include <algorithm>
#include <filesystem>
#include <regex>

#include "tests/runner/batch_fixture.h"

namespace runner {
namespace {

TEST_F(Batch, DoesManyFilesWithOddNames) {
  std::vector<std::string> arguments = {"batch",        "InvertKRT", "--jobs", "3",
                                        "--output-dir", "out/deep",  "--"};
  const std::vector<std::string> names = {"-dash.png", "--.png",     "a b.png", "line\nend.png",
                                          "plain.png", "plain2.png", "x=y.png", "z.bmp"};
  for (size_t i = 0; i < names.size(); ++i) {
    Save(Noise(20 + int(i), 10, 3, uint32_t(i)), scratch / names[i], i == 7 ? "bmp" : "png");
    arguments.push_back(names[i]);
  }
  const Finished finished = RunProgram(arguments, Here());
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(finished.out, "");
  EXPECT_EQ(finished.err, "8 written to out/deep\n");
  std::vector<std::string> sorted = names;
  std::sort(sorted.begin(), sorted.end());
  EXPECT_EQ(Names("out/deep"), sorted);
  for (const std::string& name : names) ExpectInverted(name, "out/deep/" + name);
}

TEST_F(Batch, ReportsEachFileThatFailsAndDoesTheOthers) {
  Save(Noise(8, 8), scratch / "good.png", "png");
  Save(Noise(9, 9), scratch / "fine.png", "png");
  WriteBytes(scratch / "bad\n.png", "no picture");
  WriteBytes(scratch / "empty.png", "");
  const Finished finished = RunProgram({"batch", "InvertKRT", "good.png", "bad\n.png", "empty.png",
                                        "fine.png", "-d", "out", "-j", "2"},
                                       Here());
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 3) << finished.err;
  EXPECT_NE(finished.err.find("picturehost: 'bad\\n.png': "), std::string::npos);
  EXPECT_NE(finished.err.find("picturehost: empty.png: "), std::string::npos);
  EXPECT_TRUE(finished.err.ends_with("2 written to out, 2 failed\n"));
  EXPECT_EQ(finished.out, "");
  EXPECT_EQ(Names("out"), (std::vector<std::string>{"fine.png", "good.png"}));
}

TEST_F(Batch, ADiskThatFillsUpFailsTheFileThatFilledIt) {
  Save(Noise(8, 8), scratch / "small.png", "png");
  Save(Noise(300, 300), scratch / "large.png", "png");
  Save(Noise(9, 9), scratch / "after.png", "png");
  const Finished finished =
      RunProgram({"batch", "InvertKRT", "small.png", "large.png", "after.png", "-d", "out"},
                 {scratch.Folder().native(), false, 16384});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.err,
            "picturehost: large.png: can't write 'out/large.png': File too large\n"
            "2 written to out, 1 failed\n");
  EXPECT_EQ(Names("out"), (std::vector<std::string>{"after.png", "small.png"}));
}

TEST_F(Batch, PrintsValuesWithTheirFiles) {
  Save(MakeImage(2, 2,
                 [](int, int) {
                   return Pixel{255, 255, 255};
                 }),
       scratch / "white.png", "png");
  Save(Noise(2, 2), scratch / "colour.png", "png");
  const Finished finished =
      RunProgram({"batch", "-e", "isWhiteKRT", "-e", "InvertKRT", "-e", "isBlackKRT", "white.png",
                  "colour.png", "-d", "out", "-j", "1"},
                 Here());
  EXPECT_EQ(finished.out,
            "white.png: isWhiteKRT = true\nwhite.png: isBlackKRT = true\n"
            "colour.png: isWhiteKRT = false\ncolour.png: isBlackKRT = false\n");
  EXPECT_EQ(finished.err, "2 written to out\n");
}

TEST_F(Batch, WarnsOfATableOnceForAllFiles) {
  std::vector<std::string> arguments = {"batch",
                                        "-e",
                                        "PictureLut3DKRT(table = cube(\"step.cube\"))",
                                        "-e",
                                        "PictureLut3DKRT(MaxX = 1)",
                                        "-d",
                                        "out",
                                        "-j",
                                        "3"};
  for (int i = 0; i < 6; ++i) {
    arguments.push_back(std::to_string(i) + ".png");
    Save(Noise(9, 9, 3, uint32_t(i)), scratch / arguments.back(), "png");
  }
  // All that isn't dark becomes white.
  std::string cube = "LUT_3D_SIZE 18\n0 0 0\n";
  for (int i = 1; i < 18 * 18 * 18; ++i) cube += "1 1 1\n";
  WriteBytes(scratch / "step.cube", cube);
  const Finished finished = RunProgram(arguments, Here());
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 3) << finished.err;
  EXPECT_TRUE(finished.err.ends_with("\n6 written to out\n"));
  EXPECT_NE(finished.err.find("warning: 'step.cube' has 18 points"), std::string::npos);
  EXPECT_NE(finished.err.find("warning: PictureLut3DKRT is given no table"), std::string::npos);
}

TEST_F(Batch, ATableThatCannotBeReadStopsItAtOnce) {
  Save(Noise(8, 8), scratch / "one.png", "png");
  Save(Noise(8, 8), scratch / "two.png", "png");
  const Finished finished = RunProgram(
      {"batch", "PictureLut3DKRT(table = cube(\"no.cube\"))", "one.png", "two.png", "-d", "out"},
      Here());
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.err, "picturehost: can't open 'no.cube': No such file or directory\n");
  EXPECT_FALSE(fs::exists(scratch / "out"));
}

TEST_F(Batch, ChangesTheFormatWhereAsked) {
  Save(Noise(8, 8), scratch / "one.png", "png");
  const Finished finished =
      RunProgram({"batch", "InvertKRT", "one.png", "-d", "out", "--format", "bmp"}, Here());
  EXPECT_EQ(finished.status, 0) << finished.err;
  ExpectInverted("one.png", "out/one.bmp");
}

TEST_F(Batch, FilesThatAreNotThereStopItBeforeAnythingIsDone) {
  Save(Noise(8, 8), scratch / "one.png", "png");
  std::vector<std::string> arguments = {"batch", "InvertKRT", "-d", "out", "no.png", "one.png"};
  Finished finished = RunProgram(arguments, Here());
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.err,
            "picturehost: 1 of the 2 files isn't there: 'no.png'; --keep-going does the others\n");
  EXPECT_FALSE(fs::exists(scratch / "out"));
  arguments.insert(arguments.end(), {"a.png", "b.png", "c.png", "d.png"});
  finished = RunProgram(arguments, Here());
  EXPECT_EQ(finished.err,
            "picturehost: 5 of the 6 files aren't there: 'no.png', 'a.png', 'b.png' and 2 more; "
            "--keep-going does the others\n");
  EXPECT_FALSE(fs::exists(scratch / "out"));
  arguments.emplace_back("--keep-going");
  finished = RunProgram(arguments, Here());
  EXPECT_EQ(finished.status, 1);
  EXPECT_TRUE(finished.err.ends_with("1 written to out, 5 failed\n")) << finished.err;
  ExpectInverted("one.png", "out/one.png");
}

TEST_F(Batch, AMistakeThatHoldsForEveryFileStopsItWithOneLine) {
  std::vector<std::string> arguments = {
      "batch", "MergePictureKRT(self, picture(\"no.png\"))", "-d", "out", "-j", "2"};
  for (int i = 0; i < 9; ++i) {
    arguments.push_back(std::to_string(i) + ".png");
    Save(Noise(8, 8), scratch / arguments.back(), "png");
  }
  Finished finished = RunProgram(arguments, Here());
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 2) << finished.err;
  // Two workers may report the third and the fourth at once.
  EXPECT_TRUE(std::regex_match(
      finished.err,
      std::regex("picturehost: stopped after [34] files that failed alike: [0-9]\\.png: can't open "
                 "'no\\.png': No such file or directory; --keep-going goes on\n"
                 "0 written to out, [34] failed\n")))
      << finished.err;
  arguments.emplace_back("--keep-going");
  finished = RunProgram(arguments, Here());
  EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 10) << finished.err;
  EXPECT_TRUE(finished.err.ends_with("0 written to out, 9 failed\n"));
}

TEST_F(Batch, StartsNothingThatCannotEndWell) {
  fs::create_directory(scratch / "sub");
  Save(Noise(8, 8), scratch / "one.png", "png");
  Save(Noise(8, 8), scratch / "sub/one.png", "png");
  const auto complaint = [&](const std::vector<std::string>& arguments) {
    const Finished finished = RunProgram(arguments, Here());
    EXPECT_NE(finished.status, 0);
    EXPECT_EQ(finished.out, "");
    EXPECT_FALSE(fs::exists(scratch / "out"));
    return finished.err;
  };
  EXPECT_EQ(complaint({"batch", "InvertKRT", "one.png", "sub/one.png", "-d", "out"}),
            "picturehost: 'one.png' and 'sub/one.png' would both become 'out/one.png'\n");
  EXPECT_EQ(complaint({"batch", "InvertKRT", "one.png", "-d", "."}),
            "picturehost: 'one.png' would be overwritten by its own result; --in-place says that "
            "pictures "
            "become their results\n");
  EXPECT_EQ(complaint({"batch", "InvrtKRT", "one.png", "-d", "out"}),
            "picturehost: there is no method, class or value called InvrtKRT; did you mean "
            "InvertKRT?\n");
  EXPECT_EQ(
      complaint({"batch", "InvertKRT", "one.png", "-d", "out", "--skip-existing"}),
      "picturehost: --skip-existing is no more: --resume leaves out what is done, and notices "
      "what has changed\n");
  EXPECT_NE(complaint({"batch", "InvertKRT", "-d", "out"}), "");
  EXPECT_EQ(complaint({"batch", "InvertKRT", "one.png", "-d", "one.png"}),
            "picturehost: can't make the folder 'one.png': a file has that name\n");
}

TEST_F(Batch, ShowsABarOnATerminalAlone) {
  std::vector<std::string> arguments = {"batch", "InvertKRT", "-d", "out", "-j", "1"};
  for (int i = 0; i < 5; ++i) {
    const std::string name = std::to_string(i) + ".png";
    Save(Noise(8, 8), scratch / name, "png");
    arguments.push_back(name);
  }
  WriteBytes(scratch / "bad.png", "no picture");
  arguments.push_back("bad.png");
  const Finished finished = RunProgram(arguments, {scratch.Folder().native(), true, 0});
  EXPECT_EQ(finished.status, 1);
  EXPECT_NE(finished.err.find("] 0/6"), std::string::npos);
  EXPECT_NE(finished.err.find("] 6/6, 1 failed"), std::string::npos);
  // And takes it away. A terminal ends lines with two characters.
  EXPECT_TRUE(finished.err.ends_with("\r\x1B[K5 written to out, 1 failed\r\n"));
  EXPECT_EQ(RunProgram({"batch", "InvertKRT", "-d", "again", "0.png"}, Here()).err,
            "1 written to again\n");
  arguments.push_back("--quiet");
  EXPECT_EQ(RunProgram(arguments, {scratch.Folder().native(), true, 0}).err.find("] 0/6"),
            std::string::npos);
}

}  // namespace
}  // namespace runner
