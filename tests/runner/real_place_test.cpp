#include "runner/work/real_place.h"

#include <gtest/gtest.h>

#include "runner/work/spool.h"
#include "tests/runner/images.h"
#include "tests/runner/scratch.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

TEST(RealFolders, FollowLinksAndNameWhatIsMissing) {
  const Scratch scratch;
  const fs::path real = fs::canonical(scratch.Folder());
  fs::create_directories(scratch / "a/b");
  fs::create_directory_symlink("a/b", scratch / "link");
  RealFolders folders;
  EXPECT_EQ(folders.Of(scratch / "link").path, real / "a/b");
  EXPECT_EQ(folders.Of(scratch / "link/new/deep").path, real / "a/b");
  EXPECT_EQ(folders.Of(scratch / "link/new/deep/").missing, "new/deep");
  EXPECT_EQ(folders.Of(scratch / "link/new").FullPath(), real / "a/b/new");
  EXPECT_EQ(folders.Of(scratch / "a/b").id, folders.Of(scratch / "link/../b").id);
  EXPECT_EQ(folders.PathOf(scratch / "link/x.png"), real / "a/b/x.png");
  EXPECT_EQ(folders.PathOf("x.png"), fs::current_path() / "x.png");
  EXPECT_EQ(folders.PathOf("/x.png"), "/x.png");
}

TEST(RealFolders, APlaceIsOneUnderAllItsNames) {
  const Scratch scratch;
  fs::create_directory(scratch / "a");
  fs::create_directory_symlink("a", scratch / "link");
  RealFolders folders;
  EXPECT_EQ(PlaceOf(folders.Of(scratch / "a/new"), "x"),
            PlaceOf(folders.Of(scratch / "link/new"), "x"));
  EXPECT_NE(PlaceOf(folders.Of(scratch / "a/new"), "x"),
            PlaceOf(folders.Of(scratch / "a/new"), "y"));
  EXPECT_NE(PlaceOf(folders.Of(scratch / "a/new"), "x"), PlaceOf(folders.Of(scratch / "a"), "x"));
}

TEST(Folded, IsOneForNamesThatDifferInCaseOrComposition) {
  EXPECT_EQ(Folded("DSC_1.JPG"), Folded("dsc_1.jpg"));
  EXPECT_EQ(Folded("CAF\xC3\x89"), Folded("cafe\xCC\x81"));
  EXPECT_EQ(Folded("stra\xC3\x9F"
                   "e"),
            Folded("STRASSE"));
  EXPECT_NE(Folded("a"), Folded("b"));
  EXPECT_EQ(Folded("A\xFF"), "a\xFF");
}

TEST(IgnoresCase, AsksTheFolderAndLeavesNothing) {
  const Scratch scratch;
  WriteBytes(scratch / "a", "");
  // What this file system does shows by a name.
  const bool wanted = fs::exists(scratch / "A");
  EXPECT_EQ(IgnoresCase(scratch.Folder()), wanted);
  EXPECT_EQ(std::distance(fs::directory_iterator(scratch.Folder()), fs::directory_iterator()), 1);
  EXPECT_FALSE(IgnoresCase(scratch / "gone"));
}

TEST(HashOf, IsTheBeginningOfASha256) {
  // As FIPS 180-2 has it for "abc".
  EXPECT_EQ(Hexadecimal(HashOf("abc")), "ba7816bf8f01cfea414140de5dae2223");
}

TEST(Spool, GivesBackWhatItTook) {
  Spool spool;
  const std::string longText(100'000, 'x');
  for (const std::string& text :
       {std::string("a"), std::string(), std::string("\0\n", 2), longText})
    spool.Add(text);
  EXPECT_EQ(spool.Count(), 4U);
  for (int pass = 0; pass < 2; ++pass) {
    spool.Rewind();
    std::string text;
    for (const std::string& wanted :
         {std::string("a"), std::string(), std::string("\0\n", 2), longText}) {
      ASSERT_TRUE(spool.Next(&text));
      EXPECT_EQ(text, wanted);
    }
    EXPECT_FALSE(spool.Next(&text));
  }
}

}  // namespace
}  // namespace runner
