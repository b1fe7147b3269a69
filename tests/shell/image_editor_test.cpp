// The image editor: all that is done in it happens at OK, and nothing at Cancel.
#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QMenu>
#include <QPushButton>
#include <QTimer>

#include "core/files/save_document.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "shell/editors/edit_image.h"
#include "shell/forms/form_dialog.h"
#include "shell/look/picture_image.h"
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

}  // namespace
}  // namespace vellum::testing
