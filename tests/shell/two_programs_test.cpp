#include "shell_fixture.h"
#include "support/judge.h"

namespace vellum::testing {
namespace {

TEST(TwoPrograms, AnImageCopiedInOneIsPastedInTheOther) {
  const ScratchFolder folder;
  // The programs are to find the X server and not what the tests draw on.
  qunsetenv("QT_QPA_PLATFORM");
  const ToolResult result = run_tool({(source_folder() / "scripts/two_programs.sh").string(),
                                      program_folder().string(), folder.path().string()});
  qputenv("QT_QPA_PLATFORM", "offscreen");
  if (result.status == 77) GTEST_SKIP() << result.output;
  ASSERT_EQ(result.status, 0) << result.output;
  EXPECT_NE(result.output.find("    3: IMAGE   WEBI"), std::string::npos) << result.output;
}

TEST(DesktopSession, OpensEditsSavesUndoesPlaysAndLeaves) {
  const ScratchFolder folder;
  qunsetenv("QT_QPA_PLATFORM");
  const ToolResult result = run_tool({(source_folder() / "scripts/desktop_session.sh").string(),
                                      program_folder().string(), folder.path().string()});
  qputenv("QT_QPA_PLATFORM", "offscreen");
  if (result.status == 77) GTEST_SKIP() << result.output;
  ASSERT_EQ(result.status, 0) << result.output;
  for (const char* line : {"acTL (7 loops)", "acTL (3 loops)", "left with status 0"})
    EXPECT_NE(result.output.find(line), std::string::npos) << line << " is not in\n" << result.output;
}

}  // namespace
}  // namespace vellum::testing
