// Every command, chosen with each kind of document and with none, by someone who cancels whatever opens.
#include <QDialog>
#include <QTimer>

#include "core/edit/undo.h"
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
    auto* dialog = qobject_cast<QDialog*>(opened);
    dialog ? dialog->reject() : static_cast<void>(opened->close());
  }
  void close_others() {
    for (QWidget* window : QApplication::topLevelWidgets())
      if (window != &main_ && window->isVisible()) window->close();
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
  for (QPalette palette : {dark, faint, contrasts}) {
    QApplication::style()->polish(palette);
    QApplication::setPalette(palette);
    settle();
    expect_presentable(main_.area().empty_state());
    DocumentFrame& frame = add(animated_document(2));
    frame.entries().select(1, true);
    for (const CommandRow& row : command_table())
      if (!is_one_of(kLeaving, row.number) && !is_one_of(kChanging, row.number)) main_.run(row.number);
    close_others();
    for (DocumentFrame* open : main_.area().documents()) open->close_without_question();
    settle();
  }
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
