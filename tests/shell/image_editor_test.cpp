// The image editor: all that is done in it happens at OK, and nothing at Cancel.
#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>

#include "configuration/shell_settings.h"
#include "core/files/save_document.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "shell/editors/edit_image.h"
#include "shell/forms/form_dialog.h"
#include "shell/look/picture_image.h"
#include "shell/widgets/picture_view.h"
#include "shell_fixture.h"

namespace vellum::testing {
namespace {

class ImageEditorTest : public ::testing::Test {
 protected:
  ImageEditorTest() : services_(answers_.services()) {
    services_.choose_file = [this](const FileChoice& choice) {
      return choice.saving ? answers_.save : answers_.open;
    };
  }

  Edited edit(DocumentWindow& window, std::size_t index, std::function<void(FormDialog&)> work) {
    QTimer::singleShot(0, qApp, [&] {
      auto* dialog = qobject_cast<FormDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      work(*dialog);
      if (QApplication::activeModalWidget() == dialog) dialog->reject();
    });
    return edit_image(nullptr, window, index, services_);
  }
  static void press(FormDialog& dialog, const char* name) {
    auto* button = dialog.findChild<QPushButton*>(QLatin1String(name));
    ASSERT_NE(button, nullptr) << name;
    ASSERT_TRUE(button->isEnabled()) << name;
    QTest::mouseClick(button, Qt::LeftButton);
  }
  static void choose(FormDialog& dialog, const char* name, int item) {
    dialog.findChild<QPushButton*>(QLatin1String(name))->menu()->actions().at(item)->trigger();
  }
  static void finish(FormDialog& dialog, QDialogButtonBox::StandardButton button) {
    QTest::mouseClick(dialog.buttons().button(button), Qt::LeftButton);
  }

  ScratchFolder folder_;
  Answers answers_;
  Services services_;
};

TEST_F(ImageEditorTest, ReplacesTheImageAtOkAndNotAtCancel) {
  const Picture other = sample_picture(20, 15, 24);
  answers_.open = folder_ / "other.png";
  ASSERT_TRUE(GraphicFileWrite(answers_.open->string(), other));
  for (const auto button : {QDialogButtonBox::Cancel, QDialogButtonBox::Ok}) {
    DocumentWindow window = still_document(40, 30);
    const auto before = window.list.entry(1).record;
    const bool ok = button == QDialogButtonBox::Ok;
    EXPECT_EQ(edit(window, 1,
                   [&](FormDialog& dialog) {
                     press(dialog, "replace");
                     finish(dialog, button);
                   }),
              ok ? Edited::Changed : Edited::Cancelled);
    EXPECT_EQ(window.list.entry(1).record == before, !ok);
    EXPECT_EQ(picture_of(window.list.record(1)).width(), ok ? 20u : 40u);
    EXPECT_EQ(document_size(window.list, window.document).width, ok ? 20u : 40u) << "the header follows";
  }
}

TEST_F(ImageEditorTest, WithoutAChangeNothingChanges) {
  DocumentWindow window = animated_document(2);
  EXPECT_EQ(edit(window, 2, [&](FormDialog& dialog) { finish(dialog, QDialogButtonBox::Ok); }), Edited::Same);
}

TEST_F(ImageEditorTest, AFileThatIsNoPictureIsToldAndNothingElse) {
  answers_.open = folder_ / "missing.png";
  DocumentWindow window = still_document();
  EXPECT_EQ(edit(window, 1,
                 [&](FormDialog& dialog) {
                   press(dialog, "replace");
                   finish(dialog, QDialogButtonBox::Ok);
                 }),
            Edited::Same);
  ASSERT_EQ(answers_.messages.size(), 1u);
  EXPECT_EQ(answers_.messages[0].id, StringId::ErrorReadingFile);
}

TEST_F(ImageEditorTest, FrameValuesAndPictureGoInTogether) {
  DocumentWindow window = animated_document(3);
  const std::size_t last = window.list.size() - 2;
  EXPECT_EQ(edit(window, last,
                 [&](FormDialog& dialog) {
                   dialog.form().set_value("delayNum", std::int64_t{7});
                   dialog.form().set_value("delayDen", std::int64_t{100});
                   QApplication::clipboard()->setImage(image_of_picture(sample_picture(40, 30, 24)));
                   press(dialog, "paste");
                   finish(dialog, QDialogButtonBox::Ok);
                 }),
            Edited::Changed);
  EXPECT_EQ(window.list.record(last).frameControl.delayNum, 7u);
  EXPECT_EQ(picture_of(window.list.record(last)).width(), 40u);
}

TEST_F(ImageEditorTest, CopiesPastesAndExports) {
  DocumentWindow window = animated_document(2);
  answers_.save = folder_ / "out.bmp";
  const Picture pasted = sample_picture(40, 30, 24);
  EXPECT_EQ(edit(window, 3,
                 [&](FormDialog& dialog) {
                   press(dialog, "copy");
                   EXPECT_EQ(QApplication::clipboard()->image().width(), 40);
                   press(dialog, "export");
                   QApplication::clipboard()->setImage(image_of_picture(pasted));
                   press(dialog, "paste");
                   finish(dialog, QDialogButtonBox::Ok);
                 }),
            Edited::Changed);
  EXPECT_TRUE(GraphicFileRead((folder_ / "out.bmp").string()));
  const Picture result = picture_of(window.list.record(3));
  for (std::uint32_t x = 0; x < 40; ++x)
    ASSERT_EQ(PictureGetPixel(result, x, 7) & 0xFFFFFF, PictureGetPixel(pasted, x, 7)) << x;
}

TEST_F(ImageEditorTest, PadsToTheCanvas) {
  DocumentWindow window = animated_document(2);
  ChunkRecord record;
  ASSERT_TRUE(chunk_list_get(window.list, 3, record));
  record.data = sample_picture(10, 8, 24).handle();
  record.width = record.frameControl.frameWidth = 10;
  record.height = record.frameControl.frameHeight = 8;
  chunk_list_put(window.list, 3, record);
  EXPECT_EQ(edit(window, 3,
                 [&](FormDialog& dialog) {
                   choose(dialog, "fit", 1);
                   finish(dialog, QDialogButtonBox::Ok);
                 }),
            Edited::Changed);
  EXPECT_EQ(window.list.record(3).frameControl.frameWidth, 40u);
  EXPECT_EQ(PictureGetPixel(picture_of(window.list.record(3)), 9, 7),
            PictureGetPixel(sample_picture(10, 8, 24), 9, 7));
}

/// Four by three pixels of each frame but the first, and a change is looked for in every field.
TEST_F(ImageEditorTest, KeysPlaceAFrameAndNothingElseChanges) {
  const SettingsGuard guard;
  settings::ImageEditorView = 1;
  DocumentWindow window = animated_document(3);
  for (const std::size_t i : {std::size_t{3}, std::size_t{4}}) {
    ChunkRecord record = window.list.record(i);
    record.data = sample_picture(4, 3, 24).handle();
    record.width = record.frameControl.frameWidth = 4;
    record.height = record.frameControl.frameHeight = 3;
    chunk_list_put(window.list, i, record);
  }
  const ChunkList before = window.list;
  const auto place = [](FormDialog& dialog) {
    auto* view = dialog.findChild<PictureView*>();
    for (const auto& [key, modifiers] : {std::pair{Qt::Key_Right, Qt::ShiftModifier},
                                         {Qt::Key_Right, Qt::NoModifier},
                                         {Qt::Key_Down, Qt::NoModifier},
                                         {Qt::Key_Up, Qt::ShiftModifier},
                                         {Qt::Key_Down, Qt::NoModifier}})
      QTest::keyClick(view, key, modifiers);
  };
  // Undo brings back a list that nobody else holds: a cancelled dialog leaves the very same entries.
  EXPECT_EQ(edit(window, 3, place), Edited::Cancelled);
  for (std::size_t i = 0; i < before.size(); ++i)
    EXPECT_EQ(window.list.entry(i).record, before.entry(i).record);
  EXPECT_EQ(edit(window, 3,
                 [&](FormDialog& dialog) {
                   place(dialog);
                   dialog.findChild<QToolButton*>(QStringLiteral("next_frame"))->click();
                   dialog.form().set_value("delayNum", std::int64_t{9});
                   finish(dialog, QDialogButtonBox::Ok);
                 }),
            Edited::Changed);
  for (std::size_t i = 0; i < before.size(); ++i) {
    ChunkRecord now = window.list.record(i);
    const ChunkRecord& was = before.record(i);
    EXPECT_EQ(now.frameControl.xOffset, i == 3 ? 11u : 0u) << i;
    EXPECT_EQ(now.frameControl.yOffset, i == 3 ? 1u : 0u)
        << i << ", held at the edge before it went down again";
    EXPECT_EQ(now.frameControl.delayNum, i == 4 ? 9u : was.frameControl.delayNum) << i;
    EXPECT_EQ(now.frameControl.dispose, was.frameControl.dispose) << i;
    EXPECT_EQ(now.data.data(), was.data.data()) << i;
  }
}

TEST_F(ImageEditorTest, ACanvasThatGrowsIsToldAndFilled) {
  const SettingsGuard guard;
  settings::ImageEditorView = 1;
  DocumentWindow window = animated_document(2);
  EXPECT_EQ(edit(window, 3,
                 [&](FormDialog& dialog) {
                   auto* note = dialog.findChild<QLabel*>(QStringLiteral("canvas"));
                   EXPECT_TRUE(note->isHidden());
                   QTest::keyClick(dialog.findChild<PictureView*>(), Qt::Key_Right, Qt::ShiftModifier);
                   EXPECT_TRUE(note->isVisible());
                   EXPECT_TRUE(note->text().contains(QStringLiteral("50 x 30 instead of 40 x 30")))
                       << note->text().toStdString();
                   finish(dialog, QDialogButtonBox::Ok);
                 }),
            Edited::Changed);
  EXPECT_EQ(picture_of(window.list.record(2)).width(), 50u) << "the first image fills the canvas";
  document_extent(window.list, window.document);
  EXPECT_EQ(document_size(window.list, window.document).width, 50u);
}

}  // namespace
}  // namespace vellum::testing
