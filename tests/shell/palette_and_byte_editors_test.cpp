#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>
#include <QTimer>

#include "base/file.h"
#include "core/edit/palette_edit.h"
#include "core/edit/transparency_edit.h"
#include "image/graphic_file.h"
#include "operations/settings.h"
#include "shell/editors/edit_palette.h"
#include "shell/editors/edit_transparency.h"
#include "shell/editors/edit_unknown.h"
#include "shell/editors/editor_pages.h"
#include "shell/editors/select_palette.h"
#include "shell/widgets/palette_grid.h"
#include "shell/widgets/picture_view.h"
#include "shell_fixture.h"
#include "support/documents.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

ChunkRecord header(std::uint8_t depth, std::uint8_t type) {
  ChunkRecord record;
  record.tag = tag::IHDR;
  record.size = 13;
  record.width = record.height = 8;
  record.bitDepth = depth;
  record.colorType = type;
  return record;
}

/// IHDR, PLTE of five colors (the last one unused), tRNS, one image, a pHYs, IEND.
DocumentWindow paletted_document() {
  Palette palette{};
  const std::uint8_t colors[] = {255, 0, 0, 0, 255, 0, 0, 0, 255, 128, 128, 128, 9, 9, 9};
  std::ranges::copy(colors, palette.begin());
  Picture picture = PictureCreate(8, 8, &palette, 8);
  for (std::uint32_t x = 0; x < 8; ++x)
    for (std::uint32_t y = 0; y < 8; ++y) PicturePutPixel(picture, x, y, x / 2);
  ChunkRecord image;
  image.tag = tag::IDAT;
  image.data = picture.handle();
  DocumentWindow window;
  window.document.kind = DocumentKind::PING;
  for (const ChunkRecord& record :
       {header(8, 3), record_of(tag::PLTE, std::string(reinterpret_cast<const char*>(colors), sizeof colors)),
        record_of(tag::tRNS, std::string("\xFF\x80", 2)), image,
        record_of(tag::pHYs, be32(2835) + be32(2835) + '\1'), record_of(tag::IEND, "")})
    chunk_list_append(window.list, window.document, record);
  return window;
}

std::string payload_of(const DocumentWindow& window, std::size_t index) {
  const auto bytes = raw_payload(window.list.record(index));
  return {bytes.begin(), bytes.end()};
}

class PaletteAndByteEditors : public ::testing::Test {
 protected:
  PaletteAndByteEditors() : services_(answers_.services()) {}

  /// Does something in the next dialog that opens, and then presses one of its buttons.
  static void in_dialog(std::function<void(QDialog&)> work,
                        QDialogButtonBox::StandardButton end = QDialogButtonBox::Ok) {
    QTimer::singleShot(0, [work = std::move(work), end] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(dialog);
      if (work) work(*dialog);
      dialog->findChild<QDialogButtonBox*>()->button(end)->click();
      // A dialog that refuses to close would hang the test.
      if (dialog->isVisible()) dialog->reject();
    });
  }
  static void press(QDialog& dialog, const char* text) {
    for (QPushButton* button : dialog.findChildren<QPushButton*>())
      if (button->text().remove(u'&') == QLatin1String(text)) return button->click();
    ADD_FAILURE() << "no button " << text;
  }

  Answers answers_;
  Services services_;
  ScratchFolder folder_;
  SettingsGuard guard_;
};

TEST_F(PaletteAndByteEditors, ThePaletteEditorReversesSortsAndRefuses) {
  DocumentWindow window = paletted_document();
  in_dialog([](QDialog& d) { EXPECT_EQ(d.windowTitle(), "Edit PLTE"); });
  EXPECT_NE(edit_palette(nullptr, window, 1, services_), Edited::Changed) << "nothing was changed";
  in_dialog([](QDialog& d) { press(d, "Reverse"); }, QDialogButtonBox::Cancel);
  EXPECT_NE(edit_palette(nullptr, window, 1, services_), Edited::Changed);
  in_dialog([](QDialog& d) { press(d, "Reverse"); });
  EXPECT_EQ(edit_palette(nullptr, window, 1, services_), Edited::Changed);
  EXPECT_EQ(PictureGetPixel(picture_of(window.list.record(3)), 0, 0), 4u);
  EXPECT_EQ(payload_of(window, 2), std::string("\xFF\xFF\xFF\x80", 4));
  in_dialog([this](QDialog& d) {
    auto* grid = d.findChild<PaletteGrid*>();
    grid->select({1});
    press(d, "Delete");
    EXPECT_EQ(answers_.messages.back().text, "Color 1 is used by an image and can't be deleted.");
    EXPECT_EQ(grid->cells().size(), 5u);
    press(d, "Unused");
    EXPECT_TRUE(grid->cells()[0].marked);
    EXPECT_FALSE(grid->cells()[1].marked);
    press(d, "Remove unused");
    EXPECT_EQ(grid->cells().size(), 4u);
  });
  EXPECT_EQ(edit_palette(nullptr, window, 1, services_), Edited::Changed);
  EXPECT_EQ(payload_of(window, 1).size(), 12u);
  EXPECT_NE(edit_palette(nullptr, window, 0, services_), Edited::Changed) << "not a palette";
  EXPECT_EQ(answers_.messages.back().id, StringId::ErrorAccessingChunk);
}

TEST_F(PaletteAndByteEditors, ThePaletteEditorLoadsSavesAndDrags) {
  DocumentWindow window = paletted_document();
  const auto file = folder_ / "colors.gpl";
  answers_.file = file;
  in_dialog([](QDialog& d) {
    press(d, "Save...");
    emit d.findChild<PaletteGrid*>()->swap_wanted(0, 1);
  });
  EXPECT_EQ(edit_palette(nullptr, window, 1, services_), Edited::Changed);
  EXPECT_EQ(payload_of(window, 1).substr(0, 6), std::string("\0\xFF\0\xFF\0\0", 6));
  EXPECT_EQ(PictureGetPixel(picture_of(window.list.record(3)), 0, 0), 1u);
  in_dialog([](QDialog& d) { press(d, "Load..."); });
  EXPECT_EQ(edit_palette(nullptr, window, 1, services_), Edited::Changed);
  EXPECT_EQ(payload_of(window, 1).substr(0, 6), std::string("\xFF\0\0\0\xFF\0", 6));
  SafeFile bad(folder_ / "bad.gpl");
  const std::uint8_t text[] = "nothing";
  bad.write(text);
  bad.commit();
  answers_.file = folder_ / "bad.gpl";
  in_dialog([](QDialog& d) { press(d, "Load..."); });
  EXPECT_NE(edit_palette(nullptr, window, 1, services_), Edited::Changed);
  EXPECT_EQ(answers_.messages.back().text, "This file holds no palette.");
}

TEST_F(PaletteAndByteEditors, SelectPaletteGivesWhatItShows) {
  Picture picture = sample_picture(8, 8, 24);
  const auto select = [&](std::function<void(QDialog&)> work) {
    in_dialog(std::move(work));
    return select_palette(nullptr, {{picture}, picture, 16}, services_);
  };
  const auto choose = [](QDialog& d, int row) { d.findChild<QListWidget*>()->setCurrentRow(row); };
  const auto opened = select([](QDialog& d) {
    EXPECT_EQ(d.findChild<QListWidget*>()->currentItem()->text(), "216 colors");
    EXPECT_EQ(d.findChild<QListWidget*>()->count(), 11);
  });
  ASSERT_TRUE(opened);
  EXPECT_EQ(opened->count, 216u);
  EXPECT_EQ(select([&](QDialog& d) { choose(d, 0); })->count, 2u);
  const auto computed = select([&](QDialog& d) {
    choose(d, 8);
    d.findChild<QSpinBox*>()->setValue(5);
  });
  ASSERT_TRUE(computed);
  EXPECT_EQ(computed->count, 5u);
  EXPECT_EQ(settings::WidePaletteSize, 5);
  EXPECT_FALSE(select([&](QDialog& d) { choose(d, 9); })) << "no file yet: there is nothing to accept";
  const std::string file = (folder_ / "four.png").string();
  Palette palette = {1, 2, 3, 4, 5, 6};
  ASSERT_TRUE(GraphicFileWrite(file, PictureCreate(4, 4, &palette, 1)));
  answers_.file = file;
  const auto from_picture = select([&](QDialog& d) {
    choose(d, 10);
    press(d, "Choose file...");
  });
  ASSERT_TRUE(from_picture);
  EXPECT_EQ(from_picture->count, 2u);
  EXPECT_EQ(from_picture->palette[4], 5);
}

TEST_F(PaletteAndByteEditors, TheTransparencyEditorSetsAlphas) {
  DocumentWindow window = paletted_document();
  in_dialog([](QDialog& d) {
    auto* grid = d.findChild<PaletteGrid*>();
    EXPECT_EQ(grid->cells()[1].color.alpha(), 0x80);
    grid->select({2, 3});
    d.findChild<QSlider*>()->setValue(40);
    auto* view = d.findChild<PictureView*>();
    EXPECT_EQ(view->pixel_color({4, 0}).alpha(), 40);
    grid->set_current(0);
    press(d, "Make this color transparent");
  });
  EXPECT_EQ(edit_transparency(nullptr, window, 2, services_), Edited::Changed);
  EXPECT_EQ(payload_of(window, 2), std::string("\0\x80\x28\x28", 4));
  in_dialog([](QDialog& d) { press(d, "All opaque"); });
  EXPECT_EQ(edit_transparency(nullptr, window, 2, services_), Edited::Changed);
  EXPECT_EQ(payload_of(window, 2), "\xFF") << "one entry stays";
}

TEST_F(PaletteAndByteEditors, TheTransparentColorIsPickedAtTheHeadersDepth) {
  for (const auto& [depth, type, expected] : {std::tuple{8, 2, std::string("\0\x0A\0\x14\0\x1E", 6)},
                                              {16, 2, std::string("\x0A\x0A\x14\x14\x1E\x1E", 6)}}) {
    DocumentWindow window;
    window.document.kind = DocumentKind::PING;
    ChunkRecord image;
    image.tag = tag::IDAT;
    image.data = PictureCreateFilled(8, 8, make_colour(10, 20, 30)).handle();
    for (const ChunkRecord& record :
         {header(static_cast<std::uint8_t>(depth), static_cast<std::uint8_t>(type)),
          record_of(tag::tRNS, std::string(6, '\0')), image})
      chunk_list_append(window.list, window.document, record);
    in_dialog([](QDialog& d) {
      auto* view = d.findChild<PictureView*>();
      emit view->picked({3, 3});
      EXPECT_EQ(view->pixel_color({3, 3}).alpha(), 0) << "the preview shows it";
    });
    EXPECT_EQ(edit_transparency(nullptr, window, 1, services_), Edited::Changed);
    EXPECT_EQ(payload_of(window, 1), expected) << depth;
  }
}

TEST_F(PaletteAndByteEditors, TransparencyIsRefusedWhereItCanNotBe) {
  DocumentWindow window = paletted_document();
  chunk_list_put(window.list, 0, header(8, 6));
  EXPECT_NE(edit_transparency(nullptr, window, 2, services_), Edited::Changed);
  EXPECT_EQ(answers_.messages.back().text, "Images with an alpha channel have no transparency chunk.");
  chunk_list_put(window.list, 0, header(8, 3));
  window.list.remove(1);
  EXPECT_NE(edit_transparency(nullptr, window, 1, services_), Edited::Changed);
  EXPECT_EQ(answers_.messages.back().text, "There is no palette in this document.");
}

TEST_F(PaletteAndByteEditors, UnknownChunksAreReadRenamedAndFilled) {
  DocumentWindow window = paletted_document();
  in_dialog([](QDialog& d) {
    EXPECT_TRUE(d.findChild<QPlainTextEdit*>()->toPlainText().startsWith("Horizontal: 2835 per meter"));
  });
  EXPECT_NE(edit_unknown(nullptr, window, 4, services_), Edited::Changed);
  const auto file = folder_ / "bytes";
  answers_.file = file;
  in_dialog([this](QDialog& d) {
    auto* name = d.findChild<QLineEdit*>("tag");
    for (const char* bad : {"PLTE", "abcd", "ab1D", "abC"}) {
      name->setText(bad);
      d.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
      EXPECT_TRUE(d.isVisible()) << bad;
      EXPECT_EQ(answers_.messages.back().text,
                "A chunk name has four letters, and the third must be uppercase.");
    }
    name->setText("prVt");
    HexView* bytes = &d.findChild<HexPanel*>("content")->view();
    press(d, "Save...");
    press(d, "Append...");
    EXPECT_EQ(bytes->bytes().size(), 18u);
    bytes->go_to(0);
    QTest::keyClicks(bytes, "7f");
  });
  EXPECT_EQ(edit_unknown(nullptr, window, 4, services_), Edited::Changed);
  EXPECT_EQ(window.list.record(4).tag, make_tag("prVt"));
  EXPECT_EQ(window.list.record(4).size, 18);
  EXPECT_EQ(payload_of(window, 4).substr(0, 4), std::string("\x7F\0\x0B\x13", 4));
  EXPECT_EQ(window.list.record(4).description, "UNKNOWN? prVt");
}

TEST_F(PaletteAndByteEditors, RawPayloadsAreShownAndExportedAsTheyAreWritten) {
  DocumentWindow window = paletted_document();
  RawPage page(tag::PLTE, [&] { return std::optional(std::vector<std::uint8_t>{1, 2, 3}); });
  page.show();
  EXPECT_EQ(page.view().bytes().size(), 3u);
  EXPECT_EQ(page.findChild<QLabel*>()->text(), "3 bytes, CRC 0d8764d5");
  const std::unique_ptr<QWidget> image(make_raw_page(nullptr, window, 3));
  image->show();
  EXPECT_EQ(image->findChild<QLabel*>()->text(), "The image data is compressed when the file is saved.");
  answers_.file = folder_ / "header";
  ASSERT_TRUE(export_raw(window.list.record(0), DocumentKind::PING, services_));
  std::string reason;
  const auto file = read_file(folder_ / "header", reason, 100);
  ASSERT_TRUE(file);
  EXPECT_EQ(hex_text(*file), "00 00 00 08 00 00 00 08 08 03 00 00 00");
  EXPECT_FALSE(export_raw(window.list.record(3), DocumentKind::PING, services_))
      << "an image has no bytes yet";
}

}  // namespace
}  // namespace vellum::testing
