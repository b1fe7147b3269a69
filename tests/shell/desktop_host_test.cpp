#include "shell/services/desktop_host.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>

#include "shell_fixture.h"

namespace vellum::testing {
namespace {

class DesktopHostTest : public ::testing::Test {
 protected:
  void SetUp() override {
    edit_.setParent(&window_);
    window_.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
  }
  /// Does `work` with the box that is open when the program next waits.
  template <class Work>
  static void with_box(Work work) {
    QTimer::singleShot(0, qApp, [work] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      work(*box);
    });
  }

  QWidget window_;
  QLineEdit edit_;
  StatusLine status_;
  DesktopHost desktop_{window_, status_};
  Host host_ = desktop_.record();
};

TEST_F(DesktopHostTest, MessagesArePlainTextWithTheirTitleAndReason) {
  with_box([](QMessageBox& box) {
    EXPECT_EQ(box.windowTitle(), "Error reading file");
    EXPECT_EQ(box.informativeText(), "<b>IDAT</b>");
    for (const QLabel* label : box.findChildren<QLabel*>())
      if (!label->text().isEmpty()) {
        EXPECT_EQ(label->textFormat(), Qt::PlainText) << label->text().toStdString();
      }
    box.accept();
  });
  host_.show(StringId::FileCorrupted, StringId::ErrorReadingFile, "<b>IDAT</b>");
}

TEST_F(DesktopHostTest, ClearingTheBoxSwitchesTheWarningOffAtOnce) {
  int option = 1;
  with_box([&option](QMessageBox& box) {
    EXPECT_EQ(box.windowTitle(), "Vellumcraft");
    ASSERT_TRUE(box.checkBox() && box.checkBox()->isChecked());
    box.checkBox()->click();
    EXPECT_EQ(option, 0);
    box.reject();
  });
  host_.warn(StringId::WrongCrc, option);
  EXPECT_EQ(option, 0);
  EXPECT_EQ(host_.ask({StringId::WrongCrc, {}, "Go on?", {}, &option}, true), Answer::Yes) << "without a box";
}

TEST_F(DesktopHostTest, QuestionsAnswerWithTheirButtons) {
  struct Case {
    bool cancel;
    QMessageBox::StandardButton button;
    Answer answer;
  };
  constexpr Case cases[] = {{true, QMessageBox::Yes, Answer::Yes},
                            {true, QMessageBox::No, Answer::No},
                            {true, QMessageBox::Cancel, Answer::Cancel},
                            {false, QMessageBox::No, Answer::No}};
  for (const Case& c : cases) {
    with_box([c](QMessageBox& box) {
      EXPECT_EQ(box.button(QMessageBox::Cancel) != nullptr, c.cancel);
      box.button(c.button)->click();
    });
    EXPECT_EQ(host_.ask({StringId::NotSavedQuestion, {}, "Save?", {}, nullptr}, c.cancel), c.answer);
    with_box([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
    EXPECT_EQ(host_.ask({StringId::NotSavedQuestion, {}, "Save?", {}, nullptr}, c.cancel),
              c.cancel ? Answer::Cancel : Answer::No);
  }
}

TEST_F(DesktopHostTest, WhileAnOperationRunsInputOnlyStopsIt) {
  {
    const Progress progress(host_, "Working");
    EXPECT_TRUE(desktop_.busy());
    EXPECT_FALSE(host_.stopped());
    QTest::keyClick(&edit_, Qt::Key_X);
    EXPECT_FALSE(host_.stopped());
    {
      const Progress inner(host_, "Part");
      inner.step(1, 2);
    }
    EXPECT_TRUE(desktop_.busy()) << "the outer operation goes on";
    QTest::mouseClick(&edit_, Qt::RightButton);
    EXPECT_TRUE(host_.stopped());
  }
  EXPECT_EQ(edit_.text(), "");
  EXPECT_FALSE(desktop_.busy());
  const Progress next(host_, "Again");
  EXPECT_FALSE(host_.stopped()) << "a new operation starts afresh";
  QTest::keyClick(&edit_, Qt::Key_Escape);
  EXPECT_TRUE(host_.stopped());
}

TEST_F(DesktopHostTest, AQuestionInTheMiddleOfAnOperationCanBeAnswered) {
  const Progress progress(host_, "Working");
  with_box([](QMessageBox& box) { QTest::mouseClick(box.button(QMessageBox::No), Qt::LeftButton); });
  EXPECT_EQ(host_.ask({StringId::BackupError, {}, "Go on?", {}, nullptr}, false), Answer::No);
  EXPECT_TRUE(desktop_.busy());
  EXPECT_FALSE(host_.stopped());
}

}  // namespace
}  // namespace vellum::testing
