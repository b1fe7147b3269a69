// What the tests of the desktop share: answers in place of a user, made-up documents, and the main window.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <QTimer>
#include <deque>
#include <set>

#include "shell/window/main_window.h"
#include "support/corpus.h"
#include "support/settings_guard.h"

namespace vellum::testing {

/// Answers what commands ask, and keeps what they said.
struct Answers {
  std::vector<Message> messages, questions;
  std::deque<Answer> answers;  ///< for the questions in their order; Yes when there are no more
  std::optional<std::filesystem::path> open, save, file;
  std::vector<SaveChoice> saveChoices;
  std::vector<std::filesystem::path> pictures;
  std::optional<bool> severalPictures;  ///< as it was asked for
  bool shift = false, control = false;
  bool busy = false;

  Services services();
};

/// A picture in which every pixel differs from its neighbors.
Picture sample_picture(std::uint32_t width, std::uint32_t height, std::uint32_t bits);

/// A still PNG: IHDR, IDAT, IEND; laid out.
DocumentWindow still_document(std::uint32_t width = 40, std::uint32_t height = 30);
/// An animated PNG with frames of the canvas' size.
DocumentWindow animated_document(std::size_t frames, std::uint32_t width = 40, std::uint32_t height = 30);
/// One of the first, or the second with two frames, in another kind.
DocumentWindow document_of(DocumentKind kind, Host& host);
/// A still PNG with `rows` entries, most of them text.
DocumentWindow long_document(std::size_t rows);

std::set<std::size_t> selected_rows(const ChunkList& list);

/// Colors of a dark desktop.
QPalette dark_palette();

/// Expects a name for a screen reader on everything in a window that takes the keyboard.
void expect_named(const QWidget& window);

/// Expects a window to fit a screen of 800 x 600, its buttons inside it, its Help a page of the guide, and
/// its texts to have a contrast of at least 4.5 to their grounds, and its controls names.
void expect_presentable(QWidget& window);

/// A main window that nobody looks at.
class WindowTest : public ::testing::Test {
 protected:
  void SetUp() override;
  /// Lets queued calls and drawing happen.
  static void settle();
  DocumentFrame& add(DocumentWindow content);
  std::size_t documents() { return main_.area().documents().size(); }

  Answers answers_;
  ScratchFolder folder_;
  MainWindow main_;
};

/// Commands that open modal dialogs.
class DialogTest : public WindowTest {
 protected:
  /// Does `work` in the next dialog that opens, which is then closed.
  template <class Dialog>
  void when_dialog_opens(const std::function<void(Dialog&)>& work) {
    QTimer::singleShot(0, qApp, [this, work] {
      auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      ++dialogs_;
      work(*dialog);
      if (dialog->isVisible()) dialog->reject();
    });
  }
  /// Runs a command that opens a dialog, and does `work` in it.
  template <class Dialog>
  void in_dialog(int command, const std::function<void(Dialog&)>& work) {
    const int before = dialogs_;
    when_dialog_opens(work);
    main_.run(command);
    EXPECT_GT(dialogs_, before) << command;
  }

  SettingsGuard guard_;
  int dialogs_ = 0;  ///< that were seen
};

}  // namespace vellum::testing
