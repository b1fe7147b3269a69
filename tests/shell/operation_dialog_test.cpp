// Every operation through its command and its dialog: what comes out is, byte for byte, what the operation
// makes of the values that the dialog shows.
#include "shell/dialogs/operation_dialog.h"

#include <QLabel>
#include <QPushButton>

#include "configuration/shell_settings.h"
#include "core/edit/undo.h"
#include "core/files/save_document.h"
#include "operations/settings.h"
#include "playback/compositor.h"
#include "shell/dialogs/change_preview.h"
#include "shell/widgets/crop_view.h"
#include "shell/window/command_table.h"
#include "shell_fixture.h"
#include "support/documents.h"

namespace vellum::testing {
namespace {

class OperationDialogTest : public DialogTest {
 protected:
  std::vector<std::uint8_t> bytes(DocumentWindow window) {
    const auto path = folder_ / kFileNames.at(window.document.kind);
    Recorder recorder;
    EXPECT_TRUE(save_document(window, path, recorder.host));
    return file_bytes(path);
  }
  void close_all() {
    for (DocumentFrame* frame : main_.area().documents()) frame->close_without_question();
    settle();
  }
};

TEST_F(OperationDialogTest, EveryCommandMakesWhatItsOperationMakes) {
  settings::OpenExportPath = (folder_ / "").string();
  const auto other = folder_ / "other.png";
  DocumentWindow second = small_document(DocumentKind::APNG, 2, 6);
  Recorder saving;
  ASSERT_TRUE(save_document(second, other, saving.host));
  for (const Operation* operation : operation_table())
    for (const DocumentKind kind : operation->parameters.kinds) {
      const auto kinds = find_command(operation->parameters.command)->kinds;
      if (std::ranges::find(kinds, kind) == kinds.end()) continue;
      // The dialog of the one runs by itself, the other refuses pictures as small as these.
      const std::string_view name = operation->parameters.name;
      if (name == "supercompress" || name == "protect") continue;
      SCOPED_TRACE(std::string(operation->parameters.name) + " " + kFileNames.at(kind));
      const DocumentWindow source = small_document(kind, 3, 2);
      DocumentFrame& frame = add(source);
      for (const std::size_t entry : frame_entries(frame.content())) frame.entries().select(entry, true);
      const auto before = bytes(frame.content());
      FieldValues values = setting_values(fields_for(operation->parameters, frame.content()));
      // Some have no dialog, one has two.
      QTimer answer;
      QObject::connect(&answer, &QTimer::timeout, [&] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (auto* own = qobject_cast<OperationDialog*>(dialog)) {
          for (const Field& field : own->form().fields())
            if (field.type == FieldType::Text && own->choice().values.text(field.name).empty())
              own->form().set_value(field.name,
                                    field.look == FieldLook::Path ? other.string() : std::string("Text"));
          values = own->choice().values;
        }
        if (!dialog) return;
        dialog->accept();
        EXPECT_FALSE(dialog->isVisible());
      });
      answer.start(1);
      main_.run(operation->parameters.command);
      answer.stop();
      DocumentWindow wanted = source;
      Recorder recorder;
      ASSERT_TRUE(run_operation(*operation, wanted, values, all_frames(3), recorder.host));
      const bool apart = operation->result == OperationResult::NewWindow;
      ASSERT_EQ(documents(), apart ? 2u : 1u);
      DocumentFrame& result = apart ? *main_.area().documents().back() : frame;
      EXPECT_EQ(bytes(result.content()), bytes(wanted));
      if (apart) {
        EXPECT_EQ(bytes(frame.content()), before);
        EXPECT_TRUE(result.document().fileName.string().starts_with(string_text(operation->prefix)));
      } else {
        EXPECT_FALSE(undo_pop(frame.content()) && operation->result == OperationResult::Files);
        EXPECT_EQ(bytes(frame.content()), before);
      }
      close_all();
    }
}

TEST_F(OperationDialogTest, ValuesAreKeptAndResetAndLimitedToTheSelection) {
  DocumentFrame& frame = add(small_document(DocumentKind::MING, 3, 2));
  in_dialog<OperationDialog>(311, [&](OperationDialog& dialog) {
    EXPECT_NE(dialog.findChild<ChangePreview*>(), nullptr);
    dialog.form().set_value("brightness", std::int64_t{20});
    dialog.accept();
  });
  EXPECT_EQ(settings::ColorBalBrightness, 20);
  frame.entries().select(frame_entries(frame.content())[1], true);
  in_dialog<OperationDialog>(311, [&](OperationDialog& dialog) {
    EXPECT_EQ(dialog.choice().values.number("brightness"), 20);
    dialog.form().set_value("scope", std::int64_t{1});
    EXPECT_EQ(dialog.choice().frames, FrameList{1});
    dialog.buttons().button(QDialogButtonBox::Reset)->click();
    EXPECT_EQ(dialog.choice().values.number("brightness"), 0);
    EXPECT_EQ(dialog.choice().frames.size(), 3u);
  });
  for (const char* field : {"font", "classicFont"}) {
    settings::ClassicCaptionWindow = field[0] == 'c';
    in_dialog<OperationDialog>(328, [&](OperationDialog& dialog) {
      EXPECT_TRUE(dialog.findChild<QWidget*>(QString::fromLatin1(field))->isEnabled()) << field;
    });
  }
  in_dialog<OperationDialog>(322, [&](OperationDialog& dialog) {
    EXPECT_EQ(dialog.findChild<QLabel*>(QStringLiteral("note"))->text(),
              QStringLiteral("2 of 3 frames will remain"));
    // Three frames are skipped at first: none would be left.
    dialog.form().set_value("mode", std::int64_t{1});
    dialog.form().set_value("skip", std::int64_t{3});
    dialog.accept();
    EXPECT_TRUE(dialog.isVisible());
  });
  ASSERT_FALSE(answers_.messages.empty());
  EXPECT_EQ(answers_.messages.back().id, StringId::KeepOneImage);
}

TEST_F(OperationDialogTest, CropIsDrawnWithMouseAndKeys) {
  add(small_document(DocumentKind::APNG, 2, 2));
  in_dialog<OperationDialog>(309, [&](OperationDialog& dialog) {
    auto* view = dialog.findChild<CropView*>();
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->rectangle(), QRect(0, 0, 6, 4));
    dialog.form().set_value("width", std::int64_t{3});
    emit dialog.form().edited(QStringLiteral("width"));
    QTest::keyClick(view, Qt::Key_Right);
    QTest::keyClick(view, Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(view->rectangle(), QRect(1, 0, 3, 3));
    // From outside of the rectangle a new one is drawn.
    const QPointF from(1, 1), to(view->width() - 2, view->height() - 2);
    QMouseEvent press(QEvent::MouseButtonPress, from, from, Qt::LeftButton, Qt::LeftButton, {});
    QMouseEvent move(QEvent::MouseMove, to, to, Qt::NoButton, Qt::LeftButton, {});
    QMouseEvent release(QEvent::MouseButtonRelease, to, to, Qt::LeftButton, Qt::NoButton, {});
    for (QMouseEvent* event : {&press, &move, &release}) QApplication::sendEvent(view, event);
    EXPECT_EQ(view->rectangle(), QRect(0, 0, 6, 4));
    EXPECT_EQ(dialog.choice().values.number("width"), 6);
  });
}

TEST_F(OperationDialogTest, WhatStandsInThePictureIsDraggedInThePreviewWhichShowsTheResult) {
  add(animated_document(3, 64, 48));
  Picture shown;
  in_dialog<OperationDialog>(326, [&](OperationDialog& dialog) {
    dialog.form().set_value("text", std::string("%n/%t %f 100%%"));
    dialog.form().set_value("size", std::int64_t{8});
    dialog.form().set_value("at", std::int64_t{0});
    QWidget& pane = dialog.preview()->after_pane();
    dialog.preview()->refresh();
    QTest::qWait(50);
    const QPoint from = pane.rect().center();
    QTest::mousePress(&pane, Qt::LeftButton, {}, from);
    QTest::mouseMove(&pane, from + QPoint(12, 7));
    QTest::mouseRelease(&pane, Qt::LeftButton, {}, from + QPoint(12, 7));
    EXPECT_EQ(dialog.values().number("offsetX"), 12);
    EXPECT_EQ(dialog.values().number("offsetY"), 7);
    QTest::keyClick(&pane, Qt::Key_Left, Qt::ShiftModifier);
    QTest::keyClick(&pane, Qt::Key_Down);
    EXPECT_EQ(dialog.values().number("offsetX"), 2);
    EXPECT_EQ(dialog.values().number("offsetY"), 8);
    dialog.preview()->refresh();
    QTest::qWait(50);
    shown = dialog.preview()->after();
    dialog.accept();
  });
  ASSERT_EQ(documents(), 2u);
  const DocumentWindow& made = main_.area().documents().back()->content();
  const Picture result = Compositor(made.list, made.document).frame(0).picture;
  ASSERT_EQ(std::pair(result.width(), result.height()), std::pair(shown.width(), shown.height()));
  for (std::uint32_t y = 0; y < result.height(); ++y)
    for (std::uint32_t x = 0; x < result.width(); ++x)
      ASSERT_EQ(PictureGetPixel(result, x, y) & 0xFFFFFF, PictureGetPixel(shown, x, y) & 0xFFFFFF)
          << x << ", " << y;
  settings::WarnWatermark = 0;
  in_dialog<OperationDialog>(327, [&](OperationDialog& dialog) {
    dialog.form().set_value("text", std::string("mark"));
    QWidget& pane = dialog.preview()->after_pane();
    dialog.preview()->refresh();
    QTest::qWait(50);
    const QPoint middle = pane.rect().center();
    QTest::mousePress(&pane, Qt::LeftButton, {}, middle);
    QTest::mouseMove(&pane, middle + QPoint(1, -22));
    EXPECT_EQ(dialog.values().number("at"), 1) << "top";
    QTest::keyClick(&pane, Qt::Key_Right);
    QTest::keyClick(&pane, Qt::Key_Down);
    EXPECT_EQ(dialog.values().number("at"), 5);
  });
}

}  // namespace
}  // namespace vellum::testing
