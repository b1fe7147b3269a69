#include "configuration/history.h"

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>
#include <thread>

#include "configuration/settings.h"
#include "support/corpus.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::SizeIs;

class History : public ::testing::Test {
 protected:
  fs::path write(const std::string& text) {
    std::ofstream(file_, std::ios::binary) << text;
    return file_;
  }

  SettingsGuard guard_;
  ScratchFolder folder_;
  fs::path file_ = folder_ / "list.txt";
};

TEST_F(History, FilesAreSplitAtTheLastComma) {
  write("/a, b/c,d.png,-1\r\n\n/plain.png\n/n.png,12\n,3\n/x.png,y\n/a, b/c,d.png,4\n");
  EXPECT_THAT(load_file_history(file_),
              ElementsAre(RecentFile{"/a, b/c,d.png", -1}, RecentFile{"/plain.png", -1},
                          RecentFile{"/n.png", 12}, RecentFile{"/x.png", -1}));
  EXPECT_TRUE(load_file_history(folder_ / "none.txt").empty());
}

TEST_F(History, FilesComeNewestFirstAndOnce) {
  std::vector<RecentFile> history;
  for (const char* path : {"/a", "/b,1", "/a", "/two\nlines", "/two\rlines", ""})
    remember_file(history, {path, -1});
  save_file_history(folder_ / "deep" / "list.txt", history);
  EXPECT_THAT(load_file_history(folder_ / "deep" / "list.txt"),
              ElementsAre(RecentFile{"/a", -1}, RecentFile{"/b,1", -1}));
  forget_file(history, "/a");
  EXPECT_THAT(history, SizeIs(1));
}

TEST_F(History, FilesAreCounted) {
  std::vector<RecentFile> history;
  settings::RememberFileHistoryCount = 3;
  for (int i = 0; i < 9; ++i) remember_file(history, {std::to_string(i), i});
  EXPECT_THAT(history, ElementsAre(RecentFile{"8", 8}, RecentFile{"7", 7}, RecentFile{"6", 6}));
  save_file_history(file_, history);
  settings::RememberFileHistoryCount = -5;  // edited by hand
  EXPECT_TRUE(load_file_history(file_).empty());
  remember_file(history, {"9", 9});
  EXPECT_TRUE(history.empty());
}

TEST_F(History, TextsComeNewestFirstAndOnce) {
  std::vector<std::string> history;
  for (const char* text : {"a", "two\nlines", "C:\\new", "a", ""})
    remember_text(history, text, HistoryKind::Texts);
  save_history(file_, history);
  EXPECT_THAT(load_history(file_, HistoryKind::Texts), ElementsAre("a", "C:\\new", "two\nlines"));
  write("a\n\na\r\nb\\c\nd\\");
  EXPECT_THAT(load_history(file_, HistoryKind::Texts), ElementsAre("a", "b\\c", "d\\"));
}

TEST_F(History, TextsAreCountedByTheirKind) {
  settings::HistoryMaximumCount = 5;
  settings::EditListMaximum = 2;
  std::string lines;
  for (int i = 0; i < 20; ++i) lines += std::to_string(i) + '\n';
  write(lines);
  EXPECT_THAT(load_history(file_, HistoryKind::Texts), SizeIs(5));
  auto values = load_history(file_, HistoryKind::Values);
  remember_text(values, "new", HistoryKind::Values);
  EXPECT_THAT(values, ElementsAre("new", "0"));
}

TEST_F(History, ProgramsThatKeepAtTheSameMomentLoseNothing) {
  settings::HistoryMaximumCount = 64;
  std::vector<std::jthread> programs;
  for (int program = 0; program < 4; ++program)
    programs.emplace_back([&, program] {
      for (int i = 0; i < 12; ++i)
        keep_in_history(file_, std::to_string(100 * program + i), HistoryKind::Texts);
    });
  programs.clear();
  EXPECT_THAT(load_history(file_, HistoryKind::Texts), SizeIs(48));
}

TEST_F(History, OffLeavesTheFileAlone) {
  write("a\n");
  settings::HistoryEnable = 0;
  std::vector<std::string> history = load_history(file_, HistoryKind::Texts);
  remember_text(history, "b", HistoryKind::Texts);
  EXPECT_TRUE(history.empty());
  save_history(file_, history);
  settings::HistoryEnable = 1;
  EXPECT_THAT(load_history(file_, HistoryKind::Texts), ElementsAre("a"));
}

}  // namespace
}  // namespace vellum::testing
