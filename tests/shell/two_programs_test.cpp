#include "shell_fixture.h"
#include "support/judge.h"

namespace vellum::testing {
namespace {

/// Runs a script that starts programs on an X server of its own, and not on what the tests draw on.
ToolResult run_on_display(const char* script) {
  const ScratchFolder folder;
  qunsetenv("QT_QPA_PLATFORM");
  // Built with sanitizers a program would fail for what the library of the session bus keeps.
  const std::string known = (source_folder() / "tests/support/leaks_of_libraries.txt").string();
  qputenv("LSAN_OPTIONS", ("print_suppressions=0:suppressions=" + known).c_str());
  ToolResult result = run_tool(
      {(source_folder() / "scripts" / script).string(), program_folder().string(), folder.path().string()});
  qputenv("QT_QPA_PLATFORM", "offscreen");
  return result;
}

TEST(TwoPrograms, AnImageCopiedInOneIsPastedInTheOther) {
  const ToolResult result = run_on_display("two_programs.sh");
  if (result.status == 77) GTEST_SKIP() << result.output;
  ASSERT_EQ(result.status, 0) << result.output;
  EXPECT_NE(result.output.find("    3: IMAGE   WEBI"), std::string::npos) << result.output;
}

TEST(DesktopSession, OpensEditsSavesUndoesPlaysAndLeaves) {
  const ToolResult result = run_on_display("desktop_session.sh");
  if (result.status == 77) GTEST_SKIP() << result.output;
  ASSERT_EQ(result.status, 0) << result.output;
  for (const char* line : {"acTL (7 loops)", "acTL (3 loops)", "left with status 0"})
    EXPECT_NE(result.output.find(line), std::string::npos) << line << " is not in\n" << result.output;
}

TEST(KeyboardRepair, AWholeRepairNeedsNoMouse) {
  const ToolResult result = run_on_display("keyboard_repair.sh");
  if (result.status == 77) GTEST_SKIP() << result.output;
  ASSERT_EQ(result.status, 0) << result.output;
  for (const char* line :
       {"undone: 100 C02020, 100 2020C0, 700 20C020, 100 C0C020",
        "redone: 100 C02020, 100 2020C0, 700 20C0C0, 100 C0C020", "OK: ", "left with status 0"})
    EXPECT_NE(result.output.find(line), std::string::npos) << line << " is not in\n" << result.output;
}

TEST(Themes, OneThatFailsIsToldAndTheProgramGoesOn) {
  const ScratchFolder folder;
  const std::string picture = (folder / "window.png").string();
  const ToolResult result =
      run_tool({(program_folder() / "vellumcraft").string(), "--config", (folder / "config").string(),
                "--set", "ThemeCurrent=THEME_Gone_x64.so", "--screenshot", picture});
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_NE(result.output.find(string_text(StringId::ThemeFailed)), std::string::npos) << result.output;
  EXPECT_FALSE(QImage(QString::fromStdString(picture)).isNull());
}

TEST(FullScreen, FillsTheScreenUnderAWindowManagerAndEscapeLeavesIt) {
  const ToolResult result = run_on_display("full_screen.sh");
  if (result.status == 77) GTEST_SKIP() << result.output;
  ASSERT_EQ(result.status, 0) << result.output;
  for (const char* line : {"middle 20C040", "across 20C040", "surround 000000", "bottom 000000",
                           "controls come", "left\n", "still open"})
    EXPECT_NE(result.output.find(line), std::string::npos) << line << " is not in\n" << result.output;
}

}  // namespace
}  // namespace vellum::testing
