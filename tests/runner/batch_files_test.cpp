// Which files a batch takes, and where their results go.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "tests/runner/images.h"
#include "tests/runner/program.h"
#include "tests/runner/scratch.h"

namespace runner {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

class BatchFiles : public ::testing::Test {
 protected:
  BatchFiles() {
    for (const char* folder : {"in/a", "in/b", "in/.hidden"})
      fs::create_directories(scratch / folder);
    for (const char* file : {"in/top.png", "in/a/x.png", "in/b/x.png", "in/.hidden/no.png"})
      Save(Noise(6, 5, 3, ++seed), scratch / file, "png");
    WriteBytes(scratch / "in/a/notes.txt", "no picture");
    WriteBytes(scratch / "in/a/.x.png", "no picture");
  }

  Finished Run(Texts words, const std::string& input = "") {
    words.insert(words.begin(), {"batch", "InvertKRT"});
    Surroundings around{scratch.Folder().native()};
    around.input = input;
    return RunProgram(words, around);
  }
  void ExpectDone(const Texts& words, const std::string& summary, const std::string& input = "") {
    const Finished finished = Run(words, input);
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.out, "");
    EXPECT_EQ(finished.err, summary + "\n");
  }
  // What stops it, before anything is written.
  std::string Complaint(const Texts& words) {
    const Texts before = Below(".");
    const Finished finished = Run(words);
    EXPECT_NE(finished.status, 0);
    EXPECT_EQ(Below("."), before);
    EXPECT_TRUE(finished.err.starts_with("picturehost: ") && finished.err.ends_with('\n'));
    return finished.err.substr(13, finished.err.size() - 14);
  }
  Texts Below(const std::string& folder) {
    Texts files;
    for (const auto& entry : fs::recursive_directory_iterator(scratch / folder))
      if (!entry.is_directory() && entry.path().filename() != "picturehost-manifest.jsonl")
        files.push_back(fs::relative(entry.path(), scratch / folder).native());
    std::sort(files.begin(), files.end());
    return files;
  }
  void ExpectInverted(const std::string& source, const std::string& result) {
    const Image in = Read(scratch / source), out = Read(scratch / result);
    ASSERT_EQ(in.bytes.size(), out.bytes.size()) << result;
    for (size_t i = 0; i < in.bytes.size(); ++i)
      ASSERT_EQ(out.bytes[i], 255 - in.bytes[i]) << result;
  }

  uint32_t seed = 0;
  Scratch scratch;
};

TEST_F(BatchFiles, FoldersKeepTheirTree) {
  ExpectDone({"-r", "in", "-d", "out"}, "3 written to out");
  EXPECT_EQ(Below("out"), (Texts{"a/x.png", "b/x.png", "top.png"}));
  ExpectInverted("in/a/x.png", "out/a/x.png");
  ExpectInverted("in/b/x.png", "out/b/x.png");
  ExpectInverted("in/top.png", "out/top.png");
  EXPECT_EQ(Complaint({"in", "-d", "more"}),
            "'in' is a folder; --recursive takes the pictures in it");
}

TEST_F(BatchFiles, AnInputFolderKeepsTheTreeOfNamedFiles) {
  ExpectDone({"in/a/x.png", "in/b/x.png", "--input-dir", "in", "-d", "out", "-f", "bmp"},
             "2 written to out");
  EXPECT_EQ(Below("out"), (Texts{"a/x.bmp", "b/x.bmp"}));
  EXPECT_EQ(Complaint({"in/top.png", "--input-dir", "in/a", "-d", "out"}),
            "'in/top.png' isn't below the input folder 'in/a'");
}

TEST_F(BatchFiles, ResultsWithinTheInputsAreNotTakenForInputs) {
  ExpectDone({"-r", "in", "-d", "in/out"}, "3 written to in/out");
  ExpectDone({"-r", "in", "-d", "in/out"}, "3 written to in/out");
  ExpectDone({"-r", "in", "-o", "{dir}/{stem}-inverted{ext}", "--manifest", "log"}, "6 written");
  const Texts after = Below("in");
  ExpectDone({"-r", "in", "-o", "{dir}/{stem}-inverted{ext}", "--manifest", "log"}, "6 written");
  EXPECT_EQ(Below("in"), after);
}

TEST_F(BatchFiles, NamesComeFromAFileOrFromStandardInput) {
  WriteBytes(scratch / "list", "in/a/x.png\n\nin/top.png");
  ExpectDone({"--files-from", "list", "-d", "lines"}, "2 written to lines");
  EXPECT_EQ(Below("lines"), (Texts{"top.png", "x.png"}));
  Save(Noise(4, 4), scratch / "odd\nname.png", "png");
  WriteBytes(scratch / "nulls", std::string("odd\nname.png\0in/top.png\0", 24));
  ExpectDone({"--files-from", "-", "-0", "in/a/x.png", "-d", "nulls.out"}, "3 written to nulls.out",
             scratch / "nulls");
  EXPECT_EQ(Below("nulls.out"), (Texts{"odd\nname.png", "top.png", "x.png"}));
  WriteBytes(scratch / "nulls", std::string("in/a/x.png\0in/top.png\0", 22));
  EXPECT_EQ(Complaint({"--files-from", "nulls", "-d", "out"}),
            "'nulls' has names that end with NULs; --null says so");
  EXPECT_EQ(Complaint({"--files-from", "gone", "-d", "out"}),
            "can't open 'gone': No such file or directory");
}

TEST_F(BatchFiles, PatternsNameOutputs) {
  ExpectDone({"in/a/x.png", "-o", "new-{below}/{stem}-{{1}}.bmp"}, "1 written");
  ExpectInverted("in/a/x.png", "new-./x-{1}.bmp");
  ExpectDone({"-r", "in", "-o", "all/{below}/{name}"}, "3 written");
  EXPECT_EQ(Below("all"), (Texts{"a/x.png", "b/x.png", "top.png"}));
  EXPECT_EQ(Complaint({"in/top.png", "-o", "{steam}.png"}),
            "the pattern '{steam}.png' has '{steam}'; there are {dir}, {below}, {stem}, {ext} and "
            "{name}");
  EXPECT_EQ(Complaint({"in/top.png", "-o", "x/{stem}.svg"}).substr(0, 51),
            "can't write 'x/top.svg': the name must end in .png,");
  EXPECT_EQ(Complaint({"in/a/x.png", "in/b/x.png", "-o", "{stem}.png"}),
            "'in/a/x.png' and 'in/b/x.png' would both become 'x.png'");
}

TEST_F(BatchFiles, TwoNamesOfOneFolderAreOnePlace) {
  fs::create_directory(scratch / "out");
  fs::create_directory_symlink("../out", scratch / "in/link");
  EXPECT_EQ(Complaint({"in/a/x.png", "in/top.png", "-o", "in/../in/link/same.png"}),
            "'in/a/x.png' and 'in/top.png' would both become 'in/../in/link/same.png'");
  // One of two results is a link to the place of the other.
  fs::create_symlink("top.png", scratch / "out/x.png");
  EXPECT_EQ(Complaint({"in/a/x.png", "in/top.png", "-d", "out"}),
            "'in/a/x.png' and 'in/top.png' would both become 'out/top.png'");
  fs::remove(scratch / "out/x.png");
  WriteBytes(scratch / "out/x.png", "old");
  fs::create_hard_link(scratch / "out/x.png", scratch / "out/top.png");
  EXPECT_EQ(Complaint({"in/a/x.png", "in/top.png", "-d", "out"}),
            "the results of 'in/a/x.png' and 'in/top.png' would be one file, which has several "
            "names");
}

TEST_F(BatchFiles, InputsAreNeverOverwritten) {
  fs::create_directory(scratch / "out");
  fs::create_symlink("../in/top.png", scratch / "out/x.png");
  const std::string end = "; --in-place says that pictures become their results";
  EXPECT_EQ(Complaint({"in/a/x.png", "in/top.png", "-d", "out"}),
            "'in/top.png' would be overwritten by the result of 'in/a/x.png'" + end);
  fs::remove(scratch / "out/x.png");
  fs::create_hard_link(scratch / "in/a/x.png", scratch / "out/x.png");
  EXPECT_EQ(Complaint({"in/a/x.png", "-d", "out"}),
            "'in/a/x.png' would be overwritten by its own result" + end);
  fs::remove(scratch / "out/x.png");
  fs::create_symlink("in/a/x.png", scratch / "y.png");
  EXPECT_EQ(Complaint({"y.png", "-o", "in/a/x.png"}),
            "'y.png' would be overwritten by its own result" + end);
  // What an expression reads is needed by every file.
  const Finished finished = RunProgram(
      {"batch", "MergePictureKRT(self, picture(\"in/top.png\"))", "in/a/x.png", "-o", "in/top.png"},
      {scratch.Folder().native()});
  EXPECT_EQ(finished.err,
            "picturehost: the result of 'in/a/x.png' would overwrite a file that the batch itself "
            "reads or writes\n");
}

TEST_F(BatchFiles, PipesDevicesAndFoldersAreNoOutputs) {
  fs::create_directory(scratch / "out");
  ASSERT_EQ(::mkfifo((scratch / "out/x.png").c_str(), 0600), 0);
  EXPECT_EQ(Complaint({"in/a/x.png", "-d", "out"}),
            "can't write 'out/x.png', the result of 'in/a/x.png': a batch writes no pipes and "
            "devices");
  fs::remove(scratch / "out/x.png");
  fs::create_directory(scratch / "out/x.png");
  EXPECT_EQ(Complaint({"in/a/x.png", "-d", "out"}),
            "can't write 'out/x.png', the result of 'in/a/x.png': it is a folder");
  EXPECT_NE(Complaint({"in/a/x.png", "-o", "/dev/stdout", "-f", "png"}).find("no open descriptors"),
            std::string::npos);
  EXPECT_NE(Complaint({"in/a/x.png", "-o", "-", "-f", "png"}).find("run has"), std::string::npos);
}

TEST_F(BatchFiles, InPlacePicturesBecomeTheirResults) {
  fs::copy_file(scratch / "in/a/x.png", scratch / "before.png");
  fs::create_hard_link(scratch / "in/a/x.png", scratch / "other.png");
  ExpectDone({"in/a/x.png", "--in-place"}, "1 written");
  ExpectInverted("before.png", "in/a/x.png");
  EXPECT_EQ(fs::hard_link_count(scratch / "in/a/x.png"), 2U);
  EXPECT_EQ(Complaint({"in/a/x.png", "other.png", "--in-place"}),
            "the results of 'in/a/x.png' and 'other.png' would be one file, which has several "
            "names");
  EXPECT_NE(Complaint({"in/a/x.png", "--in-place", "-d", "out"}).find("three ways"),
            std::string::npos);
  EXPECT_NE(Complaint({"in/a/x.png", "--in-place", "-f", "bmp"}).find("--format has no say"),
            std::string::npos);
}

TEST_F(BatchFiles, ValuesAreSavedUnderNamesOfTheirFiles) {
  const Finished finished =
      RunProgram({"batch", "-e", "CountColorsKRT", "-e", "dark = InvertKRT", "-r", "in", "--save",
                  "red=red/{below}/{stem}.bin", "--save", "dark={dir}/dark-{stem}.bmp"},
                 {scratch.Folder().native()});
  EXPECT_EQ(finished.status, 0) << finished.err;
  EXPECT_EQ(Below("red"), (Texts{"a/x.bin", "b/x.bin", "top.bin"}));
  EXPECT_EQ(fs::file_size(scratch / "red/a/x.bin"), 1024U);
  ExpectInverted("in/b/x.png", "in/b/dark-x.bmp");
}

}  // namespace
}  // namespace runner
