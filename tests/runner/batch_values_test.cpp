// Values that expressions come to, for programs, and limits for one file.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/runner/run_fixture.h"

namespace runner {
namespace {

using Texts = std::vector<std::string>;

class BatchValues : public ::testing::Test {
 protected:
  using json = nlohmann::json;

  BatchValues() {
    const auto plain = [](uint8_t level) {
      return MakeImage(4, 4, [level](int, int) { return Pixel{level, level, level}; });
    };
    Save(plain(255), scratch / "white.png", "png");
    Save(plain(0), scratch / "black.png", "png");
    WriteBytes(scratch / "bad.png", "no, \"no\" picture");
  }
  Finished Run(Texts arguments) { return RunProgram(arguments, {scratch.Folder().native()}); }
  static std::vector<json> Lines(const std::string& text) {
    std::istringstream stream(text);
    std::vector<json> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(json::parse(line));
    return lines;
  }

  Scratch scratch;
};

TEST_F(BatchValues, WithoutAnOutputNothingIsWritten) {
  const Finished finished = Run({"batch", "isWhiteKRT", "white.png", "black.png", "-j", "2"});
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(finished.out, "white.png: isWhiteKRT = true\nblack.png: isWhiteKRT = false\n");
  EXPECT_EQ(finished.err, "2 done\n");
  for (const auto& entry : std::filesystem::directory_iterator(scratch.Folder()))
    EXPECT_EQ(entry.path().extension(), ".png") << entry.path();
  EXPECT_EQ(Run({"batch", "InvertKRT", "white.png"}).err,
            "picturehost: white.png: the last expression came to a picture, and there is no "
            "--output to put it in\n0 done, 1 failed\n");
  EXPECT_EQ(Run({"batch", "isWhiteKRT", "white.png", "--resume"}).status, 2);
}

TEST_F(BatchValues, JsonHasAnObjectForEachFileInTheirOrder) {
  Texts words = {"batch", "-e", "isWhiteKRT", "-e",    "ColornessKRT(20)", "-e", "isWhiteKRT",
                 "-j",    "3",  "-q",         "--json"};
  for (int i = 0; i < 30; ++i)
    words.emplace_back(i % 10 == 5 ? "bad.png" : i % 2 == 0 ? "white.png" : "black.png");
  const Finished finished = Run(words);
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 3) << finished.err;
  const std::vector<json> lines = Lines(finished.out);
  ASSERT_EQ(lines.size(), 30U);
  for (size_t i = 0; i < 30; ++i) {
    EXPECT_EQ(lines[i]["file"], words[11 + i]);
    EXPECT_FALSE(lines[i].contains("page"));
    if (i % 10 == 5) {
      EXPECT_NE(lines[i]["error"].get<std::string>().find("isn't an image"), std::string::npos);
      EXPECT_FALSE(lines[i].contains("values"));
      continue;
    }
    EXPECT_EQ(
        lines[i]["values"],
        (json{{"isWhiteKRT", i % 2 == 0}, {"ColornessKRT", 0}, {"isWhiteKRT 2", i % 2 == 0}}));
  }
}

TEST_F(BatchValues, ValuesHaveTheirTypes) {
  WriteBytes(scratch / "three.bin", std::string("\x01\xFF\x00", 3));
  const Finished finished =
      Run({"run", "--json", "-e", "CountColorsKRT", "-e", "memoryblock(\"three.bin\")", "-e",
           "\"caf\xC3\xA9\"", "-e", "&c102030", "-e", "0.5", "-e", "PicturetoBinaryStringKRT(self)",
           "white.png"});
  ASSERT_EQ(finished.status, 0) << finished.err;
  const std::vector<json> lines = Lines(finished.out);
  ASSERT_EQ(lines.size(), 1U);
  const json& values = lines[0]["values"];
  json histogram = json::array();
  for (int i = 0; i < 256; ++i) histogram.push_back(i == 255 ? 16 : 0);
  EXPECT_EQ(values["red"], histogram);
  EXPECT_EQ(values["memoryblock"], (json{1, 255, 0}));
  EXPECT_EQ(values["value"], "caf\xC3\xA9");
  EXPECT_EQ(values["value 2"], "#102030");
  EXPECT_EQ(values["value 3"], 0.5);
  EXPECT_TRUE(values["PicturetoBinaryStringKRT"]["bytes"].is_string());
  EXPECT_EQ(Lines(Run({"run", "--json", "--no-picture", "1 + 2"}).out).at(0),
            (json{{"values", {{"value", 3}}}}));
}

TEST_F(BatchValues, PagesHaveALineEach) {
  Save(Noise(4, 4), scratch / "one.tif", "tiff");
  ASSERT_EQ(std::system(("/usr/bin/python3 -c \"from PIL import Image; i = Image.new('L', (4, 4), "
                         "255); i.save('" +
                         (scratch / "two.tif") +
                         "', save_all=True, append_images=[Image.new('L', (4, 4))])\"")
                            .c_str()),
            0);
  const std::vector<json> lines =
      Lines(Run({"batch", "isWhiteKRT", "one.tif", "two.tif", "--json"}).out);
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[0], (json{{"file", "one.tif"}, {"values", {{"isWhiteKRT", false}}}}));
  EXPECT_EQ(lines[1], (json{{"file", "two.tif"}, {"page", 1}, {"values", {{"isWhiteKRT", true}}}}));
  EXPECT_EQ(lines[2],
            (json{{"file", "two.tif"}, {"page", 2}, {"values", {{"isWhiteKRT", false}}}}));
  EXPECT_EQ(Run({"batch", "isWhiteKRT", "two.tif", "--csv"}).out,
            "file,page,isWhiteKRT,error\ntwo.tif,1,true,\ntwo.tif,2,false,\n");
}

TEST_F(BatchValues, ATableQuotesWhatNeedsIt) {
  Save(Noise(4, 4), scratch / "a \"b\", c\nd.png", "png");
  WriteBytes(scratch / "three.bin", "abc");
  Finished finished = Run({"batch", "-e", "isWhiteKRT", "-e", "memoryblock(\"three.bin\")",
                           "bad.png", "a \"b\", c\nd.png", "white.png", "--csv", "-j", "1"});
  const std::string why = "isn't an image";
  EXPECT_TRUE(finished.out.starts_with("file,page,isWhiteKRT,memoryblock,error\nbad.png,,,,"))
      << finished.out;
  EXPECT_NE(finished.out.find(why), std::string::npos);
  EXPECT_TRUE(
      finished.out.ends_with("\n\"a \"\"b\"\", c\nd.png\",,false,\"[97,98,99]\",\n"
                             "white.png,,true,\"[97,98,99]\",\n"))
      << finished.out;
  finished = Run({"batch", "isWhiteKRT", "bad.png", "--csv"});
  EXPECT_TRUE(finished.out.starts_with("file,page,error\nbad.png,,")) << finished.out;
  EXPECT_EQ(Run({"batch", "isWhiteKRT", "white.png", "--csv", "--json"}).status, 2);
}

TEST_F(BatchValues, NamesThatAreNotUtf8AreBytes) {
  Save(Noise(4, 4), scratch / "caf\xE9.png", "png");
  EXPECT_EQ(Lines(Run({"batch", "isWhiteKRT", "caf\xE9.png", "--json"}).out).at(0)["file"],
            (json{{"bytes", "636166e92e706e67"}}));
}

TEST_F(BatchValues, AResultCanBeTheExitStatus) {
  EXPECT_EQ(Run({"run", "--exit-status", "isWhiteKRT", "white.png"}).status, 0);
  EXPECT_EQ(Run({"run", "--exit-status", "isWhiteKRT", "black.png"}).status, 1);
  EXPECT_EQ(Run({"run", "--exit-status", "isWhiteKRT", "bad.png"}).status, 2);
  EXPECT_EQ(Run({"run", "--exit-status", "isWhiteKRT", "gone.png"}).status, 2);
  const Finished number = Run({"run", "--exit-status", "ColornessKRT(20)", "white.png"});
  EXPECT_EQ(number.status, 2);
  EXPECT_EQ(number.err,
            "picturehost: --exit-status needs an expression at the end that comes to true or "
            "false\n");
  // A boolean before the last expression is none.
  EXPECT_EQ(Run({"run", "--exit-status", "-e", "isWhiteKRT", "-e", "InvertKRT", "white.png", "-o",
                 "out.png"})
                .status,
            2);
  EXPECT_FALSE(std::filesystem::exists(scratch / "out.png"));
}

TEST_F(BatchValues, AFileThatTakesTooLongFailsAndTheOthersAreDone) {
  Save(Noise(4000, 3000), scratch / "slow.bmp", "bmp");
  const Finished finished = Run({"batch", "InvertKRT", "slow.bmp", "white.png", "-d", "out", "-f",
                                 "png", "-j", "1", "--file-timeout", "0.05"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_NE(finished.err.find("slow.bmp: it took longer than --file-timeout allows\n"),
            std::string::npos)
      << finished.err;
  for (const auto& entry : std::filesystem::directory_iterator(scratch / "out"))
    EXPECT_NE(entry.path().extension(), ".part");
  for (const char* value : {"nan", "0", "-1", "soon"})
    EXPECT_EQ(Run({"batch", "isWhiteKRT", "white.png", "--file-timeout", value}).status, 2);
}

TEST_F(BatchValues, AFileThatWantsTooMuchMemoryFailsAndTheOthersAreDone) {
#ifdef PICTURE_SANITIZED
  GTEST_SKIP() << "the sanitizers' own memory is beyond any limit";
#endif
  Save(MakeImage(8000, 8000,
                 [](int, int) {
                   return Pixel{1, 2, 3};
                 }),
       scratch / "large.png", "png");
  const Finished finished = Run({"batch", "InvertKRT", "large.png", "white.png", "-d", "out", "-j",
                                 "1", "--file-memory", "150"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_TRUE(finished.err.starts_with("picturehost: large.png: ")) << finished.err;
  EXPECT_TRUE(finished.err.ends_with("\n1 written to out, 1 failed\n")) << finished.err;
}

}  // namespace
}  // namespace runner
