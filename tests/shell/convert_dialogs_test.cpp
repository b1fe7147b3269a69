// The commands that make another document, or files, of an animation.
#include <QCheckBox>

#include "core/files/open_document.h"
#include "core/model/record_picture.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "operations/convert_colors.h"
#include "shell/dialogs/operation_dialog.h"
#include "shell/forms/form_dialog.h"
#include "shell_fixture.h"
#include "support/documents.h"

namespace vellum::testing {
namespace {

using Values = std::vector<std::pair<const char*, FieldValue>>;

class ConvertDialogTest : public DialogTest {
 protected:
  void SetUp() override {
    DialogTest::SetUp();
    DocumentWindow sample;
    Host host;
    ASSERT_TRUE(open_document(sample, source_folder() / "data/samples/welcome.png", host));
    frames_ = frame_entries(sample).size();
    clear_corners(sample);
    sample.document.caret = static_cast<std::int32_t>(frame_entries(sample).back());
    source_ = &add(std::move(sample));
  }

  /// Gives each frame an alpha channel, and nothing in the corner.
  static void clear_corners(DocumentWindow& window) {
    Host host;
    ASSERT_TRUE(convert_colors(window, {.colorType = 6}, host));
    for (const std::size_t entry : frame_entries(window)) {
      ChunkRecord record;
      chunk_list_get(window.list, entry, record);
      Picture picture = picture_of(record);
      PictureFillRect(picture, 0, 0, 9, 9, 0);
      record.data = picture.handle();
      chunk_list_put(window.list, entry, record);
    }
  }

  /// Runs a command; sets these fields in its dialog and accepts it.
  void run_with(int command, const Values& values) {
    in_dialog<FormDialog>(command, [&](FormDialog& dialog) { accept(dialog, values); });
  }
  static void accept(FormDialog& dialog, const Values& values) {
    for (const auto& [name, value] : values) dialog.form().set_value(name, value);
    settle();
    dialog.accept();
    EXPECT_FALSE(dialog.isVisible());
  }

  DocumentFrame* source_ = nullptr;
  std::size_t frames_ = 0;
};

TEST_F(ConvertDialogTest, SaysThatFramesAreReconstructedFirstWhereTheyMustBe) {
  source_ = &add(small_document(DocumentKind::APNG, 3, 6));
  const auto says = [&](int command) {
    bool found = false;
    in_dialog<FormDialog>(command, [&](FormDialog& dialog) {
      for (const auto* box : dialog.findChildren<QCheckBox*>())
        found |= box->text() == QStringLiteral("Reconstruct first") && box->isChecked() && !box->isEnabled();
    });
    return found;
  };
  const auto change_frames = [&](std::uint8_t dispose, std::uint8_t blend) {
    for (const std::size_t entry : frame_entries(source_->content())) {
      ChunkRecord record;
      chunk_list_get(source_->entries(), entry, record);
      record.frameControl.dispose = dispose;
      record.frameControl.blend = blend;
      chunk_list_put(source_->entries(), entry, record);
    }
  };
  change_frames(1, 0);
  EXPECT_FALSE(says(258)) << "each frame stands alone";
  change_frames(0, 1);
  EXPECT_TRUE(says(258));
  change_frames(2, 1);
  EXPECT_TRUE(says(264)) << "an MNG can't bring back what was there";
}

TEST_F(ConvertDialogTest, APaletteShowsItsTransparentEntryInThePreview) {
  bool seen = false;
  QTimer answer;
  QObject::connect(&answer, &QTimer::timeout, [&] {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    auto* own = qobject_cast<OperationDialog*>(dialog);
    if (!own) return dialog ? dialog->accept() : void();
    seen = true;
    EXPECT_EQ(PictureGetPixel(own->preview()->after(), 0, 0) >> 24, 0u);
    own->reject();
  });
  answer.start(1);
  main_.run(260);
  EXPECT_TRUE(seen);
}

TEST_F(ConvertDialogTest, ReconstructShowsWholeFramesAndTakesNoForAnAnswer) {
  in_dialog<OperationDialog>(316, [](OperationDialog& dialog) {
    const Picture& after = dialog.preview()->after();
    EXPECT_NEAR(168.0 / 288, after.height() * 1.0 / after.width(), 0.01) << "the frame at the caret is lower";
  });
  ASSERT_EQ(answers_.questions.size(), 1u);
  answers_.answers = {Answer::No};
  main_.run(316);
  EXPECT_EQ(answers_.questions.size(), 2u);
  EXPECT_EQ(documents(), 1u);
}

TEST_F(ConvertDialogTest, ExtractAsksAboutFilesThatAreThere) {
  const auto name = [&](int number) {
    return folder_ / QStringLiteral("part_%1.bmp").arg(number, 5, 10, QLatin1Char('0')).toStdString();
  };
  const Values values = {{"folder", folder_.path().string()},
                         {"stem", std::string("part")},
                         {"format", std::int64_t{1}},
                         {"composed", std::int64_t{1}}};
  in_dialog<FormDialog>(
      312, [](FormDialog& dialog) { dialog.form().set_value("folder", std::string("/home/anna/Pictures")); });
  run_with(312, values);
  std::uint32_t width = 0;
  for (std::size_t i = 1; i <= frames_; ++i)
    EXPECT_TRUE(GraphicFileInfo(name(static_cast<int>(i)).string(), &width, nullptr, nullptr, nullptr)) << i;
  EXPECT_EQ(width, 288u) << "composed canvases";
  const auto before = std::filesystem::last_write_time(name(1));
  int asked = 0;
  main_.services().host.choose = [&](Choice& choice) {
    ++asked;
    choice.chosen = 1;
    return true;
  };
  run_with(312, values);
  EXPECT_EQ(asked, 1);
  EXPECT_TRUE(std::filesystem::exists(folder_ / "part_00001 (2).bmp"));
  EXPECT_EQ(std::filesystem::last_write_time(name(1)), before);
  EXPECT_EQ(documents(), 1u);
}

TEST_F(ConvertDialogTest, ExportImageWritesTheRowUnderThePointer) {
  const auto entries = frame_entries(source_->content());
  source_->document().RightClickChunk = static_cast<std::int32_t>(entries[1]);
  answers_.file = folder_ / "one.png";
  main_.run(124);
  std::uint32_t width = 0, height = 0;
  ASSERT_TRUE(GraphicFileInfo((folder_ / "one.png").string(), &width, &height, nullptr, nullptr));
  const Picture picture = picture_of(source_->entries().record(entries[1]));
  EXPECT_EQ(std::pair(width, height), std::pair(picture.width(), picture.height()));
  source_->document().RightClickChunk = 0;
  main_.run(124);
  ASSERT_EQ(answers_.messages.size(), 1u) << "a header is no image";
}

}  // namespace
}  // namespace vellum::testing
