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

}  // namespace
}  // namespace vellum::testing
