// Properties, Manage and the film strip, worked by keys and clicks.
#include <QAbstractSpinBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>
#include <QToolButton>

#include "base/text.h"
#include "configuration/shell_settings.h"
#include "core/edit/undo.h"
#include "operations/resize_animation.h"
#include "operations/settings.h"
#include "shell/dialogs/change_preview.h"
#include "shell/dialogs/manage_dialog.h"
#include "shell/dialogs/operation_dialog.h"
#include "shell/dialogs/properties_dialog.h"
#include "shell/docks/strip_panel.h"
#include "shell_fixture.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

class AnimationDialogTest : public DialogTest {
 protected:
  static void press(QWidget& dialog, const char* name) {
    auto* button = dialog.findChild<QPushButton*>(QLatin1String(name));
    ASSERT_NE(button, nullptr) << name;
    button->click();
  }
  static std::vector<std::uint32_t> delays(const DocumentWindow& window) {
    std::vector<std::uint32_t> result;
    for (const std::size_t entry : frame_entries(window))
      result.push_back(frame_delay_ms(window.list.record(entry), window.document.kind, 1000));
    return result;
  }
};

TEST_F(AnimationDialogTest, PropertiesFindTheSizeSortAndSelect) {
  DocumentFrame& frame = add(animated_document(3));
  set_delays(frame.content(), {0}, 900);
  in_dialog<PropertiesDialog>(118, [&](PropertiesDialog& dialog) {
    EXPECT_TRUE(QTest::qWaitFor([&] { return !dialog.measuring(); }, 20000));
    Host silent;
    EXPECT_EQ(dialog.properties().fileSize, size_when_written(frame.content(), save_options(), silent));
    EXPECT_TRUE(dialog.findChild<QLabel*>(QStringLiteral("light_File size")));
    auto* table = dialog.findChild<QTableView*>(QStringLiteral("frames"));
    dialog.findChild<QTabWidget*>()->setCurrentIndex(1);
    emit table->horizontalHeader()->sectionClicked(3);
    EXPECT_EQ(settings::PropertiesSort, 2);
    EXPECT_EQ(table->model()->index(2, 0).data().toString(), QStringLiteral("1"));
    table->selectRow(2);
    EXPECT_EQ(selected_rows(frame.entries()), std::set<std::size_t>{frame_entries(frame.content())[0]});
    EXPECT_TRUE(dialog.text().contains(QStringLiteral("Running time:")));
  });
}

TEST_F(AnimationDialogTest, LimitsAreCheckedAndStored) {
  add(animated_document(1));
  settings::PropertiesFileSizeEnable = 0;
  in_dialog<PropertiesDialog>(118, [&](PropertiesDialog& dialog) {
    Form* form = dialog.findChild<Form*>();
    form->set_value("fileYellow", std::int64_t{3000});
    dialog.accept();
    EXPECT_TRUE(dialog.isVisible());
    ASSERT_EQ(answers_.messages.size(), 1u);
    EXPECT_EQ(answers_.messages[0].text, "The red limit must be above the yellow limit.");
    form->set_value("fileRed", std::int64_t{3001});
    dialog.accept();
  });
  EXPECT_EQ(settings::PropertiesFileYellow, 3000);
  EXPECT_EQ(settings::PropertiesFileRed, 3001);
}

TEST_F(AnimationDialogTest, APreviewInActualSizeHasTheLimitOfTheSettings) {
  add(animated_document(1, 500, 200));
  const struct {
    int most;
    std::uint32_t width;
  } cases[] = {{0, 1000}, {800, 800}, {100, 100}, {-7, 1000}, {2000, 1000}};
  for (const auto& [most, width] : cases) {
    settings::MaximumPreviewDimension = most;
    in_dialog<OperationDialog>(310, [&, width = width](OperationDialog& dialog) {
      dialog.form().set_value("factorX", 200.0);
      for (QToolButton* button : dialog.findChildren<QToolButton*>())
        if (button->text() == QStringLiteral("Actual size")) button->setChecked(true);
      EXPECT_TRUE(QTest::qWaitFor([&] { return dialog.preview()->after().width() == width; }, 5000))
          << dialog.preview()->after().width() << " of " << width;
    });
  }
}

TEST_F(AnimationDialogTest, ResizeMakesANewWindowAndRemembersTheSize) {
  DocumentFrame& frame = add(animated_document(3));
  in_dialog<OperationDialog>(310, [&](OperationDialog& dialog) {
    dialog.form().set_value("factorX", 50.0);
    EXPECT_EQ(dialog.form().values().real("factorY"), 50) << "the proportions stay";
    EXPECT_TRUE(QTest::qWaitFor([&] { return dialog.preview()->after().width() == 20; }, 5000));
    dialog.form().set_value("way", std::int64_t{0});
    dialog.form().set_value("width", std::int64_t{80});
    EXPECT_EQ(dialog.form().values().number("height"), 60);
    dialog.form().set_value("constant", std::int64_t{0});
    dialog.form().set_value("height", std::int64_t{7});
    EXPECT_EQ(dialog.form().values().number("width"), 80);
    dialog.accept();
  });
  ASSERT_EQ(documents(), 2u);
  DocumentFrame* made = main_.area().documents().back();
  const Extent size = document_size(made->entries(), made->document());
  EXPECT_EQ(std::pair(size.width, size.height), std::pair(80u, 7u));
  EXPECT_TRUE(made->document().fileName.filename().string().starts_with("Resized_"));
  EXPECT_TRUE(made->document().dirty);
  EXPECT_EQ(document_size(frame.entries(), frame.document()).width, 40u);
  EXPECT_TRUE(frame.content().undoLevels.empty());
  EXPECT_EQ(settings::ScaleWidth, 80);
  main_.area().setActiveSubWindow(&frame);
  in_dialog<OperationDialog>(310, [&](OperationDialog& dialog) {
    auto* presets = dialog.findChild<QComboBox*>(QStringLiteral("presets"));
    EXPECT_GE(presets->findText(QStringLiteral("80 x 7")), 0);
    emit presets->textActivated(QStringLiteral("25 %"));
    EXPECT_EQ(resize_of(dialog.choice().values, frame.content()).width, 10u);
    EXPECT_EQ(resize_of(dialog.choice().values, frame.content()).height, 8u);
  });
  EXPECT_EQ(documents(), 2u);
}

TEST_F(AnimationDialogTest, ManageRemembersItsActionByName) {
  add(animated_document(2));
  QString chosen;
  for (const int row : {2, 0}) {  // the first one again for the tests behind this
    in_dialog<ManageDialog>(62, [&](ManageDialog& dialog) {
      auto* actions = dialog.findChild<QComboBox*>(QStringLiteral("action"));
      EXPECT_TRUE(chosen.isEmpty() || actions->currentText() == chosen);
      actions->setCurrentIndex(row);
      chosen = actions->currentText();
      dialog.accept();
    });
  }
}

TEST_F(AnimationDialogTest, ManageWritesOnceOrNothing) {
  DocumentFrame& frame = add(animated_document(3));
  const auto work = [&](ManageDialog& dialog, bool ok) {
    dialog.model().check({0, 2});
    dialog.apply_action();  // "Set delay", 100
    auto* table = dialog.findChild<QTableView*>(QStringLiteral("frames"));
    EXPECT_TRUE(table->model()->setData(table->model()->index(1, ManageModel::Delay), QStringLiteral("1/8")));
    EXPECT_FALSE(table->model()->setData(table->model()->index(1, ManageModel::X), QStringLiteral("-1")));
    EXPECT_EQ(answers_.messages.back().text, "X must be a whole number from 0 to 999960.");
    press(dialog, "down");
    EXPECT_EQ(dialog.model().checked(), (FrameList{1, 2}));
    ok ? dialog.accept() : dialog.reject();
  };
  in_dialog<ManageDialog>(62, [&](ManageDialog& dialog) { work(dialog, false); });
  EXPECT_EQ(delays(frame.content()), (std::vector<std::uint32_t>{0, 0, 0}));
  EXPECT_FALSE(frame.document().dirty);
  EXPECT_TRUE(frame.content().undoLevels.empty());
  in_dialog<ManageDialog>(62, [&](ManageDialog& dialog) { dialog.accept(); });
  EXPECT_FALSE(frame.document().dirty) << "nothing was changed";
  in_dialog<ManageDialog>(62, [&](ManageDialog& dialog) { work(dialog, true); });
  EXPECT_EQ(delays(frame.content()), (std::vector<std::uint32_t>{125, 100, 100}));
  EXPECT_TRUE(frame.document().dirty);
  EXPECT_TRUE(undo_pop(frame.content()));
  EXPECT_EQ(delays(frame.content()), (std::vector<std::uint32_t>{0, 0, 0}));
  EXPECT_FALSE(frame.document().dirty);
}

TEST_F(AnimationDialogTest, ManageKeepsOneFrame) {
  DocumentFrame& frame = add(animated_document(2));
  in_dialog<ManageDialog>(62, [&](ManageDialog& dialog) {
    press(dialog, "all");
    press(dialog, "delete");
    ASSERT_EQ(answers_.messages.size(), 1u);
    EXPECT_EQ(answers_.messages[0].text, "An animation must keep at least one image.");
    auto* plays = dialog.findChild<QAbstractSpinBox*>();
    plays->findChild<QLineEdit*>()->setText(QStringLiteral("3"));
    press(dialog, "duplicate");
    EXPECT_EQ(dialog.model().rowCount(), 4);
    dialog.accept();
  });
  EXPECT_EQ(frame_entries(frame.content()).size(), 4u);
  EXPECT_EQ(GetIterations(frame.entries(), frame.document()), 3u) << "typed in front of the last action";
}

TEST_F(AnimationDialogTest, TheStripFollowsTheListAndChangesIt) {
  DocumentFrame& frame = add(animated_document(4));
  const auto entries = frame_entries(frame.content());
  for (std::size_t i = 0; i < 4; ++i)
    set_delays(frame.content(), {i}, static_cast<std::uint32_t>(10 * i + 10));
  main_.run(307);
  auto* strip = dynamic_cast<StripPanel*>(main_.docks().panel(822));
  ASSERT_NE(strip, nullptr);
  StripView& view = strip->view();
  settle();
  EXPECT_EQ(view.frames(), 4u);
  const auto click = [&](std::size_t i, Qt::KeyboardModifiers held = {}) {
    QTest::mouseClick(view.viewport(), Qt::LeftButton, held, view.cell_rect(i).center());
  };
  click(1);
  EXPECT_EQ(selected_rows(frame.entries()), std::set<std::size_t>{entries[1]});
  click(3, Qt::ShiftModifier);
  EXPECT_EQ(selected_rows(frame.entries()).size(), 3u);
  click(2, Qt::ControlModifier);
  EXPECT_EQ(selected_rows(frame.entries()), (std::set<std::size_t>{entries[1], entries[3]}));
  click(0);
  QTest::keyClick(&view, Qt::Key_Right, Qt::AltModifier);
  EXPECT_EQ(delays(frame.content()), (std::vector<std::uint32_t>{20, 10, 30, 40}));
  settle();
  // Frame 2 is dragged behind the last one.
  const QPoint from = view.cell_rect(1).center(), to = view.cell_rect(3).center() + QPoint(50, 0);
  QTest::mousePress(view.viewport(), Qt::LeftButton, {}, from);
  QMouseEvent move(QEvent::MouseMove, QPointF(to), view.viewport()->mapToGlobal(QPointF(to)), Qt::NoButton,
                   Qt::LeftButton, {});
  QApplication::sendEvent(view.viewport(), &move);
  QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, to);
  EXPECT_EQ(delays(frame.content()), (std::vector<std::uint32_t>{20, 30, 40, 10}));
  settle();
  QTest::keyClick(&view, Qt::Key_Home);
  QTest::keyClick(&view, Qt::Key_Delete);
  EXPECT_EQ(delays(frame.content()), (std::vector<std::uint32_t>{30, 40, 10}));
  settle();
  EXPECT_EQ(view.frames(), 3u);
  QString opened;
  QTimer::singleShot(0, qApp, [&] {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(dialog, nullptr);
    opened = dialog->windowTitle();
    dialog->reject();
  });
  QTest::keyClick(&view, Qt::Key_End);
  QTest::keyClick(&view, Qt::Key_Return);
  EXPECT_EQ(opened, QStringLiteral("Edit IDAT"));
  EXPECT_EQ(static_cast<std::size_t>(frame.document().caret), frame_entries(frame.content()).back());
  frame.close_without_question();
  settle();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(view.frames(), 0u);
}

}  // namespace
}  // namespace vellum::testing
