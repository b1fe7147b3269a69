#include <QListWidget>
#include <QMenu>
#include <fstream>

#include "configuration/config_file.h"
#include "configuration/settings.h"
#include "configuration/shell_settings.h"
#include "core/files/save_document.h"
#include "shell/services/file_thumbnail.h"
#include "shell_fixture.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

namespace fs = std::filesystem;

/// The configuration of the run, and so its history, lies in the scratch folder.
class RecentFilesTest : public ::testing::Test {
 protected:
  RecentFilesTest() { config_open(folder_ / "run.ini"); }

  fs::path written(const std::string& name, std::uint32_t width = 40, std::uint32_t height = 30) {
    DocumentWindow window = still_document(width, height);
    Host nobody;
    EXPECT_TRUE(save_document(window, folder_ / name, nobody));
    return folder_ / name;
  }
  std::string history_text() {
    std::ifstream file(folder_ / kFileHistoryName);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  /// A window whose user answers as `answers_` say.
  std::unique_ptr<MainWindow> window() {
    auto main = std::make_unique<MainWindow>();
    auto remember = main->services().remember_file;
    main->services() = answers_.services();
    main->services().remember_file = remember;
    main->resize(1000, 700);
    main->show();
    QTest::qWait(1);
    return main;
  }
  static QStringList labels(MainWindow& main) {
    QStringList labels;
    for (const QAction* action : main.commands().menu(Menu::Recent)->actions())
      labels << action->text().section(u'\t', 0, 0);
    return labels;
  }

  SettingsGuard guard_;
  ScratchFolder folder_;
  Answers answers_;
};

TEST_F(RecentFilesTest, OpenedAndSavedFilesStandInTheMenuNewestFirst) {
  const fs::path a = written("a.png"), b = written("b, c & d.png");
  auto main = window();
  EXPECT_FALSE(main->commands().menu(Menu::Recent)->menuAction()->isEnabled());
  ASSERT_TRUE(main->open(a));
  ASSERT_TRUE(main->open(b));
  ASSERT_TRUE(main->open(a));
  EXPECT_EQ(labels(*main), (QStringList{"&1  a.png", "&2  b, c && d.png"}));
  EXPECT_EQ(history_text(), a.string() + ",-1\n" + b.string() + ",-1\n");
  answers_.save = folder_ / "new.png";
  main->run(104);
  EXPECT_EQ(labels(*main).front(), "&1  new.png");
  answers_.save = folder_ / "no such folder/new.png";
  main->run(104);
  EXPECT_EQ(labels(*main).size(), 3) << "a failed Save as leaves no line";
  QTest::qWait(1);
  EXPECT_TRUE(main->commands().menu(Menu::Recent)->menuAction()->isEnabled());
  // The next start, and a program that runs beside this one.
  auto later = window();
  EXPECT_EQ(labels(*later), labels(*main));
  ASSERT_TRUE(later->open(written("e.png")));
  ASSERT_TRUE(main->open(b));
  EXPECT_EQ(labels(*main), (QStringList{"&1  b, c && d.png", "&2  e.png", "&3  new.png", "&4  a.png"}));
}

TEST_F(RecentFilesTest, ACommandOpensItsFileAndOneThatFailsLosesItsLine) {
  const fs::path a = written("a.png"), b = written("b.png");
  auto main = window();
  ASSERT_TRUE(main->open(a));
  ASSERT_TRUE(main->open(b));
  main->run(kFirstRecentFile + 1);
  EXPECT_EQ(main->area().documents().size(), 3u);
  EXPECT_EQ(main->area().active()->document().fileName, a);
  fs::remove(b);
  auto later = window();
  EXPECT_EQ(labels(*later).size(), 2) << "a file that is gone stays until it is asked for";
  later->run(kFirstRecentFile + 1);
  EXPECT_EQ(labels(*later), (QStringList{"&1  a.png"}));
  EXPECT_EQ(answers_.messages.size(), 1u);
  answers_.busy = true;
  later->run(kFirstRecentFile);
  EXPECT_TRUE(later->area().documents().empty());
  later->run(kFirstRecentFile + 7);
  std::ofstream(folder_ / "bad.png") << "no picture";
  answers_.busy = false;
  EXPECT_FALSE(later->open(folder_ / "bad.png"));
  EXPECT_EQ(labels(*later).size(), 1);
}

TEST_F(RecentFilesTest, NoneAreKeptForACountOfNone) {
  settings::RememberFileHistoryCount = 0;
  auto main = window();
  ASSERT_TRUE(main->open(written("a.png")));
  EXPECT_TRUE(labels(*main).empty());
  settings::RememberFileHistoryCount = 1;
  ASSERT_TRUE(main->open(written("b.png")));
  ASSERT_TRUE(main->open(written("c.png")));
  EXPECT_EQ(labels(*main), (QStringList{"&1  c.png"}));
}

TEST_F(RecentFilesTest, TheEmptyAreaShowsThemWithPicturesAndOpensThemByMouseAndKey) {
  const fs::path a = written("a.png"), b = written("b.png");
  {
    auto main = window();
    ASSERT_TRUE(main->open(a));
    ASSERT_TRUE(main->open(b));
  }
  auto main = window();
  auto* tiles = main->findChild<QListWidget*>();
  ASSERT_EQ(tiles->count(), 2);
  EXPECT_EQ(tiles->item(1)->toolTip().toStdString(), a.string());
  QTest::qWait(100);
  // Its picture: small ones stand in the middle at twice their size, since half is shown.
  const QImage shown = tiles->item(0)->icon().pixmap(192, 144).toImage();
  ASSERT_EQ(shown.size(), QSize(192, 144));
  EXPECT_EQ(shown.pixelColor(50, 72).alpha(), 0);
  EXPECT_EQ(shown.pixelColor(96, 72).alpha(), 255);
  QTest::mouseClick(tiles->viewport(), Qt::LeftButton, {}, tiles->visualItemRect(tiles->item(1)).center());
  QTest::qWait(50);
  ASSERT_EQ(main->area().documents().size(), 1u);
  EXPECT_EQ(main->area().active()->document().fileName, a);
  main->area().active()->close();
  QTest::qWait(50);
  tiles->setCurrentRow(1);
  QTest::keyClick(tiles, Qt::Key_Return);
  QTest::qWait(50);
  ASSERT_EQ(main->area().documents().size(), 1u);
  EXPECT_EQ(main->area().active()->document().fileName, b);
}

TEST_F(RecentFilesTest, ThumbnailsKeepTheShapeAndNeverGrow) {
  EXPECT_EQ(file_thumbnail(written("wide.png", 400, 100), 96).size(), QSize(96, 24));
  EXPECT_EQ(file_thumbnail(written("tall.png", 1, 500), 96).size(), QSize(1, 96));
  EXPECT_EQ(file_thumbnail(written("small.png", 20, 10), 96).size(), QSize(20, 10));
  EXPECT_TRUE(file_thumbnail(folder_ / "none.png", 96).isNull());
  EXPECT_TRUE(file_thumbnail(fs::path(folder_ / "none.png").parent_path(), 96).isNull());
}

}  // namespace
}  // namespace vellum::testing
