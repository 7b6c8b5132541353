// What a batch notes, and what it does not do twice.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "runner/work/claims.h"
#include "tests/runner/images.h"
#include "tests/runner/program.h"
#include "tests/runner/scratch.h"

namespace runner {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

class BatchResume : public ::testing::Test {
 protected:
  using json = nlohmann::json;

  BatchResume() {
    for (const char* name : {"a.png", "b.png", "c.png"})
      Save(Noise(6, 5, 3, ++seed), scratch / name, "png");
  }
  Finished Run(Texts arguments) {
    arguments.insert(arguments.begin(), "batch");
    return RunProgram(arguments, {scratch.Folder().native()});
  }
  std::string Summary(const Texts& arguments) {
    const Finished finished = Run(arguments);
    EXPECT_EQ(finished.status, 0);
    return finished.err;
  }
  std::vector<json> Lines(const std::string& name = "out/picturehost-manifest.jsonl") {
    std::istringstream text(ReadBytes(scratch / name));
    std::vector<json> lines;
    for (std::string line; std::getline(text, line);) lines.push_back(json::parse(line));
    return lines;
  }
  struct stat StatusOf(const std::string& name) {
    struct stat status {};
    EXPECT_EQ(::stat((scratch / name).c_str(), &status), 0) << name;
    return status;
  }
  static int64_t TimeIn(const struct stat& status) {
    return status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec;
  }
  void Touch(const std::string& name, int64_t seconds) {
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (scratch / name).c_str(), times, 0), 0);
  }
  void ExpectInverted(const Image& in, const std::string& result) {
    const Image out = Read(scratch / result);
    ASSERT_EQ(in.bytes.size(), out.bytes.size()) << result;
    for (size_t i = 0; i < in.bytes.size(); ++i)
      ASSERT_EQ(out.bytes[i], 255 - in.bytes[i]) << result;
  }

  uint32_t seed = 0;
  Scratch scratch;
  const Texts words = {"InvertKRT", "a.png", "b.png", "c.png", "-d", "out", "-j", "1", "--resume"};
};

TEST_F(BatchResume, TheManifestSaysWhatWasMadeOfWhat) {
  WriteBytes(scratch / "bad.png", "no picture");
  EXPECT_EQ(Run({"InvertKRT", "a.png", "bad.png", "-d", "out", "-j", "1"}).status, 1);
  const std::vector<json> lines = Lines();
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0]["input"], (fs::canonical(scratch.Folder()) / "a.png").native());
  EXPECT_EQ(lines[0]["size"], fs::file_size(scratch / "a.png"));
  EXPECT_EQ(lines[0]["time"], TimeIn(StatusOf("a.png")));
  EXPECT_EQ(lines[0]["outputs"][0]["file"], "a.png");
  EXPECT_EQ(lines[0]["outputs"][0]["size"], fs::file_size(scratch / "out/a.png"));
  EXPECT_EQ(lines[0]["outputs"][0]["time"], TimeIn(StatusOf("out/a.png")));
  EXPECT_EQ(lines[0]["result"], "written");
  EXPECT_EQ(lines[0]["settings"].get<std::string>().size(), 32U);
  EXPECT_GT(lines[0]["seconds"].get<double>(), 0);
  EXPECT_EQ(lines[1]["result"], "failed");
  EXPECT_NE(lines[1]["error"].get<std::string>().find("isn't an image"), std::string::npos);
}

TEST_F(BatchResume, WhatIsDoneAndUnchangedIsLeftOut) {
  EXPECT_EQ(Summary(words), "3 written to out\n");
  const ino_t before = StatusOf("out/a.png").st_ino;
  EXPECT_EQ(Summary(words), "0 written to out, 3 done before\n");
  EXPECT_EQ(StatusOf("out/a.png").st_ino, before);
  EXPECT_EQ(Lines().size(), 3U);
}

TEST_F(BatchResume, WhatHasChangedIsDoneAgain) {
  Summary(words);
  Touch("a.png", 1'000'000'000);
  EXPECT_EQ(Summary(words), "1 written to out, 2 done before\n");
  fs::remove(scratch / "out/b.png");
  EXPECT_EQ(Summary(words), "1 written to out, 2 done before\n");
  WriteBytes(scratch / "out/c.png", "other bytes");
  EXPECT_EQ(Summary(words), "1 written to out, 2 done before\n");
  Touch("out/c.png", 1'000'000'000);
  EXPECT_EQ(Summary(words), "1 written to out, 2 done before\n");
  ExpectInverted(Read(scratch / "c.png"), "out/c.png");
}

TEST_F(BatchResume, OtherExpressionsAndOptionsAreOtherResults) {
  Summary(words);
  Texts other = words;
  other[0] = "InvertKRT()";
  EXPECT_EQ(Summary(other), "3 written to out\n");
  other.insert(other.end(), {"--compression", "9"});
  EXPECT_EQ(Summary(other), "3 written to out\n");
  EXPECT_EQ(Summary(other), "0 written to out, 3 done before\n");
  other.insert(other.end(), {"--pixel-limit", "3", "-q"});
  EXPECT_EQ(Summary(other), "");
  EXPECT_EQ(Lines().size(), 9U);
}

TEST_F(BatchResume, AFileThatAnExpressionReadsIsPartOfIt) {
  Save(Noise(6, 5, 3, 9), scratch / "over.png", "png");
  Texts merge = words;
  merge[0] = "MergePictureKRT(self, picture(\"over.png\"))";
  EXPECT_EQ(Summary(merge), "3 written to out\n");
  EXPECT_EQ(Summary(merge), "0 written to out, 3 done before\n");
  Save(Noise(6, 5, 3, 10), scratch / "over.png", "png");
  Touch("over.png", 1'000'000'000);
  EXPECT_EQ(Summary(merge), "3 written to out\n");
}

TEST_F(BatchResume, ACutLineCostsItsFileAlone) {
  Summary(words);
  const std::string bytes = ReadBytes(scratch / "out/picturehost-manifest.jsonl");
  WriteBytes(scratch / "out/picturehost-manifest.jsonl", bytes.substr(0, bytes.size() - 20));
  EXPECT_EQ(Summary(words), "1 written to out, 2 done before\n");
  EXPECT_EQ(Lines().size(), 3U);
}

TEST_F(BatchResume, AnotherInputDoesNotTakeTheOutput) {
  fs::create_directory(scratch / "card");
  Save(Noise(3, 3, 3, 20), scratch / "card/a.png", "png");
  Summary(words);
  const std::string before = ReadBytes(scratch / "out/a.png");
  const Finished finished = Run({"InvertKRT", "card/a.png", "b.png", "-d", "out"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.err, "picturehost: 'out/a.png' was made of '" +
                              (fs::canonical(scratch.Folder()) / "a.png").native() +
                              "' by an earlier run, and another file would take its place; the "
                              "manifest 'out/picturehost-manifest.jsonl' says so\n");
  EXPECT_EQ(ReadBytes(scratch / "out/a.png"), before);
  // The file alone says nothing.
  EXPECT_EQ(Summary({"InvertKRT", "a.png", "-d", "out"}), "1 written to out\n");
}

TEST_F(BatchResume, AFileThatIsMovedWithItsManifestIsKnown) {
  Summary(words);
  fs::rename(scratch / "out", scratch / "moved");
  Texts moved = words;
  moved[5] = "moved";
  EXPECT_EQ(Summary(moved), "0 written to moved, 3 done before\n");
}

TEST_F(BatchResume, InPlaceNothingIsDoneTwice) {
  const Image before = Read(scratch / "a.png");
  const Texts inPlace = {"InvertKRT", "a.png", "b.png", "--in-place", "--resume"};
  EXPECT_EQ(Summary(inPlace), "2 written\n");
  EXPECT_EQ(Summary(inPlace), "0 written, 2 done before\n");
  ExpectInverted(before, "a.png");
  // A crash before the note of the end: the intent is enough.
  std::string kept;
  for (const json& line : Lines("picturehost-manifest.jsonl"))
    if (line["result"] == "intended") kept += line.dump() + "\n";
  WriteBytes(scratch / "picturehost-manifest.jsonl", kept);
  EXPECT_EQ(Summary(inPlace), "0 written, 2 done before\n");
  EXPECT_EQ(Lines("picturehost-manifest.jsonl").size(), 4U);
  ExpectInverted(before, "a.png");
  // What was changed afterwards may have been either.
  Touch("a.png", 1'000'000'000);
  const Finished finished = Run(inPlace);
  EXPECT_EQ(finished.status, 1);
  EXPECT_NE(finished.err.find("can't be told"), std::string::npos);
  ExpectInverted(before, "a.png");
  // Without the option a person wants it again.
  EXPECT_EQ(Summary({"InvertKRT", "a.png", "--in-place"}), "1 written\n");
  EXPECT_EQ(Read(scratch / "a.png").bytes, before.bytes);
}

TEST_F(BatchResume, AnIntentThatWasNotCarriedOutIsTakenUp) {
  const Image before = Read(scratch / "a.png");
  const std::string bytes = ReadBytes(scratch / "a.png");
  const struct stat status = StatusOf("a.png");
  const Texts inPlace = {"InvertKRT", "a.png", "--in-place", "--resume"};
  Summary(inPlace);
  std::string kept;
  for (const json& line : Lines("picturehost-manifest.jsonl"))
    if (line["result"] == "intended") kept += line.dump() + "\n";
  WriteBytes(scratch / "picturehost-manifest.jsonl", kept);
  WriteBytes(scratch / "a.png", bytes);
  const timespec times[2] = {status.st_mtim, status.st_mtim};
  ::utimensat(AT_FDCWD, (scratch / "a.png").c_str(), times, 0);
  EXPECT_EQ(Summary(inPlace), "1 written\n");
  ExpectInverted(before, "a.png");
}

TEST_F(BatchResume, AFileWithSeveralNamesIsNotDoneTwiceEither) {
  fs::create_hard_link(scratch / "a.png", scratch / "same.png");
  const Image before = Read(scratch / "a.png");
  const Texts inPlace = {"InvertKRT", "a.png", "--in-place", "--resume"};
  EXPECT_EQ(Summary(inPlace), "1 written\n");
  std::string kept;
  for (const json& line : Lines("picturehost-manifest.jsonl"))
    if (line["result"] == "intended") kept += line.dump() + "\n";
  WriteBytes(scratch / "picturehost-manifest.jsonl", kept);
  EXPECT_EQ(Summary(inPlace), "0 written, 1 done before\n");
  ExpectInverted(before, "same.png");
}

TEST_F(BatchResume, RunsAtATimeKeepApart) {
  Save(Noise(2500, 2000), scratch / "slow.bmp", "bmp");
  Program first({"batch", "InvertKRT", "slow.bmp", "-d", "out", "-f", "png", "-j", "1"},
                {scratch.Folder().native()});
  while (first.Children().empty()) {
  }
  const pid_t worker = first.Children().at(0);
  for (const pid_t each : {first.Process(), worker}) ::kill(each, SIGSTOP);
  fs::create_directory(scratch / "other");
  fs::copy_file(scratch / "a.png", scratch / "other/slow.png");
  const Finished second = Run({"InvertKRT", "other/slow.png", "-d", "out"});
  EXPECT_EQ(Summary({"InvertKRT", "a.png", "-d", "out"}), "1 written to out\n");
  for (const pid_t each : {worker, first.Process()}) ::kill(each, SIGKILL);
  first.Wait();
  EXPECT_EQ(second.err,
            "picturehost: another batch that is running writes some of the same files; the "
            "manifest 'out/picturehost-manifest.jsonl' is common to both\n");
  // Claims of the dead are void.
  EXPECT_EQ(Summary({"InvertKRT", "other/slow.png", "-d", "out"}), "1 written to out\n");
  for (const auto& entry : fs::directory_iterator(scratch / "out"))
    EXPECT_FALSE(entry.path().filename().native().starts_with(".picturehost-claims"))
        << entry.path();
}

}  // namespace
}  // namespace runner
