// What a file keeps when another takes its place.
#include <grp.h>
#include <sys/xattr.h>

#include <cerrno>

#include "tests/runner/disk_calls.h"
#include "tests/runner/output_file_fixture.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

constexpr char kAccessList[] = "system.posix_acl_access";
constexpr uid_t kSomeone = 12345;
constexpr gid_t kTheirGroup = 23456, kOtherGroup = 34567;

class OutputAttributes : public OutputFiles {
 protected:
  void WriteWithMode(const std::string& name, mode_t mode) {
    WriteBytes(At(name), "before");
    ASSERT_EQ(::chmod(At(name).c_str(), mode), 0);
  }

  // Replaces a file as a user who is in these groups alone.
  bool PutAs(uid_t user, const std::vector<gid_t>& groups, const std::string& name) {
    return StatusOfChild([&] {
             if (::setgroups(groups.size(), groups.data()) != 0 || ::setgid(groups[0]) != 0 ||
                 ::setuid(user) != 0)
               return false;
             Put(At(name), "after");
             return true;
           }) == 0;
  }
};

std::string Attribute(const std::string& path, const char* name) {
  char value[256];
  const ssize_t size = ::getxattr(path.c_str(), name, value, sizeof value);
  return size < 0 ? "(none)" : std::string(value, size_t(size));
}

bool SetAttribute(const std::string& path, const char* name, const std::string& value) {
  return ::setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
}

// As the system stores it: the owner, one more user, the group, the most that these get, others.
std::string AccessList(unsigned user, const std::vector<unsigned>& rights) {
  std::string bytes("\2\0\0\0", 4);
  const unsigned tags[] = {0x01, 0x02, 0x04, 0x10, 0x20};
  for (size_t i = 0; i < 5; ++i) {
    const unsigned id = tags[i] == 0x02 ? user : 0xFFFFFFFF;
    for (const unsigned half : {tags[i], rights[i], id & 0xFFFF, id >> 16}) {
      bytes += char(half & 0xFF);
      bytes += char(half >> 8);
    }
  }
  return bytes;
}

TEST_F(OutputAttributes, ANewFileHasTheRightsThatNewFilesHave) {
  for (const auto& [mask, mode] : {std::pair{022, 0644}, {027, 0640}, {0, 0666}}) {
    const mode_t before = ::umask(mode_t(mask));
    Put(At("new"), "text");
    ::umask(before);
    EXPECT_EQ(ModeOf(At("new")), mode_t(mode));
    fs::remove(At("new"));
  }
}

TEST_F(OutputAttributes, RightsStayWithoutTheBitsForPrograms) {
  for (const auto& [before, after] : std::initializer_list<std::pair<mode_t, mode_t>>{
           {0640, 0640}, {0666, 0666}, {0601, 0601}, {04755, 0755}, {02775, 0775}, {01644, 0644}}) {
    WriteWithMode("out", before);
    ASSERT_EQ(ModeOf(At("out")), before);
    Put(At("out"), "after");
    EXPECT_EQ(ReadBytes(At("out")), "after");
    EXPECT_EQ(ModeOf(At("out")), after) << std::oct << before;
  }
}

TEST_F(OutputAttributes, NobodyElseReadsTheFileBeforeItIsComplete) {
  WriteWithMode("out", 0644);
  OutputFile file(At("out"));
  WriteText(&file, "half");
  EXPECT_EQ(ModeOf(Unfinished()), 0600U);
  file.Commit();
  EXPECT_EQ(ModeOf(At("out")), 0644U);
}

TEST_F(OutputAttributes, RootKeepsOwnerAndGroup) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  WriteWithMode("out", 0664);
  ASSERT_EQ(::chown(At("out").c_str(), kSomeone, kTheirGroup), 0);
  ASSERT_EQ(::chmod(At("out").c_str(), 06775), 0);
  Put(At("out"), "after");
  EXPECT_EQ(StatusOf(At("out")).st_uid, kSomeone);
  EXPECT_EQ(StatusOf(At("out")).st_gid, kTheirGroup);
  EXPECT_EQ(ModeOf(At("out")), 0775U);
}

TEST_F(OutputAttributes, AGroupThatCannotBeKeptGivesItsRightsToNoOther) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can become someone else";
  ASSERT_EQ(::chown(scratch.Folder().c_str(), kSomeone, kOtherGroup), 0);
  for (const auto& [before, after] : std::initializer_list<std::pair<mode_t, mode_t>>{
           {0664, 0644}, {0640, 0600}, {0604, 0600}, {0666, 0666}, {0775, 0755}}) {
    WriteWithMode("out", before);
    ASSERT_EQ(::chown(At("out").c_str(), kSomeone, kTheirGroup), 0);
    ASSERT_TRUE(PutAs(kSomeone, {kOtherGroup}, "out"));
    EXPECT_EQ(ReadBytes(At("out")), "after");
    EXPECT_EQ(StatusOf(At("out")).st_uid, kSomeone);
    EXPECT_EQ(StatusOf(At("out")).st_gid, kOtherGroup);
    EXPECT_EQ(ModeOf(At("out")), after) << std::oct << before;
  }
}

TEST_F(OutputAttributes, AGroupOfTheUsersIsKeptAlsoWhereTheOwnerIsNot) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can become someone else";
  ASSERT_EQ(::chown(scratch.Folder().c_str(), kSomeone, kOtherGroup), 0);
  WriteWithMode("out", 0664);
  ASSERT_EQ(::chown(At("out").c_str(), kSomeone + 1, kTheirGroup), 0);
  ASSERT_TRUE(PutAs(kSomeone, {kOtherGroup, kTheirGroup}, "out"));
  EXPECT_EQ(StatusOf(At("out")).st_uid, kSomeone);
  EXPECT_EQ(StatusOf(At("out")).st_gid, kTheirGroup);
  EXPECT_EQ(ModeOf(At("out")), 0664U);
}

TEST_F(OutputAttributes, AttributesOfTheUserAreKept) {
  WriteWithMode("out", 0644);
  if (!SetAttribute(At("out"), "user.comment", "mine")) GTEST_SKIP() << "none on this file system";
  ASSERT_TRUE(SetAttribute(At("out"), "user.empty", ""));
  ASSERT_TRUE(SetAttribute(At("out"), "user.bytes", std::string("a\0b", 3)));
  Put(At("out"), "after");
  EXPECT_EQ(Attribute(At("out"), "user.comment"), "mine");
  EXPECT_EQ(Attribute(At("out"), "user.empty"), "");
  EXPECT_EQ(Attribute(At("out"), "user.bytes"), std::string("a\0b", 3));
}

TEST_F(OutputAttributes, AccessListsAreKept) {
  WriteWithMode("out", 0600);
  const std::string list = AccessList(kSomeone, {6, 4, 0, 4, 0});
  if (!SetAttribute(At("out"), kAccessList, list)) GTEST_SKIP() << "none on this file system";
  const mode_t mode = ModeOf(At("out"));
  Put(At("out"), "after");
  EXPECT_EQ(Attribute(At("out"), kAccessList), list);
  EXPECT_EQ(ModeOf(At("out")), mode);
}

TEST_F(OutputAttributes, AnAccessListThatCannotBeKeptLeavesRightsToTheOwnerAlone) {
  WriteWithMode("out", 0664);
  if (!SetAttribute(At("out"), kAccessList, AccessList(kSomeone, {6, 6, 4, 6, 4})))
    GTEST_SKIP() << "none on this file system";
  ASSERT_EQ(ModeOf(At("out")), 0664U);
  const WatchedDisk disk([](const DiskCall& call) { return call.name == "fsetxattr" ? EPERM : 0; });
  Put(At("out"), "after");
  EXPECT_EQ(ReadBytes(At("out")), "after");
  EXPECT_EQ(Attribute(At("out"), kAccessList), "(none)");
  EXPECT_EQ(ModeOf(At("out")), 0600U);
}

TEST_F(OutputAttributes, AttributesThatFindNoRoomLeaveTheOldFile) {
  WriteWithMode("out", 0644);
  if (!SetAttribute(At("out"), "user.comment", "mine")) GTEST_SKIP() << "none on this file system";
  const WatchedDisk disk(
      [](const DiskCall& call) { return call.name == "fsetxattr" ? ENOSPC : 0; });
  EXPECT_EQ(ErrorOf([&] { Put(At("out"), "after"); }),
            "can't write '" + At("out") + "': No space left on device");
  EXPECT_EQ(ReadBytes(At("out")), "before");
  EXPECT_EQ(Attribute(At("out"), "user.comment"), "mine");
  EXPECT_EQ(Names(), std::vector<std::string>{"out"});
}

TEST_F(OutputAttributes, AFileWithoutAccessListGetsNoneFromItsFolder) {
  WriteWithMode("out", 0664);
  if (!SetAttribute(scratch.Folder().native(), "system.posix_acl_default",
                    AccessList(kSomeone, {7, 7, 0, 7, 0})))
    GTEST_SKIP() << "none on this file system";
  Put(At("new"), "text");
  ASSERT_NE(Attribute(At("new"), kAccessList), "(none)");
  Put(At("out"), "after");
  EXPECT_EQ(Attribute(At("out"), kAccessList), "(none)");
  EXPECT_EQ(ModeOf(At("out")), 0664U);
}

}  // namespace
}  // namespace runner
