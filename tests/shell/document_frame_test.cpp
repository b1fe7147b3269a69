#include <QMenu>

#include "configuration/shell_settings.h"
#include "shell/window/context_menu.h"
#include "shell_fixture.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

using DocumentFrameTest = WindowTest;

TEST_F(DocumentFrameTest, AMaximizedWindowTakesItsContentsWidthWhenItIsRestored) {
  const SettingsGuard guard;
  settings::FileWindowX = 200;
  DocumentFrame& frame = add(animated_document(3, 300, 40));
  frame.showMaximized();
  settle();
  frame.set_scale(7);
  frame.size_to_content();
  EXPECT_TRUE(frame.isMaximized());
  frame.showNormal();
  QTest::qWait(20);
  const int restored = frame.width();
  frame.size_to_content();
  EXPECT_EQ(frame.width(), restored);
  EXPECT_GT(restored, 300);
}

TEST_F(DocumentFrameTest, TheHeightOfNewWindowsFollowsTheSettings) {
  const SettingsGuard guard;
  const int client = main_.area().viewport()->height();
  const struct {
    int optimum, height, expected;
  } cases[] = {{1, 200, client}, {0, 200, 200}, {0, 100000, client}, {0, 0, client * 3 / 4}};
  for (const auto& c : cases) {
    settings::OptimumVerticalWindows = c.optimum;
    settings::FileWindowY = c.height;
    DocumentFrame& frame = add(still_document());
    EXPECT_TRUE(frame.isMaximized()) << "the first document";
    frame.showNormal();
    QTest::qWait(20);
    EXPECT_EQ(frame.height(), c.expected) << c.optimum << ' ' << c.height;
    frame.close_without_question();
    settle();
  }
}

/// The menu's labels, a line as "-", each that can't be chosen in brackets.
std::string text_of_menu(const QMenu& menu) {
  std::string text;
  for (const QAction* action : menu.actions()) {
    const std::string label =
        action->isSeparator() ? "-" : plain_label(action->text().toUtf8().constData()).toStdString();
    text += (action->isEnabled() || action->isSeparator() ? label : '(' + label + ')') + '|';
  }
  return text;
}

TEST_F(DocumentFrameTest, TheMenuOfARowHasTheStatedEntries) {
  DocumentFrame& frame = add(animated_document(2));
  bool favorite = false;
  main_.services().is_favorite = [&favorite](const Document&) { return favorite; };
  for (const bool pinned : {false, true}) {
    favorite = pinned;
    const std::unique_ptr<QMenu> menu(make_context_menu(main_, frame, 2));
    std::vector<std::string> labels;
    int lines = 0;
    for (const QAction* action : menu->actions()) {
      lines += action->isSeparator();
      if (!action->isSeparator())
        labels.push_back(plain_label(action->text().toUtf8().constData()).toStdString());
    }
    EXPECT_EQ(labels, (std::vector<std::string>{"Undo",
                                                "Cut",
                                                "Copy",
                                                "Paste",
                                                "View",
                                                "Select all",
                                                "Export image",
                                                pinned ? "Unpin from favorites" : "Pin to favorites",
                                                "Adjust",
                                                "Color and Balance",
                                                "Caption",
                                                "Crop",
                                                "Depopulate",
                                                "Extract",
                                                "Flip and Rotate",
                                                "Frame",
                                                "Manage",
                                                "Protection Matrix",
                                                "Merge",
                                                "Overlay",
                                                "Reconstruct",
                                                "Reverse",
                                                "Resize",
                                                "Shadow",
                                                "Text Overlay",
                                                "Tile",
                                                "Titles and Credits",
                                                "Trim",
                                                "Underlay",
                                                "Watermark",
                                                "Move to",
                                                "Copy to"}));
    EXPECT_EQ(lines, 3);
    EXPECT_NE(text_of_menu(*menu).find("|Manage|"), std::string::npos);
    EXPECT_NE(text_of_menu(*menu).find("(Undo)|"), std::string::npos);
  }
  DocumentFrame& still = add(still_document());
  const std::unique_ptr<QMenu> menu(make_context_menu(main_, still, 1));
  const std::string text = text_of_menu(*menu);
  for (const char* absent : {"Export image", "Move to", "Copy to"})
    EXPECT_EQ(text.find(absent), std::string::npos) << absent;
}

}  // namespace
}  // namespace vellum::testing
