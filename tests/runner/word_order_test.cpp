#include "runner/word_order.h"

#include <gtest/gtest.h>

#include "tests/runner/images.h"
#include "tests/runner/scratch.h"

namespace runner {
namespace {

using Texts = std::vector<std::string>;

std::string InOrder(const Texts& words, const Texts& byOption = {}, const Texts& options = {}) {
  return CommandInOrder({"picturehost", "run", options}, words, byOption);
}

TEST(SortWords, TheFirstIsTheExpressionUnlessAnOptionGivesOne) {
  const Words plain = SortWords({"InvertKRT", "a.jpg", "b.jpg"}, {});
  EXPECT_EQ(plain.expressions, Texts{"InvertKRT"});
  EXPECT_EQ(plain.files, (Texts{"a.jpg", "b.jpg"}));
  const Words byOption = SortWords({"InvertKRT", "a.jpg"}, {"A", "B"});
  EXPECT_EQ(byOption.expressions, (Texts{"A", "B"}));
  EXPECT_EQ(byOption.files, (Texts{"InvertKRT", "a.jpg"}));
}

TEST(CommandInOrder, PutsExpressionsBeforeFiles) {
  EXPECT_EQ(InOrder({"a.jpg", "InvertKRT"}, {}, {"-o", "out put.png"}),
            "picturehost run InvertKRT a.jpg -o 'out put.png'");
  EXPECT_EQ(InOrder({"a.jpg", "InvertKRT", "ColornessKRT(20)"}, {}, {"-o", "b.png"}),
            "picturehost run -e InvertKRT -e 'ColornessKRT(20)' a.jpg -o b.png");
  EXPECT_EQ(InOrder({"InvertKRT", "isWhiteKRT", "a.jpg", "b.jpg"}),
            "picturehost run -e InvertKRT -e isWhiteKRT a.jpg b.jpg");
  EXPECT_EQ(InOrder({"isWhiteKRT", "a.jpg"}, {"InvertKRT"}),
            "picturehost run -e InvertKRT -e isWhiteKRT a.jpg");
  EXPECT_EQ(InOrder({"-a.jpg", "InvertKRT"}, {}, {"-o", "b.png"}),
            "picturehost run -o b.png -e InvertKRT -- -a.jpg");
  EXPECT_EQ(InOrder({"-", "InvertKRT"}), "picturehost run InvertKRT -");
}

TEST(CommandInOrder, AFileThatIsThereNeedsNoExtension) {
  const Scratch scratch;
  WriteBytes(scratch / "photo", "");
  EXPECT_EQ(InOrder({scratch / "photo", "InvertKRT"}),
            "picturehost run InvertKRT " + (scratch / "photo"));
  WriteBytes(scratch / "InvertKRT()", "");
  EXPECT_EQ(InOrder({scratch / "photo", scratch / "InvertKRT()"}), "");
}

TEST(CommandInOrder, LeavesAloneWhatIsInOrderAndWhatNothingIsKnownOf) {
  EXPECT_EQ(InOrder({}), "");
  EXPECT_EQ(InOrder({"InvertKRT", "a.jpg"}), "");
  EXPECT_EQ(InOrder({"a.jpg", "b.jpg"}), "");
  EXPECT_EQ(InOrder({"InvertKRT", "missing"}), "");
  EXPECT_EQ(InOrder({"InvrtKRT(", "a.jpg"}), "");
  // No file is among them.
  EXPECT_EQ(InOrder({"InvertKRT", "ColornessKRT(20)"}), "");
}

TEST(CommandInOrder, WithoutAPictureAllAreExpressions) {
  const CommandLine line{"picturehost", "run", {"--no-picture"}, CommandLine::Files::kNone};
  EXPECT_EQ(CommandInOrder(line, Texts{"1 + 2", "3 * 4"}, {}),
            "picturehost run -e '1 + 2' -e '3 * 4' --no-picture");
  EXPECT_EQ(CommandInOrder(line, Texts{"1 + 2"}, {}), "");
  EXPECT_EQ(CommandInOrder(line, Texts{"1 + 2", "a.jpg"}, {}), "");
}

}  // namespace
}  // namespace runner
