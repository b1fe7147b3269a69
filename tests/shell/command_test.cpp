#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>
#include <QToolButton>

#include "configuration/shell_settings.h"
#include "core/build/convert_records.h"
#include "core/edit/undo.h"
#include "core/files/save_document.h"
#include "core/settings.h"
#include "shell_fixture.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

enum class When { Always, Chunks, Selected, Undo, NotHere };

/// What holds for commands of each sort: whether one acts on a document, and when it can be chosen. Kinds: P
/// PING, A APNG, M MING, W WEBP.
struct Sample {
  int number;
  std::string_view label;
  bool on_document;
  When when;
  std::string_view kinds;
};

constexpr Sample kSamples[] = {
    {101, "&PNG (still image)", false, When::Always, ""},
    {114, "&MNG (animaton)", false, When::Always, ""},
    {58, "&Open\tCtrl+0", false, When::Always, ""},
    {57, "&Save\tCtrl+S", true, When::Chunks, "PAMW"},
    {109, "Close a&ll", false, When::Chunks, "PAMW"},
    {118, "P&roperties", true, When::Chunks, "AMW"},
    {111, "Su&percompress", true, When::Chunks, "AM"},
    {204, "&Undo\tCtrl+Z (Alt+Backspace)", true, When::Undo, "PAMW"},
    {202, "&Copy\tCtrl+C (Ctrl+Ins)", true, When::Selected, "PAMW"},
    {1055, "&Image", true, When::Chunks, "M"},
    {1025, "&Compressed text (ZTXT)", true, When::Chunks, "PAM"},
    {1027, "&Gamma (GAMA)", true, When::Chunks, "PA"},
    {1020, "I&mage (IDAT)", true, When::Chunks, "P"},
    {1060, "Image (&WEBP IDAT)", true, When::Chunks, "W"},
    {263, "Animated PNG", true, When::Chunks, "MW"},
    {264, "MNG", true, When::Chunks, "AW"},
    {328, "Ca&ption", true, When::Chunks, "AMW"},
    {804, "&Duplicate\tCtrl+D", true, When::Chunks, "PAMW"},
    {208, "&Redo\tCtrl+Y", true, When::NotHere, "PAMW"},
};

/// Whether a command that works can be chosen while the document (none for '-') is in this state.
bool sample_enabled(const Sample& c, char kind, std::size_t entries, std::size_t selected, bool undo) {
  if (kind == '-') return c.when == When::Always && !c.on_document;
  if (c.when == When::Always) return true;
  if (c.when == When::NotHere) return false;  // these documents have nothing to do again, and no notes
  if (c.when == When::Undo) return undo;
  if (entries == 0 || c.kinds.find(kind) == std::string_view::npos) return false;
  return c.when == When::Chunks || selected > 0;
}

constexpr std::pair<char, DocumentKind> kKinds[] = {{'P', DocumentKind::PING},
                                                    {'A', DocumentKind::APNG},
                                                    {'M', DocumentKind::MING},
                                                    {'W', DocumentKind::WEBP}};

class CommandTest : public WindowTest {
 protected:
  CommandTest() { QGuiApplication::clipboard()->clear(); }
  /// Compares each command of the window with what holds; one that does not work yet is never enabled
  /// and tells why.
  void expect_samples(char kind, std::size_t entries = 0, std::size_t selected = 0, bool undo = false) {
    settle();
    for (const Sample& c : kSamples) {
      const bool works = static_cast<bool>(find_command(c.number)->run);
      const QAction* action = main_.commands().action(c.number);
      EXPECT_EQ(action->isEnabled(), works && sample_enabled(c, kind, entries, selected, undo))
          << c.number << ", " << kind << ' ' << entries << ' ' << selected;
      EXPECT_EQ(action->statusTip().isEmpty(), works) << c.number;
    }
    EXPECT_EQ(main_.findChild<QComboBox*>()->isEnabled(), entries > 0) << kind;
  }
};

TEST(CommandTable, HoldsEachCommandOnce) {
  std::set<int> numbers;
  for (const CommandRow& row : command_table()) {
    EXPECT_TRUE(numbers.insert(row.number).second) << row.number << " twice";
    if (row.icon) {
      EXPECT_TRUE(QFile::exists(QStringLiteral(":/icons/%1.svg").arg(QLatin1String(row.icon)))) << row.icon;
    }
  }
  for (const Sample& c : kSamples) {
    const CommandRow* row = find_command(c.number);
    ASSERT_TRUE(row) << c.number;
    EXPECT_EQ(row->label, c.label);
    if (row->run) EXPECT_EQ(row->run.on_document != nullptr, c.on_document) << c.number;
  }
  for (const KeyRow& row : key_table()) EXPECT_TRUE(find_command(row.command)) << row.keys;
  for (const ToolRow& row : tool_table()) {
    const CommandRow* command = find_command(row.command);
    EXPECT_TRUE(command && (command->icon || row.command == kScaleCommand)) << row.command;
  }
}

TEST_F(CommandTest, AreEnabledByTheActiveDocument) {
  expect_samples('-');
  DocumentFrame& empty = add({});
  expect_samples('?');
  empty.close();
  for (const auto& [letter, kind] : kKinds) {
    DocumentFrame& frame = add(document_of(kind, main_.services().host));
    const std::size_t entries = frame.entries().size();
    expect_samples(letter, entries);
    frame.entries().select(1, true);
    expect_samples(letter, entries, 1);
    ASSERT_TRUE(undo_push(frame.content(), main_.services().host));
    main_.refresh();
    expect_samples(letter, entries, 1, true);
    frame.close_without_question();
    expect_samples('-');
  }
}

TEST_F(CommandTest, MenusAndToolbarHaveTheirPlaces) {
  QStringList bar;
  for (const QAction* action : main_.menuBar()->actions()) bar << action->text();
  EXPECT_EQ(bar, (QStringList{"&File", "&Edit", "&Animation", "&Window", "&Help"}));
  std::string tools;
  for (const QToolButton* button : main_.findChild<QToolBar*>()->findChildren<QToolButton*>())
    if (const QAction* action = button->defaultAction(); action && !action->text().isEmpty())
      tools += plain_label(action->text().toUtf8().constData()).toStdString() + ';';
  EXPECT_EQ(tools,
            "Open;Save;Undo;Redo;Cut;Copy;Paste;Insert;Delete chunk;View;Animation Wizard...;Supercompress;"
            "Batch processor;");
}

TEST_F(CommandTest, APageWithoutAnAddressAndAnUnreachableCommandSaySo) {
  for (const int number : {2903, 2904, 2905}) main_.run(number);
  ASSERT_EQ(answers_.messages.size(), 3u);
  for (const Message& message : answers_.messages) EXPECT_EQ(message.id, StringId::NoPageYet);
  main_.run(2907);
  DocumentFrame& frame = add(still_document());
  main_.run(313);
  EXPECT_EQ(answers_.messages.size(), 3u);
  frame.entries().select(0, true);
  main_.run(313);
  ASSERT_EQ(answers_.messages.size(), 4u);
  EXPECT_EQ(answers_.messages[3].text,
            "The feature you have selected in not implemented in this interim release.");
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
  EXPECT_EQ(windows->actions().size(), 11) << "six commands, the docks, three lines, one document";
  frame.showMaximized();
  settle();
  EXPECT_EQ(main_.windowTitle().toStdString(), "a [*][*] & b.png[*] - Vellumcraft");
}

TEST_F(CommandTest, WindowsStandBesideEachOtherAndTakeTheirContentsWidth) {
  DocumentFrame& first = add(still_document());
  first.showNormal();
  settle();
  DocumentFrame& second = add(animated_document(3, 200, 120));
  second.entries().select(2, true);
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
