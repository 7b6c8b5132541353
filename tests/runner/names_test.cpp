#include "runner/names.h"

#include <gtest/gtest.h>

#include "runner/operand.h"
#include "runner/progress.h"

namespace runner {
namespace {

using Names = std::vector<std::string>;

TEST(Quoted, KeepsTextAndEscapesWhatATerminalWouldObey) {
  EXPECT_EQ(Quoted("photo 1.jpg"), "'photo 1.jpg'");
  EXPECT_EQ(Quoted("caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x93\xB7"),
            "'caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x93\xB7'");
  EXPECT_EQ(Quoted("a\nb\tc\r\x1B[2J\x7F"), "'a\\nb\\tc\\x0D\\x1B[2J\\x7F'");
  EXPECT_EQ(Quoted("\xFF\xC3\xC2\x9B\xC0\x80"), "'\\xFF\\xC3\\xC2\\x9B\\xC0\\x80'");
  EXPECT_EQ(Shown("photo.jpg"), "photo.jpg");
  EXPECT_EQ(Shown("a\nb"), "'a\\nb'");
}

TEST(ShellQuoted, IsOneWordToAShell) {
  EXPECT_EQ(ShellQuoted("photo-1.jpg"), "photo-1.jpg");
  EXPECT_EQ(ShellQuoted(""), "''");
  EXPECT_EQ(ShellQuoted("ColornessKRT(20)"), "'ColornessKRT(20)'");
  EXPECT_EQ(ShellQuoted("it's $HOME"), "'it'\\''s $HOME'");
  EXPECT_EQ(ShellQuoted("a\nb'\\\xFF"), "$'a\\nb\\'\\\\\\xFF'");
}

TEST(Nearest, FindsMisspeltAndUnfinishedNames) {
  const Names candidates = {"InvertKRT",    "InvertGrayKRT", "isWhiteKRT",
                            "ColornessKRT", "ScrollKRT",     "ScrollVerticalKRT"};
  EXPECT_EQ(Nearest("InvrtKRT", candidates), Names{"InvertKRT"});
  EXPECT_EQ(Nearest("InvetrKRT", candidates), Names{"InvertKRT"});
  EXPECT_EQ(Nearest("invert", candidates), (Names{"InvertKRT", "InvertGrayKRT"}));
  EXPECT_EQ(Nearest("white", candidates), Names{"isWhiteKRT"});
  EXPECT_EQ(Nearest("InvertGreyKRT", candidates)[0], "InvertGrayKRT");
  EXPECT_EQ(Nearest("Blur", candidates), Names{});
  EXPECT_EQ(Nearest("", candidates), Names{});
  EXPECT_EQ(DidYouMean("invert", candidates), "; did you mean InvertKRT or InvertGrayKRT?");
  EXPECT_EQ(DidYouMean("Blur", candidates), "");
}

TEST(Nearest, NamesOverloadsOnce) {
  EXPECT_EQ(Nearest("InvrtKRT", Names{"InvertKRT", "InvertKRT"}), Names{"InvertKRT"});
}

TEST(ProgressBar, FitsItsTerminal) {
  EXPECT_EQ(ProgressBar(5, 10, 0, 20), "[######------] 5/10");
  EXPECT_EQ(ProgressBar(10, 10, 1, 40), "[#####################] 10/10, 1 failed");
  EXPECT_EQ(ProgressBar(0, 0, 0, 200), "[" + std::string(50, '#') + "] 0/0");
  EXPECT_EQ(ProgressBar(5, 10, 0, 8), "5/10");
  for (size_t columns = 1; columns < 100; ++columns)
    EXPECT_TRUE(ProgressBar(99, 100, 98, columns).size() < std::max<size_t>(columns, 18));
}

}  // namespace
}  // namespace runner
