#include "runner/work/output_pattern.h"

#include <gtest/gtest.h>

#include "runner/failure.h"

namespace runner {
namespace {

std::string NameFor(const std::string& pattern, const InputName& input,
                    const std::string& extension = "") {
  return OutputPattern(pattern).For(input, extension).native();
}

std::string PatternErrorOf(const std::string& pattern) {
  try {
    OutputPattern parsed(pattern);
  } catch (const UsageFailure& failure) {
    return failure.what();
  }
  return "(no error)";
}

TEST(OutputPattern, PutsPartsOfTheInputsNameInPlace) {
  const InputName input{"photos/2020/a.b.JPG", "2020"};
  EXPECT_EQ(NameFor("{dir}/{stem}-inverted{ext}", input), "photos/2020/a.b-inverted.JPG");
  EXPECT_EQ(NameFor("out/{below}/{name}", input), "out/2020/a.b.JPG");
  EXPECT_EQ(NameFor("out/{name}", input, ".png"), "out/a.b.png");
  EXPECT_EQ(NameFor("{stem}{ext}", input, ".png"), "a.b.png");
  EXPECT_EQ(NameFor("{{{stem}}}", input), "{a.b}");
  EXPECT_EQ(NameFor("same.png", input), "same.png");
}

TEST(OutputPattern, WithoutFoldersThereIsADot) {
  EXPECT_EQ(NameFor("{dir}/{name}", {"a.jpg", ""}), "a.jpg");
  EXPECT_EQ(NameFor("out/{below}/{name}", {"x/a.jpg", ""}), "out/a.jpg");
  EXPECT_EQ(NameFor("{dir}/{name}", {"/a.jpg", ""}), "//a.jpg");
  // Behind a link this isn't the folder "x".
  EXPECT_EQ(NameFor("{dir}/new/{name}", {"link/../a.jpg", ""}), "link/../new/a.jpg");
}

TEST(OutputPattern, InAFolderBracesAreText) {
  const InputName input{"photos/a.jpg", "2020/may"};
  EXPECT_EQ(OutputPattern::InFolder("{odd}").For(input, "").native(), "{odd}/2020/may/a.jpg");
  EXPECT_EQ(OutputPattern::InFolder(".").For({"x/a.jpg", ""}, "").native(), "a.jpg");
  EXPECT_EQ(OutputPattern::InFolder("/").For({"x/a.jpg", ""}, "").native(), "/a.jpg");
  EXPECT_EQ(OutputPattern::InFolder("out/").CommonFolder(), "out");
}

TEST(OutputPattern, OptionsStandInBracketsBehindIt) {
  const OutputPattern pattern("{stem}.jpg[Q=95,interlace]");
  EXPECT_EQ(pattern.EncodingOptions(), "Q=95,interlace");
  EXPECT_EQ(pattern.For({"a[1].png", ""}, ""), "a[1].jpg");
  EXPECT_EQ(OutputPattern("{name}[Q=95]").EncodingOptions(), "Q=95");
  EXPECT_EQ(OutputPattern("{stem}[1]").EncodingOptions(), "");
  EXPECT_EQ(NameFor("{stem}[1]", {"a.png", ""}), "a[1]");
}

TEST(OutputPattern, KnowsTheFolderOfAllOutputs) {
  EXPECT_EQ(OutputPattern("out/deep/x-{stem}.png").CommonFolder(), "out/deep");
  EXPECT_EQ(OutputPattern("/{stem}.png").CommonFolder(), "/");
  EXPECT_EQ(OutputPattern("x-{stem}.png").CommonFolder(), ".");
  EXPECT_EQ(OutputPattern("{dir}/{stem}.png").CommonFolder(), ".");
}

TEST(OutputPattern, MistakesAreNamed) {
  EXPECT_EQ(PatternErrorOf("{stem"),
            "in the pattern '{stem' a brace isn't closed; {{ stands for one");
  EXPECT_EQ(PatternErrorOf("stem}"),
            "in the pattern 'stem}' a brace closes that wasn't opened; }} stands for one");
  EXPECT_EQ(PatternErrorOf("{}.png").substr(0, 30), "the pattern '{}.png' has '{}';");
  EXPECT_EQ(PatternErrorOf(""), "an output needs a name");
}

}  // namespace
}  // namespace runner
