// Trees of folders: where they begin, what they leave out, and media that can be taken out.
#include "shell/widgets/folder_tree.h"

#include <gtest/gtest.h>

#include <fstream>

#include "shell/look/text.h"
#include "shell/widgets/folder_places.h"
#include "shell_fixture.h"

namespace vellum::testing {
namespace {

namespace fs = std::filesystem;

TEST(FolderTree, BeginsAtAPlaceAsLongAsWhatIsShownLiesThere) {
  const ScratchFolder scratch;
  for (const char* name : {"a/b", "ab", "c"}) fs::create_directories(scratch / name);
  const QString top = QString::fromStdString(fs::canonical(scratch.path()).string());
  FolderTree tree;
  tree.show();
  tree.show_folder(top + "/a/b");
  tree.begin_at(top + "/a");
  EXPECT_EQ(tree.first(), top + "/a");
  const auto rows = [&tree] {
    QStringList names;
    for (int i = 0; i < tree.model()->rowCount(tree.rootIndex()); ++i)
      names += tree.model()->index(i, 0, tree.rootIndex()).data().toString();
    return names;
  };
  EXPECT_EQ(rows(), QStringList{"a"}) << "its name begins another's";
  EXPECT_EQ(tree.currentIndex().data().toString(), "b");
  tree.show_folder(top + "/ab");
  EXPECT_EQ(tree.first(), "/");
  EXPECT_EQ(tree.currentIndex().data().toString(), "ab");
  tree.begin_at(top + "/c");
  EXPECT_EQ(tree.first(), "/") << "the current folder is seen";
}

TEST(FolderTree, RemovableMediaAreThoseThatTheirDevicesSay) {
  const ScratchFolder scratch;
  for (const char* disk : {"disks/sda/sda1", "disks/sdb/sdb1", "disks/sr0", "block"})
    fs::create_directories(scratch / disk);
  std::ofstream(scratch / "disks/sda/removable") << "0\n";
  std::ofstream(scratch / "disks/sdb/removable") << "1\n";
  std::ofstream(scratch / "disks/sr0/removable") << "1\n";
  for (const char* device : {"sda", "sda/sda1", "sdb", "sdb/sdb1", "sr0"})
    fs::create_directory_symlink(scratch / "disks" / device, scratch / "block" / fs::path(device).filename());
  std::ofstream(scratch / "mounts")
      << "/dev/sda1 / ext4 rw 0 0\n/dev/sdb1 /media/me/MY\\040STICK vfat rw 0 0\n"
         "proc /proc proc rw 0 0\n/dev/sr0 /media/cd iso9660 ro 0 0\n"
         "/dev/mapper/x /home ext4 rw 0 0\n/dev/sdb";
  EXPECT_EQ(removable_media(path_text(scratch / "mounts"), path_text(scratch / "block")),
            (QStringList{"/media/me/MY STICK", "/media/cd"}));
  EXPECT_TRUE(removable_media("/no/such").isEmpty());
}

}  // namespace
}  // namespace vellum::testing
