// Transitions on the desktop: the list of images, the dialogs over it, and what is made.
#include "shell/dialogs/transition_dialog.h"

#include <QAbstractItemView>
#include <QClipboard>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QPushButton>
#include <fstream>

#include "configuration/config_file.h"
#include "core/settings.h"
#include "generators/settings.h"
#include "image/graphic_file.h"
#include "operations/frames.h"
#include "shell/look/text.h"
#include "shell_fixture.h"

namespace vellum::testing {
namespace {

class TransitionDialogTest : public DialogTest {
 protected:
  void SetUp() override {
    DialogTest::SetUp();
    setenv("XDG_CONFIG_HOME", folder_.path().c_str(), 1);
    settings::DefaultAnimationType = 1;
    for (const char* name : {"one.bmp", "two.png", "three.bmp"}) {
      files_.push_back(folder_ / name);
      ASSERT_TRUE(
          GraphicFileWrite(files_.back().string(),
                           sample_picture(320 - 40 * static_cast<std::uint32_t>(files_.size()), 200, 24)));
    }
  }
  static QPushButton* button(QWidget& dialog, const QString& text) {
    for (QPushButton* found : dialog.findChildren<QPushButton*>())
      if (found->text() == text) return found;
    return nullptr;
  }
  std::string kept() {
    const auto bytes = file_bytes(config_path("TransitionImages.txt"));
    return {bytes.begin(), bytes.end()};
  }

  std::vector<std::filesystem::path> files_;
};

TEST_F(TransitionDialogTest, AListOfImagesPlaysAndBecomesADocument) {
  in_dialog<TransitionDialog>(251, [&](TransitionDialog& dialog) {
    QPushButton* ok = dialog.buttons().button(QDialogButtonBox::Ok);
    EXPECT_FALSE(ok->isEnabled());
    EXPECT_FALSE(button(dialog, "&Test")->isEnabled());
    answers_.pictures = files_;
    button(dialog, "&Add")->click();
    QImage pasted(300, 150, QImage::Format_RGB32);
    pasted.fill(Qt::blue);
    QGuiApplication::clipboard()->setImage(pasted);
    settle();
    button(dialog, "&Paste")->click();
    ASSERT_EQ(dialog.pictures().count(), 4u);
    QMimeData dropped;
    dropped.setUrls({QUrl::fromLocalFile(path_text(files_[0]))});
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(dialog.pictures().list().viewport(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(dialog.pictures().list().viewport(), &drop);
    ASSERT_EQ(dialog.pictures().count(), 5u);
    dialog.pictures().list().setCurrentRow(4);
    QTest::keyClick(&dialog.pictures().list(), Qt::Key_Delete);
    ASSERT_EQ(dialog.pictures().count(), 4u);
    dialog.pictures().list().setCurrentRow(0);
    EXPECT_TRUE(ok->isEnabled());
    dialog.form().set_value("effect", std::int64_t{20});
    dialog.form().set_value("pause", std::int64_t{300});
    dialog.follow();
    QTest::qWait(80);
    EXPECT_TRUE(dialog.preview().shown());
    expect_presentable(dialog);

    // The second image gets values of its own and goes to the top.
    when_dialog_opens<FormDialog>([&](FormDialog& own) {
      EXPECT_EQ(own.windowTitle(), "Transition Override [ two.png ]");
      EXPECT_EQ(own.form().values().number("pause"), 300);
      own.form().set_value("effect", std::int64_t{7});
      own.form().set_value("pause", std::int64_t{40});
      expect_presentable(own);
      own.accept();
    });
    dialog.pictures().list().setCurrentRow(1);
    QTest::keyClick(&dialog.pictures().list(), Qt::Key_Return);
    EXPECT_TRUE(dialog.isVisible()) << "Return belongs to the list";
    QTest::keyClick(&dialog.pictures().list(), Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(dialog.pictures().at(0).name, "two.png");
    EXPECT_EQ(dialog.pictures().current(), 0);
    when_dialog_opens<FormDialog>([&](FormDialog& numbers) {
      numbers.form().set_value("horizontalStep", std::int64_t{100});
      expect_presentable(numbers);
      numbers.accept();
    });
    button(dialog, "Ad&vanced")->click();
    EXPECT_EQ(settings::TransitionHorizontalStep, 100);

    // The list of effects has a sample that moves.
    auto* effects = qobject_cast<QComboBox*>(dialog.form().input("effect"));
    const QImage before = effects->itemIcon(20).pixmap(48, 36).toImage();
    QTest::qWait(450);
    EXPECT_NE(effects->itemIcon(20).pixmap(48, 36).toImage(), before);
    effects->showPopup();
    QTest::qWait(150);
    effects->hidePopup();
    ok->click();
  });
  ASSERT_EQ(documents(), 1u);
  DocumentFrame& made = *main_.area().documents().front();
  const auto entries = frame_entries(made.content());
  EXPECT_EQ(made.document().kind, DocumentKind::MING);
  EXPECT_EQ(entries.size(), 1u + 3 * (1 + 3)) << "None, and wipes of 300 pixels by 100";
  EXPECT_EQ(kept(), files_[1].string() + "\n" + files_[0].string() + "\n" + files_[2].string() + "\n");
  EXPECT_EQ(settings::TransitionPause, 300);

  // The next time they are there again, but for one that is gone; a damaged one ends the reading.
  std::filesystem::remove(files_[1]);
  std::ofstream(files_[2]) << "none";
  in_dialog<TransitionDialog>(251, [&](TransitionDialog& dialog) {
    EXPECT_EQ(dialog.pictures().count(), 1u);
    EXPECT_EQ(dialog.form().values().number("effect"), 20);
    answers_.shift = true;
    button(dialog, "&Remove")->click();
    EXPECT_EQ(dialog.pictures().count(), 0u);
    EXPECT_FALSE(dialog.buttons().button(QDialogButtonBox::Ok)->isEnabled());
  });
  EXPECT_EQ(answers_.messages.size(), 1u);
  answers_.shift = true;
  in_dialog<TransitionDialog>(251, [&](TransitionDialog& dialog) {
    EXPECT_EQ(dialog.pictures().count(), 0u);
    EXPECT_EQ(dialog.all_values().number("horizontalStep"), 8);
    EXPECT_EQ(dialog.form().values().number("effect"), 0);
  });
}

TEST_F(TransitionDialogTest, OnlyAnMngLeavesAChoiceOfColors) {
  settings::DefaultAnimationType = 2;
  settings::TransitionTruecolour = 0;
  in_dialog<TransitionDialog>(251, [&](TransitionDialog& dialog) {
    EXPECT_FALSE(dialog.form().input("trueColor")->isEnabled());
    EXPECT_FALSE(dialog.form().input("palette")->isEnabled());
    EXPECT_EQ(dialog.form().values().number("trueColor"), 1);
  });
}

}  // namespace
}  // namespace vellum::testing
