#include "shell/window/start_up.h"

#include <QScreen>
#include <fstream>

#include "configuration/config_file.h"
#include "configuration/setting_table.h"
#include "configuration/shell_settings.h"
#include "core/settings.h"
#include "shell_fixture.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

namespace fs = std::filesystem;

TEST(StartUp, TakesOptionsOutAndJoinsTheRestIntoOneName) {
  struct Case {
    std::vector<const char*> arguments;
    const char* file;
    const char* screenshot;
    bool fails;
    bool view = false;
  };
  const Case cases[] = {
      {{}, "", "", false},
      {{"a.png"}, "a.png", "", false},
      {{"my", "holiday.png"}, "my holiday.png", "", false},
      {{"--screenshot", "out.png", "a.png"}, "a.png", "out.png", false},
      {{"--screenshot"}, "", "", true},
      {{"--set", "A=1", "--config", "c.ini", "a.png"}, "a.png", "", false},
      {{"--set"}, "", "", true},
      {{"--unknown", "a.png"}, "", "", true},
      {{"--size", "800x600", "a.png"}, "a.png", "", false},
      {{"--size", "800x0", "a.png"}, "", "", true},
      {{"--", "--help"}, "--help", "", false},
      {{"/V/x.png"}, "/V/x.png", "", false},
      {{"--view", "a.png"}, "a.png", "", false, true},
      {{"a b.PNG/V"}, "a b.PNG", "", false, true},
      {{"a.mng", "/V"}, "a.mng", "", false, true},
      {{"/V"}, "/V", "", false},
      {{"folder/V"}, "folder/V", "", false},
  };
  for (const Case& c : cases) {
    const StartOptions options = parse_arguments(c.arguments);
    EXPECT_EQ(options.error.empty(), !c.fails) << "case " << &c - cases;
    EXPECT_FALSE(options.help);
    if (c.fails) continue;
    EXPECT_EQ(options.file, c.file) << "case " << &c - cases;
    EXPECT_EQ(options.view, c.view) << "case " << &c - cases;
    EXPECT_EQ(options.screenshot, c.screenshot) << "case " << &c - cases;
  }
}

TEST(StartUp, SeveralNamesAreFilesWhereAllAreThere) {
  const ScratchFolder folder;
  const std::string a = (folder / "a.png").string(), b = (folder / "b c.png").string();
  std::ofstream(a) << "x";
  const char* const both[] = {a.c_str(), b.c_str()};
  EXPECT_EQ(parse_arguments(both).file, a + ' ' + b);
  std::ofstream(b) << "x";
  EXPECT_EQ(parse_arguments(both).file, a);
  EXPECT_EQ(parse_arguments(both).more, std::vector<fs::path>{b});
}

TEST(StartUp, QuotesGoOnlyWhereTheNameWithThemDoesNotExist) {
  const ScratchFolder folder;
  const fs::path quoted = folder / "a\"b\".png";
  EXPECT_EQ(path_of_argument(quoted.string()), folder / "ab.png");
  std::ofstream(quoted) << "x";
  EXPECT_EQ(path_of_argument(quoted.string()), quoted);
  EXPECT_EQ(path_of_argument("file:///tmp/a%20b%23.png"), "/tmp/a b#.png");
  EXPECT_EQ(path_of_argument("file://elsewhere.example"), "file://elsewhere.example");
}

TEST(StartUp, ThePlaceOfTheWindowComesBack) {
  const SettingsGuard guard;
  const ScratchFolder folder;
  StartOptions options;
  options.config = folder / "place.ini";
  const QSize screen = QGuiApplication::primaryScreen()->availableGeometry().size();
  const QRect place(QPoint(20, 30), screen - QSize(60, 70));
  const auto run = [&](bool maximize, auto&& look) {
    reset_settings();
    ASSERT_TRUE(load_settings(options));
    MainWindow window;
    show_main_window(window);
    look(window);
    if (maximize) window.showMaximized();
    QTest::qWait(0);
    window.close();
  };
  run(false, [&](MainWindow& window) {
    EXPECT_TRUE(window.isMaximized());
    window.showNormal();
    window.setGeometry(place);
  });
  run(true, [&](MainWindow& window) {
    EXPECT_FALSE(window.isMaximized());
    EXPECT_EQ(window.geometry(), place);
  });
  run(false, [&](MainWindow& window) {
    EXPECT_TRUE(window.isMaximized());
    EXPECT_EQ(window.normalGeometry(), place);
  });
}

TEST(StartUp, APlaceEditedByHandIsHeldToTheScreen) {
  const SettingsGuard guard;
  const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  settings::StartMaximized = 0;
  const int edges[][4] = {{-2147483647 - 1, -5, 2147483646, 2147483646},
                          {2147483646, 2147483646, -2147483647 - 1, 0},
                          {100000, -100000, 100001, -99999}};
  for (const auto& [left, top, right, bottom] : edges) {
    settings::StickyWindowLeft = left, settings::StickyWindowTop = top;
    settings::StickyWindowRight = right, settings::StickyWindowBottom = bottom;
    QWidget window;
    show_main_window(window);
    // A platform may still move the window by its frame.
    EXPECT_TRUE(screen.contains(window.geometry().center())) << "from " << left << ", " << top;
    EXPECT_TRUE(screen.size().expandedTo(window.size()) == screen.size()) << "from " << left << ", " << top;
  }
}

TEST(StartUp, SettingsOfTheCommandLineAreCheckedAndNotWritten) {
  const SettingsGuard guard;
  const ScratchFolder folder;
  StartOptions options;
  options.config = folder / "x.ini";
  options.settings = {"UndoLevels=7"};
  reset_settings();
  ASSERT_TRUE(load_settings(options));
  EXPECT_EQ(settings::UndoLevels, 7);
  config_save_changes();
  reset_settings();
  options.settings = {"NoSuchKey=1"};
  EXPECT_FALSE(load_settings(options));
  EXPECT_EQ(settings::UndoLevels, 10);
}

struct ProgramRun {
  int status;
  std::string output;
};

/// Runs the program without a desktop.
ProgramRun run_without_desktop(const std::string& arguments) {
  const std::string command = "env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM '" +
                              (program_folder() / "vellumcraft").string() + "' " + arguments + " 2>&1";
  FILE* pipe = popen(command.c_str(), "r");
  ProgramRun run{0, {}};
  char buffer[512];
  while (std::fgets(buffer, sizeof buffer, pipe)) run.output += buffer;
  run.status = WEXITSTATUS(pclose(pipe));
  return run;
}

TEST(StartUp, NeedsADesktopToWorkButNotToAnswer) {
  if (!fs::exists(program_folder() / "vellumcraft")) GTEST_SKIP() << "the program is not built";
  ProgramRun run = run_without_desktop("a.png");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "Vellumcraft needs a graphical desktop.\n");
  run = run_without_desktop("--version");
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(run.output.starts_with("vellumcraft ")) << run.output;
  EXPECT_NE(run_without_desktop("--help").output.find("--screenshot"), std::string::npos);
}

/// Starts the program on a desktop without a screen; it opens a file, draws itself and ends.
int run_once(const std::string& environment, const std::string& arguments, const fs::path& picture) {
  const std::string command = "env " + environment + " QT_QPA_PLATFORM=offscreen '" +
                              (program_folder() / "vellumcraft").string() + "' --screenshot '" +
                              picture.string() + "' " + arguments + " >/dev/null 2>&1";
  return WEXITSTATUS(std::system(command.c_str()));
}

TEST(StartUp, WorksWithNonsenseInItsFileAndWithoutAHome) {
  if (!fs::exists(program_folder() / "vellumcraft")) GTEST_SKIP() << "the program is not built";
  const ScratchFolder folder;
  std::string every_key;
  for (const SettingRow& row : setting_table())
    every_key += std::string(row.name) + (row.text ? " = /no/such \xff\xfe%s%n\n" : " = 4294967295\n");
  std::string negative;
  for (const SettingRow& row : setting_table()) negative += std::string(row.name) + " = -2147483648\n";
  const std::string contents[] = {"", std::string(5000, 'x'), std::string("\0\1\2\xff = \n[[[\n", 12),
                                  every_key, negative};
  const fs::path sample = source_folder() / "data/samples/welcome.png";
  for (const std::string& content : contents) {
    const fs::path file = folder / "nonsense.ini", picture = folder / "picture.png";
    std::ofstream(file, std::ios::binary) << content;
    fs::remove(picture);
    EXPECT_EQ(run_once("", "--config '" + file.string() + "' '" + sample.string() + "'", picture), 0)
        << "case " << &content - contents;
    EXPECT_TRUE(fs::exists(picture)) << "case " << &content - contents;
  }
  // Nobody can write below /proc, not even the superuser.
  for (const char* home : {"HOME=/proc XDG_CONFIG_HOME=/proc/none XDG_DOCUMENTS_DIR=/proc/none",
                           "HOME=/no/such/home", "-u HOME -u XDG_CONFIG_HOME"}) {
    const fs::path picture = folder / "picture.png";
    fs::remove(picture);
    EXPECT_EQ(run_once(home, "", picture), 0) << home;
    EXPECT_TRUE(fs::exists(picture)) << home;
  }
}

TEST(StartUp, EndsWithoutAWordWhereItsFileCantBeWritten) {
  const SettingsGuard guard;
  StartOptions options;
  options.config = "/proc/none/Vellumcraft 15.ini";
  ASSERT_TRUE(load_settings(options));
  MainWindow window;
  show_main_window(window);
  settings::UndoLevels = 7;
  EXPECT_TRUE(window.close());
  config_open("/proc/none/other.ini");
}

}  // namespace
}  // namespace vellum::testing
