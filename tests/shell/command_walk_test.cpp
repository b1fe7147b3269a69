// Every command, chosen with each kind of document and with none, by someone who cancels whatever opens.
#include <QDialog>
#include <QTimer>

#include "core/edit/undo.h"
#include "shell/look/style.h"
#include "shell/look/theme_look.h"
#include "shell_fixture.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

// These end the program or the document.
constexpr int kLeaving[] = {55, 123, 106, 109};
// These change the document without a question, or undo a change.
constexpr int kChanging[] = {204,  201,  203,  61,   206,  207,  1050, 1053, 1054,
                             1056, 1022, 1025, 1027, 1021, 1024, 1023, 1026};

bool is_one_of(std::span<const int> numbers, int number) {
  return std::ranges::find(numbers, number) != numbers.end();
}

class CommandWalk : public WindowTest {
 protected:
  CommandWalk() {
    QObject::connect(&closer_, &QTimer::timeout, [this] { close_what_opened(); });
    closer_.start(5);
  }
  void close_what_opened() {
    QWidget* popup = QApplication::activePopupWidget();
    QWidget* opened = popup ? popup : QApplication::activeModalWidget();
    if (!opened) return;
    ++closed_;
    if (!popup) expect_presentable(*opened);
    if (theme_in_force()) expect_readable(*opened);
    auto* dialog = qobject_cast<QDialog*>(opened);
    dialog ? dialog->reject() : static_cast<void>(opened->close());
  }
  void close_others() {
    for (QWidget* window : QApplication::topLevelWidgets())
      if (window != &main_ && window->isVisible()) window->close();
  }
  /// All that text is drawn with, in all that a window holds.
  static void expect_readable(const QWidget& window) {
    using enum QPalette::ColorRole;
    static constexpr std::pair<QPalette::ColorRole, QPalette::ColorRole> pairs[] = {
        {WindowText, Window},
        {Text, Base},
        {Text, AlternateBase},
        {ButtonText, Button},
        {Link, Window},
        {PlaceholderText, Base},
        {HighlightedText, Highlight},
        {ToolTipText, ToolTipBase}};
    QList<QWidget*> all = window.findChildren<QWidget*>();
    all.push_back(const_cast<QWidget*>(&window));
    for (const QWidget* widget : all)
      for (const auto& [ink, ground] : pairs)
        for (const auto group : {QPalette::Active, QPalette::Inactive})
          ASSERT_GE(
              style::contrast(widget->palette().color(group, ink), widget->palette().color(group, ground)),
              4.5)
              << window.windowTitle().toStdString() << ": " << widget->metaObject()->className() << ' '
              << ink;
  }
  std::vector<std::string> rows(DocumentFrame& frame) {
    std::vector<std::string> told;
    for (std::size_t i = 0; i < frame.entries().size(); ++i)
      told.push_back(frame.entries().record(i).description);
    return told;
  }

  SettingsGuard guard_;
  QTimer closer_;
  int closed_ = 0;
};

TEST_F(CommandWalk, WithoutADocumentNothingComesIntoBeing) {
  for (const CommandRow& row : command_table()) {
    if (is_one_of(kLeaving, row.number)) continue;
    main_.run(row.number);
    settle();
    EXPECT_EQ(documents(), 0u) << row.number;
    close_others();
  }
  EXPECT_GT(closed_, 4) << "at least the new documents and Setup ask";
}

TEST_F(CommandWalk, WhoeverCancelsKeepsTheDocument) {
  for (const auto kind : {DocumentKind::PING, DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP})
    for (const CommandRow& row : command_table()) {
      if (is_one_of(kLeaving, row.number)) continue;
      DocumentFrame& frame = add(document_of(kind, main_.services().host));
      frame.entries().select(1, true);
      ASSERT_TRUE(undo_push(frame.content(), main_.services().host));
      main_.refresh();
      const auto before = rows(frame);
      main_.run(row.number);
      settle();
      expect_named(main_);
      if (!is_one_of(kChanging, row.number)) {
        EXPECT_EQ(rows(frame), before) << row.number << ' ' << row.label;
      }
      close_others();
      for (DocumentFrame* open : main_.area().documents()) open->close_without_question();
      settle();
      EXPECT_EQ(documents(), 0u) << row.number;
    }
  EXPECT_TRUE(main_.isVisible());
}

TEST_F(CommandWalk, WindowsCanBeReadOnEveryPaletteOfADesktop) {
  // Desktops leave the color of secondary text at what their light palette has, or as good as transparent.
  QPalette dark = dark_palette(), faint, contrasts(Qt::black, Qt::black);
  dark.setColor(QPalette::PlaceholderText, QColor(70, 70, 74));
  faint.setColor(QPalette::PlaceholderText, QColor(0, 0, 0, 60));
  for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
    contrasts.setColor(role, Qt::yellow);
  contrasts.setColor(QPalette::Base, Qt::black);
  const QPalette before = QApplication::palette();
  main_.resize(800, 560);
  std::vector<std::function<void()>> looks;
  for (QPalette palette : {dark, faint, contrasts})
    looks.push_back([palette]() mutable {
      QApplication::style()->polish(palette);
      QApplication::setPalette(palette);
    });
  const std::filesystem::path themes = program_folder() / "theme";
  for (const Theme& theme : find_themes({&themes, 1}).themes)
    looks.push_back([theme, before] {
      QApplication::setPalette(before);
      put_theme_in_force(std::make_shared<Theme>(theme));
    });
  ASSERT_EQ(looks.size(), 6u);
  for (const auto& look : looks) {
    look();
    settle();
    if (theme_in_force()) expect_readable(main_);
    expect_presentable(main_.area().empty_state());
    DocumentFrame& frame = add(animated_document(2));
    frame.entries().select(1, true);
    for (const CommandRow& row : command_table())
      if (!is_one_of(kLeaving, row.number) && !is_one_of(kChanging, row.number)) main_.run(row.number);
    main_.showNormal();  // from the full screen
    close_others();
    for (DocumentFrame* open : main_.area().documents()) open->close_without_question();
    settle();
  }
  put_theme_in_force(nullptr);
  QApplication::setPalette(before);
}

TEST_F(CommandWalk, TheCommandsThatLeaveLeave) {
  for (const int number : kLeaving) {
    if (!main_.isVisible()) main_.show();
    add(animated_document(2));
    main_.run(number);
    settle();
    EXPECT_EQ(documents(), 0u) << number;
    EXPECT_EQ(main_.isVisible(), number == 106 || number == 109) << number;
  }
}

}  // namespace
}  // namespace vellum::testing
