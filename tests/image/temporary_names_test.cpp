#include "image/temporary_names.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>

#include "base/text.h"
#include "support/corpus.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;

class TemporaryNames : public ::testing::Test {
 protected:
  void SetUp() override { setenv("XDG_CACHE_HOME", folder_.path().c_str(), 1); }
  void TearDown() override { unsetenv("XDG_CACHE_HOME"); }
  fs::path temporary() const { return folder_ / "Tarnwick" / "temp"; }
  testing::ScratchFolder folder_;
};

TEST_F(TemporaryNames, TheFolderIsPrivate) {
  EXPECT_EQ(TempFolderPath("a.png"), temporary() / "a.png");
  EXPECT_EQ(fs::status(temporary()).permissions(), fs::perms::owner_all);
  EXPECT_TRUE(fs::is_empty(temporary()));
  setenv("XDG_CACHE_HOME", "relative", 1);
  setenv("HOME", folder_.path().c_str(), 1);
  EXPECT_EQ(TempFolderPath("b"), folder_ / ".cache" / "Tarnwick" / "temp" / "b");
}

TEST_F(TemporaryNames, TheFirstFreeNameIsTaken) {
  EXPECT_EQ(NextTempName("Frame", ".png", 7), temporary() / "TempFrame_00007.png");
  EXPECT_TRUE(fs::exists(temporary() / "TempFrame_00007.png"));
  std::ofstream{temporary() / "TempFrame_00009.png"} << "somebody else's";
  EXPECT_EQ(NextTempName("Frame", ".png", 7), temporary() / "TempFrame_00008.png");
  EXPECT_EQ(NextTempName("Frame", ".png", 7), temporary() / "TempFrame_00010.png");
  EXPECT_EQ(fs::file_size(temporary() / "TempFrame_00009.png"), 15u);
  EXPECT_EQ(NextTempName("Frame", ".mng", 7), temporary() / "TempFrame_00007.mng");
}

TEST_F(TemporaryNames, BesideTheProgram) {
  EXPECT_EQ(ProgramFolderPath("x"), testing::program_folder() / "x");
}

}  // namespace
}  // namespace vellum
