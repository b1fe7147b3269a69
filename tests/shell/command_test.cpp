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

/// What is stated of a command: whether it acts on a document, and when it can be chosen. Kinds: P PING,
/// A APNG, M MING, W WEBP.
struct Stated {
  int number;
  std::string_view label;
  bool on_document;
  When when;
  std::string_view kinds;
};

constexpr Stated kStated[] = {
    {101, "&PNG (still image)", false, When::Always, ""},
    {102, "&Animated PNG (animation)", false, When::Always, ""},
    {114, "&MNG (animaton)", false, When::Always, ""},
    {105, "&WebP (animaton)", false, When::Always, ""},
    {58, "&Open\tCtrl+0", false, When::Always, ""},
    {57, "&Save\tCtrl+S", true, When::Chunks, "PAMW"},
    {104, "Save &as...", true, When::Chunks, "PAMW"},
    {106, "&Close", true, When::Chunks, "PAMW"},
    {109, "Close a&ll", false, When::Chunks, "PAMW"},
    {59, "Animation &Wizard...\tCtrl+T", false, When::Always, ""},
    {117, "Com&bine", false, When::Always, ""},
    {403, "Fa&vorites", false, When::Always, ""},
    {119, "Pr&int", true, When::Chunks, "AMW"},
    {118, "P&roperties", true, When::Chunks, "AMW"},
    {54, "Set&up", false, When::Always, ""},
    {111, "Su&percompress", true, When::Chunks, "AM"},
    {121, "Export to &ANI", true, When::Chunks, "AMW"},
    {122, "Export to &GIF", true, When::Chunks, "AMW"},
    {116, "Export to &ILG", true, When::Chunks, "AMW"},
    {112, "Export to &Movie", true, When::Chunks, "PAMW"},
    {115, "Export to SW&F", true, When::Chunks, "AMW"},
    {120, "Import from &ANI", false, When::Always, ""},
    {110, "Import from &Movie", false, When::Always, ""},
    {113, "&Preview Movie", false, When::Always, ""},
    {55, "E&xit", false, When::Always, ""},
    {204, "&Undo\tCtrl+Z (Alt+Backspace)", true, When::Undo, "PAMW"},
    {201, "Cu&t\tCtrl+X (Shift+Del)", true, When::Selected, "PAMW"},
    {202, "&Copy\tCtrl+C (Ctrl+Ins)", true, When::Selected, "PAMW"},
    {203, "&Paste\tCtrl+V (Shift+Ins)", true, When::Chunks, "PAMW"},
    {50, "&Select all\tCtrl+A", true, When::Chunks, "PAMW"},
    {51, "&Select none", true, When::Selected, "PAMW"},
    {1050, "&Background (BACK)", true, When::Chunks, "M"},
    {1055, "&Image", true, When::Chunks, "M"},
    {1053, "&Loop (LOOP)", true, When::Chunks, "M"},
    {1054, "Loop &end (ENDL)", true, When::Chunks, "M"},
    {1056, "&Termination (TERM)", true, When::Chunks, "M"},
    {1022, "&Background (BKGD)", true, When::Chunks, "P"},
    {1025, "&Compressed text (ZTXT)", true, When::Chunks, "PAM"},
    {1027, "&Gamma (GAMA)", true, When::Chunks, "PA"},
    {1020, "I&mage (IDAT)", true, When::Chunks, "P"},
    {1021, "&Palette (PLTE)", true, When::Chunks, "P"},
    {1024, "T&ext (TEXT)", true, When::Chunks, "PAM"},
    {1023, "&Time (TIME)", true, When::Chunks, "PAM"},
    {1026, "T&ransparency (TRNS)", true, When::Chunks, "PA"},
    {1060, "Image (&WEBP IDAT)", true, When::Chunks, "W"},
    {61, "&Delete chunk", true, When::Selected, "PAMW"},
    {250, "&Banner", false, When::Always, ""},
    {257, "B&utton", false, When::Always, ""},
    {273, "Photo stac&k", false, When::Always, ""},
    {253, "&LED Signs", false, When::Always, ""},
    {271, "&Status panel", false, When::Always, ""},
    {252, "&Spin", false, When::Always, ""},
    {272, "Thr&obbers", false, When::Always, ""},
    {251, "T&ransition", false, When::Always, ""},
    {275, "Web &gallery", false, When::Always, ""},
    {304, "&Merge\tCtrl+M", true, When::Chunks, "AMW"},
    {330, "Ad&just", true, When::Chunks, "AMW"},
    {270, "Animation to PNG", true, When::Chunks, "AMW"},
    {328, "Ca&ption", true, When::Chunks, "AMW"},
    {311, "Color and &Balance", true, When::Chunks, "AMW"},
    {258, "&Black and white", true, When::Chunks, "AMW"},
    {259, "&Grey scale", true, When::Chunks, "AMW"},
    {260, "&Palette color", true, When::Chunks, "AM"},
    {261, "&True color", true, When::Chunks, "AM"},
    {262, "True color with &alpha", true, When::Chunks, "AM"},
    {263, "Animated PNG", true, When::Chunks, "MW"},
    {264, "MNG", true, When::Chunks, "AW"},
    {265, "WebP", true, When::Chunks, "AM"},
    {309, "Cr&op", true, When::Chunks, "AMW"},
    {322, "&Depopulate", true, When::Chunks, "AMW"},
    {312, "Extra&ct", true, When::Chunks, "AMW"},
    {308, "&Flip and Rotate", true, When::Chunks, "AMW"},
    {324, "F&rame", true, When::Chunks, "AMW"},
    {332, "Graphic Matrix", false, When::Always, ""},
    {62, "M&anage", true, When::Chunks, "AMW"},
    {317, "Overla&y", true, When::Chunks, "AMW"},
    {315, "Protection Matri&x", true, When::Chunks, "P"},
    {316, "Reconstr&uct", true, When::Chunks, "AMW"},
    {310, "Resi&ze", true, When::Chunks, "AMW"},
    {314, "Rev&erse", true, When::Chunks, "AMW"},
    {319, "S&hadow", true, When::Chunks, "AM"},
    {274, "Social media", true, When::Chunks, "AMW"},
    {326, "Text Overlay", true, When::Chunks, "AMW"},
    {323, "&Tile", true, When::Chunks, "AMW"},
    {329, "Titles and Credits", true, When::Chunks, "AMW"},
    {325, "Trim", true, When::Chunks, "AMW"},
    {318, "U&nderlay", true, When::Chunks, "AMW"},
    {327, "&Watermark", true, When::Chunks, "AMW"},
    {307, "Image &Strip", true, When::Chunks, "AMW"},
    {56, "&View\tCtrl+W", true, When::Chunks, "PAMW"},
    {331, "Batch processor", false, When::Always, ""},
    {801, "&Cascade\tShift+F5", false, When::Chunks, "PAMW"},
    {802, "&Tile\tShift+F4", false, When::Chunks, "PAMW"},
    {803, "&Arrange Icons", false, When::Chunks, "PAMW"},
    {804, "&Duplicate\tCtrl+D", true, When::Chunks, "PAMW"},
    {52, "&Contents", false, When::Always, ""},
    {902, "&About...", false, When::Always, ""},
    {903, "&System information", false, When::Always, ""},
    {136, "&Tip of the day", false, When::Always, ""},
    {2903, "Tarnwick on the &Web", false, When::Always, ""},
    {2904, "Tarnwick &Blog", false, When::Always, ""},
    {2905, "Tarnwick Supp&ort", false, When::Always, ""},
    {2907, "Welcome wi&zard", false, When::Always, ""},
    // without a place in the menus
    {60, "Insert", true, When::Chunks, "PAMW"},
    {123, "E&xit", false, When::Always, ""},
    {124, "Export image", true, When::Chunks, "AMW"},
    {320, "Move to", true, When::Chunks, "AMW"},
    {321, "Copy to", true, When::Chunks, "AMW"},
    {401, "Pin to favorites", true, When::Chunks, "PAMW"},
    {402, "Unpin from favorites", true, When::Chunks, "PAMW"},
    {313, "Not implemented", true, When::Selected, "PAMW"},
    {701, "Thumbnail size", true, When::Chunks, "PAMW"},
    // beyond the usual ones
    {205, "&Edit chunk...\tEnter", true, When::Chunks, "PAMW"},
    {206, "M&ove up\tAlt+Up", true, When::Chunks, "PAMW"},
    {207, "Mo&ve down\tAlt+Down", true, When::Chunks, "PAMW"},
    {208, "&Redo\tCtrl+Y", true, When::NotHere, "PAMW"},
    {209, "Dism&iss notes", true, When::NotHere, "PAMW"},
    {1070, "&Other chunk...", true, When::Chunks, "PA"},
    {1071, "&Other chunk...", true, When::Chunks, "M"},
    {1072, "&Other chunk...", true, When::Chunks, "W"},
};

/// Whether a command that works can be chosen while the document (none for '-') is in this state.
bool stated_enabled(const Stated& c, char kind, std::size_t entries, std::size_t selected, bool undo) {
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

void on_program(MainWindow&) {}
void on_document(MainWindow&, DocumentFrame&) {}

/// The row as it will be once its function is there.
CommandRow working(const Stated& c) {
  CommandRow row = *find_command(c.number);
  row.run = c.on_document ? CommandFunction(on_document) : CommandFunction(on_program);
  return row;
}

class CommandTest : public WindowTest {
 protected:
  CommandTest() { QGuiApplication::clipboard()->clear(); }
  /// Compares each command of the window with what is stated; one that does not work yet is never enabled
  /// and tells why.
  void expect_stated(char kind, std::size_t entries = 0, std::size_t selected = 0, bool undo = false) {
    settle();
    for (const Stated& c : kStated) {
      const bool works = static_cast<bool>(find_command(c.number)->run);
      const QAction* action = main_.commands().action(c.number);
      EXPECT_EQ(action->isEnabled(), works && stated_enabled(c, kind, entries, selected, undo))
          << c.number << ", " << kind << ' ' << entries << ' ' << selected;
      EXPECT_EQ(action->statusTip().isEmpty(), works) << c.number;
    }
    EXPECT_EQ(main_.findChild<QComboBox*>()->isEnabled(), entries > 0) << kind;
  }

  DocumentWindow document_of(DocumentKind kind) {
    if (kind == DocumentKind::PING) return still_document();
    DocumentWindow window = animated_document(2), converted;
    if (kind == DocumentKind::APNG) return window;
    EXPECT_TRUE(convert_document(window, converted, kind, main_.services().host));
    return converted;
  }
};

TEST(CommandTable, HoldsEachStatedCommandOnce) {
  std::set<int> numbers;
  for (const CommandRow& row : command_table()) {
    EXPECT_TRUE(numbers.insert(row.number).second) << row.number << " twice";
    if (row.icon) {
      EXPECT_TRUE(QFile::exists(QStringLiteral(":/icons/%1.svg").arg(QLatin1String(row.icon)))) << row.icon;
    }
    const auto stated = std::ranges::find(kStated, row.number, &Stated::number);
    ASSERT_NE(stated, std::end(kStated)) << row.number << " has no expectation";
    EXPECT_EQ(stated->label, row.label);
    if (row.run) {
      EXPECT_EQ(row.run.on_document != nullptr, stated->on_document) << row.number;
    }
  }
  for (const Stated& c : kStated) EXPECT_TRUE(numbers.contains(c.number)) << c.number << " is missing";
  for (const KeyRow& row : key_table()) EXPECT_TRUE(find_command(row.command)) << row.keys;
  for (const ToolRow& row : tool_table()) {
    const CommandRow* command = find_command(row.command);
    EXPECT_TRUE(command && (command->icon || row.command == kScaleCommand)) << row.command;
  }
}

TEST(CommandTable, EnablesAsStatedWhateverWorksSoFar) {
  for (const Stated& c : kStated) {
    const CommandRow row = working(c);
    EXPECT_EQ(command_enabled(row, {}), stated_enabled(c, '-', 0, 0, false)) << c.number;
    for (const auto& [letter, kind] : kKinds)
      for (const std::size_t entries : {0u, 3u})
        for (const std::size_t selected : {0u, 1u, 3u})
          for (const bool undo : {false, true})
            if (selected <= entries) {
              EXPECT_EQ(command_enabled(row, {true, kind, entries, selected, undo}),
                        stated_enabled(c, letter, entries, selected, undo))
                  << c.number << ' ' << letter << ' ' << entries << ' ' << selected << ' ' << undo;
            }
    CommandRow missing = row;
    missing.run = {};
    EXPECT_FALSE(command_enabled(missing, {true, DocumentKind::MING, 3, 3, true})) << c.number;
  }
}

TEST_F(CommandTest, AreEnabledByTheActiveDocument) {
  expect_stated('-');
  DocumentFrame& empty = add({});
  expect_stated('?');
  empty.close();
  for (const auto& [letter, kind] : kKinds) {
    DocumentFrame& frame = add(document_of(kind));
    const std::size_t entries = frame.entries().size();
    expect_stated(letter, entries);
    frame.entries().select(1, true);
    expect_stated(letter, entries, 1);
    ASSERT_TRUE(undo_push(frame.content(), main_.services().host));
    main_.refresh();
    expect_stated(letter, entries, 1, true);
    frame.close_without_question();
    expect_stated('-');
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
  EXPECT_EQ(windows->actions().size(), 7) << "four commands, a line, a line, one document";
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
  take_picture(main_, "main-window");
  EXPECT_EQ(first.width(), settings::FileWindowX);
  EXPECT_EQ(first.height(), main_.area().viewport()->height());
  EXPECT_FALSE(first.geometry().intersects(second.geometry()));
  for (int i = 0; i < 12; ++i) add(still_document());
  for (DocumentFrame* frame : main_.area().documents())
    EXPECT_TRUE(main_.area().viewport()->rect().contains(frame->geometry()));
}

}  // namespace
}  // namespace vellum::testing
