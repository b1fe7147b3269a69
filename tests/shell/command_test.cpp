#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QMenu>

#include "configuration/shell_settings.h"
#include "core/convert_records.h"
#include "core/save_document.h"
#include "core/settings.h"
#include "shell_fixture.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

/// When a command can be chosen: without a document, on an empty one, with entries, with some of them
/// selected.
struct EnabledCase {
  int number;
  std::string_view label;
  bool none, empty, entries, selected;
};

constexpr EnabledCase kCases[] = {
    {101, "&PNG (still image)", true, true, true, true},
    {102, "&Animated PNG (animation)", true, true, true, true},
    {114, "&MNG (animaton)", true, true, true, true},
    {105, "&WebP (animaton)", true, true, true, true},
    {58, "&Open\tCtrl+0", true, true, true, true},
    {57, "&Save\tCtrl+S", false, false, true, true},
    {104, "Save &as...", false, false, true, true},
    {106, "&Close", false, false, true, true},
    {109, "Close a&ll", false, false, true, true},
    {55, "E&xit", true, true, true, true},
    {123, "E&xit", true, true, true, true},
    {204, "&Undo\tCtrl+Z (Alt+Backspace)", false, false, false, false},
    {201, "Cu&t\tCtrl+X (Shift+Del)", false, false, false, true},
    {202, "&Copy\tCtrl+C (Ctrl+Ins)", false, false, false, true},
    {203, "&Paste\tCtrl+V (Shift+Ins)", false, false, false, false},
    {50, "&Select all\tCtrl+A", false, false, true, true},
    {51, "&Select none", false, false, false, true},
    {1050, "&Background (BACK)", false, false, false, false},
    {1055, "&Image", false, false, false, false},
    {1053, "&Loop (LOOP)", false, false, false, false},
    {1054, "Loop &end (ENDL)", false, false, false, false},
    {1056, "&Termination (TERM)", false, false, false, false},
    {1022, "&Background (BKGD)", false, false, true, true},
    {1025, "&Compressed text (ZTXT)", false, false, true, true},
    {1027, "&Gamma (GAMA)", false, false, true, true},
    {1020, "I&mage (IDAT)", false, false, true, true},
    {1021, "&Palette (PLTE)", false, false, true, true},
    {1024, "T&ext (TEXT)", false, false, true, true},
    {1023, "&Time (TIME)", false, false, true, true},
    {1026, "T&ransparency (TRNS)", false, false, true, true},
    {1060, "Image (&WEBP IDAT)", false, false, false, false},
    {60, "Insert", false, false, true, true},
    {61, "&Delete chunk", false, false, false, true},
    {205, "&Edit chunk...\tEnter", false, false, true, true},
    {206, "M&ove up\tAlt+Up", false, false, true, true},
    {207, "Mo&ve down\tAlt+Down", false, false, true, true},
    // of animations alone
    {118, "P&roperties", false, false, false, false},
    {62, "M&anage", false, false, false, false},
    {307, "Image &Strip", false, false, false, false},
    {56, "&View\tCtrl+W", false, false, true, true},
    {801, "&Cascade\tShift+F5", false, false, true, true},
    {802, "&Tile\tShift+F4", false, false, true, true},
    {803, "&Arrange Icons", false, false, true, true},
    {804, "&Duplicate\tCtrl+D", false, false, true, true},
    {902, "&About...", true, true, true, true},
    {701, "Thumbnail size", false, false, true, true},
};

class CommandTest : public WindowTest {
 protected:
  CommandTest() { QGuiApplication::clipboard()->clear(); }
  void expect_enabled(const char* state, bool EnabledCase::*expected) {
    settle();
    for (const EnabledCase& c : kCases)
      EXPECT_EQ(main_.commands().action(c.number)->isEnabled(), c.*expected) << c.number << ", " << state;
    EXPECT_EQ(main_.findChild<QComboBox*>()->isEnabled(), kCases[std::size(kCases) - 1].*expected) << state;
  }
};

TEST(CommandTable, EachRowIsWhole) {
  std::set<int> numbers;
  for (const CommandRow& row : command_table()) {
    EXPECT_TRUE(numbers.insert(row.number).second) << row.number << " twice";
    EXPECT_NE(row.run == nullptr, row.run_on_document == nullptr) << row.number;
    if (row.icon) {
      EXPECT_TRUE(QFile::exists(QStringLiteral(":/icons/%1.svg").arg(QLatin1String(row.icon)))) << row.icon;
    }
    EXPECT_TRUE(row.tool != ToolPlace::Button || row.icon) << row.number;
    const auto expected = std::ranges::find(kCases, row.number, &EnabledCase::number);
    ASSERT_NE(expected, std::end(kCases)) << row.number << " has no expectation";
    EXPECT_EQ(expected->label, row.label);
  }
  EXPECT_EQ(numbers.size(), std::size(kCases));
  for (const KeyRow& row : key_table()) EXPECT_TRUE(find_command(row.command)) << row.keys;
}

TEST(CommandTable, KindsNarrowACommand) {
  CommandRow row = *find_command(57);
  static constexpr DocumentKind kinds[] = {DocumentKind::APNG, DocumentKind::MING};
  row.kinds = kinds;
  EXPECT_TRUE(command_enabled(row, {true, DocumentKind::MING, 3, 0}));
  EXPECT_FALSE(command_enabled(row, {true, DocumentKind::PING, 3, 0}));
  EXPECT_FALSE(command_enabled(row, {true, DocumentKind::MING, 0, 0}));
  row.need = Need::Nothing;
  EXPECT_FALSE(command_enabled(row, {true, DocumentKind::MING, 0, 0}));
  EXPECT_FALSE(command_enabled(row, {false, DocumentKind::MING, 3, 0}));
}

TEST(CommandTable, UndoAndPasteNeedSomethingToGoBackToAndToPaste) {
  for (const bool there : {false, true}) {
    EXPECT_EQ(command_enabled(*find_command(204), {true, DocumentKind::PING, 3, 0, there, false}), there);
    EXPECT_EQ(command_enabled(*find_command(203), {true, DocumentKind::PING, 3, 0, false, there}), there);
  }
  EXPECT_FALSE(command_enabled(*find_command(203), {true, DocumentKind::PING, 0, 0, false, true}));
}

TEST_F(CommandTest, AreEnabledByTheActiveDocument) {
  expect_enabled("no document", &EnabledCase::none);
  DocumentFrame& empty = add({});
  expect_enabled("empty document", &EnabledCase::empty);
  empty.close();
  DocumentFrame& frame = add(still_document());
  expect_enabled("entries", &EnabledCase::entries);
  frame.entries().select(1, true);
  expect_enabled("selected", &EnabledCase::selected);
  frame.entries().select(1, false);
  expect_enabled("none selected", &EnabledCase::entries);
  frame.close();
  expect_enabled("closed", &EnabledCase::none);
}

TEST_F(CommandTest, NothingStartsWhileAnOperationRuns) {
  DocumentFrame& frame = add(still_document());
  answers_.busy = true;
  for (const CommandRow& row : command_table()) main_.run(row.number);
  EXPECT_EQ(documents(), 1u);
  EXPECT_EQ(frame.entries().selected_count(), 0u);
  EXPECT_FALSE(main_.close());
}

TEST_F(CommandTest, KeysRunCommandsAndTheDeadOnesDoNothing) {
  DocumentFrame& frame = add(still_document());
  main_.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&main_));
  frame.list().setFocus();
  for (const auto key : {Qt::Key_D, Qt::Key_P, Qt::Key_I, Qt::Key_E})
    QTest::keyClick(&frame.list(), key, Qt::ControlModifier);
  EXPECT_EQ(documents(), 1u);
  EXPECT_EQ(frame.entries().selected_count(), 0u);
  QTest::keyClick(&frame.list(), Qt::Key_F10);
  EXPECT_TRUE(main_.commands().menu(Menu::File)->isVisible());
  main_.commands().menu(Menu::File)->close();
  QTest::keyClick(&frame.list(), Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(frame.entries().selected_count(), 3u);
  QTest::keyClick(&frame.list(), Qt::Key_F4, Qt::ControlModifier);
  settle();
  EXPECT_EQ(documents(), 0u);
}

TEST_F(CommandTest, SelectAllAndNoneTakeImagesAloneWithShift) {
  DocumentFrame& frame = add(animated_document(3));
  answers_.shift = true;
  main_.run(50);
  EXPECT_EQ(selected_rows(frame.entries()), (std::set<std::size_t>{2, 3, 4}));
  answers_.shift = false;
  main_.run(50);
  EXPECT_EQ(frame.entries().selected_count(), 6u);
  answers_.shift = true;
  main_.run(51);
  EXPECT_EQ(selected_rows(frame.entries()), (std::set<std::size_t>{0, 1, 5}));
  answers_.shift = false;
  main_.run(51);
  EXPECT_EQ(frame.entries().selected_count(), 0u);
}

TEST_F(CommandTest, TheScaleIsClampedAndTheTopEntryKept) {
  DocumentFrame& frame = add(animated_document(60, 400, 40));
  frame.entries().topIndex = 20;
  frame.list().show_top_row();
  auto* scale = main_.findChild<QComboBox*>();
  for (const auto& [chosen, clamped] : {std::pair{7, 4}, {2, 2}, {0, 0}, {4, 4}}) {
    scale->setCurrentIndex(chosen);
    emit scale->activated(chosen);
    settle();
    EXPECT_EQ(frame.document().thumbScale, clamped);
    EXPECT_EQ(scale->currentIndex(), clamped);
    EXPECT_EQ(frame.entries().topIndex, 20u) << chosen;
    EXPECT_EQ(frame.list().row_rect(20).top(), 0) << chosen;
  }
}

TEST_F(CommandTest, DuplicateMakesACleanCopyThatHasNoFile) {
  DocumentWindow source = animated_document(30);
  source.document.fileName = "/somewhere/walk.png";
  source.document.HasFileName = source.document.dirty = true;
  source.document.caret = 4;
  source.list.select(5, true);
  DocumentFrame& frame = add(std::move(source));
  frame.entries().topIndex = 7;
  frame.list().show_top_row();
  main_.run(804);
  settle();
  ASSERT_EQ(documents(), 2u);
  DocumentFrame& copy = *main_.area().active();
  ASSERT_NE(&copy, &frame);
  EXPECT_EQ(copy.document().fileName, "/somewhere/Duplicate_walk.png");
  EXPECT_FALSE(copy.document().HasFileName);
  EXPECT_FALSE(copy.document().dirty);
  EXPECT_EQ(copy.document().caret, 4);
  EXPECT_EQ(selected_rows(copy.entries()), (std::set<std::size_t>{5}));
  EXPECT_EQ(copy.entries().topIndex, 7u);
  copy.entries().remove(0, 3);
  EXPECT_EQ(frame.entries().size(), 33u);
}

TEST_F(CommandTest, AnMngOpensAsAnUnsavedAnimatedPngWhereThatIsWished) {
  const SettingsGuard guard;
  DocumentWindow mng;
  ASSERT_TRUE(convert_document(animated_document(3), mng, DocumentKind::MING, main_.services().host));
  const auto path = folder_ / "walk.mng";
  ASSERT_TRUE(save_document(mng, path, main_.services().host));
  for (const bool wished : {false, true}) {
    settings::AutomaticMngToPng = wished;
    ASSERT_TRUE(main_.open(path));
    DocumentFrame& frame = *main_.area().active();
    EXPECT_EQ(frame.document().kind, wished ? DocumentKind::APNG : DocumentKind::MING);
    EXPECT_EQ(frame.document().HasFileName, !wished);
    EXPECT_EQ(frame.document().dirty, wished);
    EXPECT_EQ(frame.document().fileName.filename(), wished ? "walk.png" : "walk.mng");
    EXPECT_EQ(chunk_count_images(frame.entries(), frame.document().kind), 3u);
  }
}

TEST_F(CommandTest, TitlesShowNamesAsTheyAre) {
  DocumentWindow content = still_document();
  content.document.fileName = "/tmp/a [*] & b.png";
  content.document.HasFileName = true;
  DocumentFrame& frame = add(std::move(content));
  EXPECT_EQ(main_.windowTitle().toStdString(), "a [*][*] & b.png[*] - Vellumcraft");
  EXPECT_FALSE(main_.isWindowModified());
  frame.document().dirty = true;
  main_.refresh();
  EXPECT_TRUE(main_.isWindowModified());
  EXPECT_TRUE(frame.isWindowModified());
  QMenu* windows = main_.commands().menu(Menu::Window);
  emit windows->aboutToShow();
  emit windows->aboutToShow();
  EXPECT_EQ(windows->actions().last()->text(), "&1 a [*] && b.png");
  EXPECT_EQ(windows->actions().size(), 7) << "four commands, a line, a line, one document";
  frame.showMaximized();
  settle();
  EXPECT_EQ(main_.windowTitle().toStdString(), "a [*][*] & b.png[*] - Vellumcraft");
}

TEST_F(CommandTest, WindowsStandBesideEachOtherAndTakeTheirContentsWidth) {
  DocumentFrame& first = add(still_document());
  DocumentFrame& second = add(still_document());
  first.size_to_content();
  EXPECT_EQ(first.width(), settings::FileWindowX);
  EXPECT_EQ(first.height(), main_.area().viewport()->height());
  EXPECT_FALSE(first.geometry().intersects(second.geometry()));
  for (int i = 0; i < 12; ++i) add(still_document());
  for (DocumentFrame* frame : main_.area().documents())
    EXPECT_TRUE(main_.area().viewport()->rect().contains(frame->geometry()));
}

}  // namespace
}  // namespace vellum::testing
