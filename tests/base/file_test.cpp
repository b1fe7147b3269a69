// Saving never harms what was there: each way to fail leaves the old file and nothing else.
#include "base/file.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include "base/temporary_file.h"
#include "support/corpus.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;

void put(const fs::path& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

std::size_t names_in(const fs::path& folder) {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

bool save(const fs::path& path, const std::string& text) {
  SafeFile file(path);
  return file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}) && file.commit();
}

TEST(SafeFile, ReplacesTheTargetAndKeepsItsPermissions) {
  const testing::ScratchFolder folder;
  put(folder / "a", "old");
  fs::permissions(folder / "a", fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_TRUE(save(folder / "a", "new"));
  EXPECT_EQ(testing::file_text(folder / "a"), "new");
  EXPECT_EQ(fs::status(folder / "a").permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(names_in(folder.path()), 1u);
}

TEST(SafeFile, FollowsALink) {
  const testing::ScratchFolder folder;
  fs::create_directory(folder / "real");
  put(folder / "real/a", "old");
  fs::create_symlink("real/a", folder / "link");
  EXPECT_TRUE(save(folder / "link", "new"));
  EXPECT_TRUE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(testing::file_text(folder / "real/a"), "new");
}

TEST(SafeFile, WithoutACommitNothingIsLeft) {
  const testing::ScratchFolder folder;
  put(folder / "a", "old");
  {
    SafeFile file(folder / "a");
    const std::vector<std::uint8_t> much(1 << 20);
    EXPECT_TRUE(file.write(much));
  }
  EXPECT_EQ(testing::file_text(folder / "a"), "old");
  EXPECT_EQ(names_in(folder.path()), 1u);
}

TEST(SafeFile, WhatIsNoRegularFileIsRefusedAndStays) {
  const testing::ScratchFolder folder;
  fs::create_directory(folder / "dir");
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  fs::create_symlink("pipe", folder / "link");
  for (const char* name : {"dir", "pipe", "link", "missing/a"}) {
    const auto before = fs::symlink_status(folder / name).type();
    EXPECT_FALSE(save(folder / name, "new")) << name;
    EXPECT_FALSE(SafeFile(folder / name).reason().empty()) << name;
    EXPECT_EQ(fs::symlink_status(folder / name).type(), before) << name;
  }
  EXPECT_EQ(names_in(folder.path()), 3u);
  EXPECT_EQ(names_in(folder / "dir"), 0u);
}

TEST(SafeFile, KeepsAttributesAndTellsWhatItCantKeep) {
  const testing::ScratchFolder folder;
  put(folder / "a", "old");
  fs::create_hard_link(folder / "a", folder / "b");
  if (setxattr((folder / "a").c_str(), "user.origin", "here", 4, 0) != 0)
    GTEST_SKIP() << "no attributes here";
  SafeFile file(folder / "a");
  EXPECT_TRUE(file.write(std::vector<std::uint8_t>{'n', 'e', 'w'}) && file.commit());
  char value[8] = {};
  EXPECT_EQ(getxattr((folder / "a").c_str(), "user.origin", value, sizeof value), 4);
  EXPECT_STREQ(value, "here");
  EXPECT_EQ(testing::file_text(folder / "b"), "old");
  EXPECT_EQ(file.notes().size(), 1u) << "the second name";
}

TEST(SafeFile, WhatAKilledProgramLeftGoesAndWhatAnotherWritesStays) {
  const testing::ScratchFolder folder;
  put(folder / ".vellum-save-abcdef", "left");
  SafeFile other(folder / "b");
  const std::vector<std::uint8_t> much(1 << 20);
  EXPECT_TRUE(other.write(much));
  EXPECT_TRUE(save(folder / "a", "new"));
  EXPECT_FALSE(fs::exists(folder / ".vellum-save-abcdef"));
  sweep_temporaries(folder.path() / ".");
  EXPECT_TRUE(other.commit()) << other.reason();
  EXPECT_EQ(names_in(folder.path()), 2u);
}

TEST(ReplaceByCopy, LeavesTheTargetWhereItFails) {
  const testing::ScratchFolder folder;
  put(folder / "a", "new");
  put(folder / "b", "old");
  std::error_code error;
  EXPECT_FALSE(replace_by_copy(folder / "none", folder / "b", error));
  EXPECT_TRUE(error);
  EXPECT_EQ(testing::file_text(folder / "b"), "old");
  fs::permissions(folder / "a", fs::perms::owner_read);
  EXPECT_TRUE(replace_by_copy(folder / "a", folder / "b", error)) << error.message();
  EXPECT_EQ(testing::file_text(folder / "b"), "new");
  EXPECT_EQ(fs::status(folder / "b").permissions(), fs::perms::owner_read);
}

TEST(SafeFile, ANewFileHasThePermissionsThatTheProgramStartedWith) {
  const testing::ScratchFolder folder;
  const mode_t mask = umask(0);
  EXPECT_TRUE(save(folder / "a", "new"));
  umask(mask);
  const auto expected = static_cast<fs::perms>(0666 & ~mask);
  EXPECT_EQ(fs::status(folder / "a").permissions(), expected) << "another thread's mask does not count";
}

TEST(SafeFile, ADiskThatIsFullKeepsTheOldFile) {
  const testing::ScratchFolder folder;
  put(folder / "a", "old");
  // A limit on the size of files stands for a full disk: write() fails half way.
  rlimit old_limit{};
  getrlimit(RLIMIT_FSIZE, &old_limit);
  const rlimit small{1000, old_limit.rlim_max};
  const auto old_action = std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  SafeFile file(folder / "a");
  const std::vector<std::uint8_t> much(1 << 20);
  const bool written = file.write(much) && file.commit();
  setrlimit(RLIMIT_FSIZE, &old_limit);
  std::signal(SIGXFSZ, old_action);
  EXPECT_FALSE(written);
  EXPECT_FALSE(file.reason().empty());
  EXPECT_EQ(testing::file_text(folder / "a"), "old");
  EXPECT_EQ(names_in(folder.path()), 1u);
}

TEST(ReadFile, TellsWhyAFileCantBeRead) {
  const testing::ScratchFolder folder;
  put(folder / "a", "12345");
  std::string reason;
  EXPECT_EQ(read_file(folder / "a", reason, 5)->size(), 5u);
  for (const auto& [path, limit] :
       {std::pair<fs::path, int>{folder / "a", 4}, {folder / "none", 9}, {folder.path(), 9}}) {
    reason.clear();
    EXPECT_FALSE(read_file(path, reason, static_cast<std::uint64_t>(limit)));
    EXPECT_FALSE(reason.empty()) << path;
  }
  mkfifo((folder / "pipe").c_str(), 0600);
  EXPECT_FALSE(read_file(folder / "pipe", reason, 9)) << "a pipe is refused and does not hang";
}

}  // namespace
}  // namespace vellum
