// Editing through the main window: what commands, clicks and drags do to a document.
#include "shell/window/editing.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QDragEnterEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>
#include <QUrl>
#include <fstream>

#include "configuration/shell_settings.h"
#include "core/chunks/chunk_fields.h"
#include "core/chunks/new_chunk.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/new_document.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/chunk_layout.h"
#include "core/settings.h"
#include "image/graphic_file.h"
#include "operations/frames.h"
#include "shell/forms/form_dialog.h"
#include "shell/look/picture_image.h"
#include "shell/look/text.h"
#include "shell/services/clipboard.h"
#include "shell/services/file_dialogs.h"
#include "shell/services/file_preview.h"
#include "shell/window/context_menu.h"
#include "shell/window/row_drag.h"
#include "shell_fixture.h"
#include "support/documents.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

using Rows = std::set<std::size_t>;
using Button = QDialogButtonBox::StandardButton;

class EditingTest : public WindowTest {
 protected:
  EditingTest() {
    settings::AddInstructionsToNew = 0;
    QGuiApplication::clipboard()->clear();
  }

  DocumentFrame& add_new(DocumentKind kind, std::uint8_t color_type = 2) {
    NewDocument parameters = default_new_document(kind);
    parameters.colorType = color_type;
    DocumentWindow window;
    EXPECT_TRUE(new_document(window, parameters));
    return add(std::move(window));
  }
  /// A new document with `count` images.
  DocumentFrame& add_with_images(DocumentKind kind, std::size_t count) {
    DocumentFrame& frame = add_new(kind);
    for (std::size_t i = 0; i < count; ++i) answers_.pictures.push_back(picture_file());
    main_.run(kind == DocumentKind::PING ? 1020 : kind == DocumentKind::MING ? 1055 : 1060);
    answers_.pictures.clear();
    frame.document().dirty = false;
    settle();
    return frame;
  }
  std::filesystem::path picture_file() {
    const auto path = folder_ / ("picture" + std::to_string(++files_) + ".png");
    EXPECT_TRUE(GraphicFileWrite(path.string(), sample_picture(12, 9, 24)));
    return path;
  }

  /// Does `work` in the next dialog that opens, and closes it if it is still there then.
  template <class Work>
  void in_dialog(Work work) {
    QTimer::singleShot(0, qApp, [this, work] {
      auto* dialog = qobject_cast<FormDialog*>(QApplication::activeModalWidget());
      title_ = dialog ? dialog->windowTitle().toStdString() : "";
      if (!dialog) return;
      work(*dialog);
      if (QApplication::activeModalWidget() == dialog) dialog->reject();
    });
  }
  void press_in_dialog(Button button) {
    title_.clear();
    QTimer::singleShot(0, qApp, [this, button] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      if (!dialog) return;
      title_ = dialog->windowTitle().toStdString();
      auto* buttons = dialog->findChild<QDialogButtonBox*>();
      if (buttons) QTest::mouseClick(buttons->button(button), Qt::LeftButton);
      if (QApplication::activeModalWidget() == dialog) dialog->reject();
    });
  }
  static void type(FormDialog& dialog, const char* field, const QString& text) {
    QWidget* input = dialog.form().input(field);
    if (auto* lines = qobject_cast<QPlainTextEdit*>(input)) return lines->setPlainText(text);
    auto* line = input->findChild<QLineEdit*>();
    line->setFocus();
    QTest::keyClick(line, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(line, text);
  }
  static std::string tags(DocumentFrame& frame) { return tags_of(frame.entries()); }
  static QPoint center(DocumentFrame& frame, std::size_t row) { return frame.list().row_rect(row).center(); }

  SettingsGuard guard_;
  std::string title_;  ///< of the dialog that `in_dialog` met
  int files_ = 0;
};

// -------------------------------------------------------------------------------------------------------
// inserting

struct InsertCase {
  DocumentKind kind;
  std::uint8_t colorType;
  int number;
  const char* title;  ///< of the editor; empty: none opens
  const char* tags;   ///< afterwards
};

const InsertCase kInserts[] = {
    {DocumentKind::PING, 2, 1022, "Edit bKGD", "IHDR bKGD IEND"},
    {DocumentKind::PING, 2, 1025, "Edit zTXt", "IHDR zTXt IEND"},
    {DocumentKind::PING, 2, 1027, "Edit gAMA", "IHDR gAMA IEND"},
    {DocumentKind::PING, 2, 1020, "", "IHDR IDAT IEND"},
    {DocumentKind::PING, 2, 1021, "Edit PLTE", "IHDR PLTE IEND"},
    {DocumentKind::PING, 2, 1024, "Edit tEXt", "IHDR tEXt IEND"},
    {DocumentKind::PING, 2, 1023, "Edit tIME", "IHDR tIME IEND"},
    {DocumentKind::PING, 2, 1026, "Edit tRNS", "IHDR tRNS IEND"},
    {DocumentKind::APNG, 2, 1026, "Edit tRNS", "IHDR acTL tRNS IEND"},
    {DocumentKind::MING, 2, 1050, "Edit BACK", "MHDR BACK LOOP ENDL MEND"},
    {DocumentKind::MING, 2, 1055, "", "MHDR LOOP PNGI ENDL MEND"},
    {DocumentKind::MING, 2, 1056, "Edit TERM", "MHDR TERM LOOP ENDL MEND"},
    {DocumentKind::WEBP, 2, 1060, "", "WEBH WEBI"},
};

TEST_F(EditingTest, EachInsertCommandInsertsAndOpensTheEditorAndUndoTakesItBack) {
  answers_.pictures = {picture_file()};
  for (const InsertCase& c : kInserts) {
    SCOPED_TRACE(c.number);
    DocumentFrame& frame = add_new(c.kind, c.colorType);
    const std::string before = tags(frame);
    const std::int32_t caret = frame.document().caret;
    press_in_dialog(QDialogButtonBox::Ok);
    main_.run(c.number);
    settle();
    EXPECT_EQ(title_, c.title);
    EXPECT_EQ(tags(frame), c.tags);
    EXPECT_TRUE(frame.document().dirty);
    const ChunkTag at_caret = frame.entries().record(static_cast<std::size_t>(frame.document().caret)).tag;
    EXPECT_EQ(before.find(tag_letters(at_caret)), std::string::npos) << "the caret is on the new entry";
    EXPECT_TRUE(main_.commands().action(204)->isEnabled());
    main_.run(204);
    EXPECT_EQ(tags(frame), before);
    EXPECT_FALSE(frame.document().dirty);
    EXPECT_EQ(frame.document().caret, caret);
    EXPECT_FALSE(main_.commands().action(204)->isEnabled());
    frame.close_without_question();
  }
  EXPECT_TRUE(answers_.messages.empty()) << answers_.messages.front().text;
}

TEST_F(EditingTest, CancelOfAnInsertTakesTheEntryAwayAndOkWithoutAChangeKeepsIt) {
  DocumentFrame& frame = add_new(DocumentKind::PING);
  press_in_dialog(QDialogButtonBox::Cancel);
  main_.run(1024);
  EXPECT_EQ(title_, "Edit tEXt");
  EXPECT_EQ(tags(frame), "IHDR IEND");
  EXPECT_FALSE(frame.document().dirty);
  EXPECT_FALSE(main_.commands().action(204)->isEnabled()) << "nothing changed";
  in_dialog([](FormDialog& dialog) {
    type(dialog, "text", QStringLiteral("Hello"));
    QTest::mouseClick(dialog.buttons().button(QDialogButtonBox::Ok), Qt::LeftButton);
  });
  main_.run(1024);
  EXPECT_EQ(tags(frame), "IHDR tEXt IEND");
  EXPECT_EQ(text_of(frame.entries().record(1)), "Hello");
}

TEST_F(EditingTest, SeveralPicturesBecomeFramesAndADamagedOneIsAskedAbout) {
  const auto bad = folder_ / "bad.png";
  std::ofstream(bad).put('x');
  for (const Answer answer : {Answer::Yes, Answer::No}) {
    DocumentFrame& frame = add_new(DocumentKind::WEBP);
    answers_.pictures = {picture_file(), bad, picture_file()};
    answers_.answers = {answer};
    answers_.questions.clear();
    main_.run(1060);
    EXPECT_EQ(answers_.severalPictures, true);
    ASSERT_EQ(answers_.questions.size(), 1u);
    EXPECT_EQ(answers_.questions[0].id, StringId::CorruptedGraphicQuestion);
    EXPECT_EQ(tags(frame), answer == Answer::Yes ? "WEBH WEBI WEBI" : "WEBH WEBI");
    EXPECT_EQ(frame.content().undoLevels.size(), 1u);
  }
}

// -------------------------------------------------------------------------------------------------------
// new documents

TEST_F(EditingTest, NewAsksForTheKindsParametersAndKeepsTheSize) {
  const std::pair<int, const char*> cases[] = {
      {101, "IHDR IEND"}, {102, "IHDR acTL IEND"}, {114, "MHDR LOOP ENDL MEND"}, {105, "WEBH"}};
  for (const auto& [number, made] : cases) {
    press_in_dialog(QDialogButtonBox::Cancel);
    main_.run(number);
    EXPECT_EQ(documents(), 0u) << number;
    in_dialog([](FormDialog& dialog) {
      type(dialog, "width", QStringLiteral("77"));
      type(dialog, "height", QStringLiteral("55"));
      QTest::mouseClick(dialog.buttons().button(QDialogButtonBox::Ok), Qt::LeftButton);
    });
    main_.run(number);
    settle();
    ASSERT_EQ(documents(), 1u) << number;
    DocumentFrame& frame = *main_.area().active();
    EXPECT_EQ(tags(frame), made);
    const Extent size = document_size(frame.entries(), frame.document());
    EXPECT_EQ(size.width, 77u);
    EXPECT_EQ(size.height, 55u);
    EXPECT_FALSE(frame.document().HasFileName);
    EXPECT_FALSE(frame.document().dirty);
    EXPECT_EQ(settings::DefaultWidth, 77);
    EXPECT_EQ(settings::DefaultDepth, 55);
    frame.close();
    settle();
  }
}

// -------------------------------------------------------------------------------------------------------
// delete, undo, move

TEST_F(EditingTest, UndoBringsListSelectionCaretAndTopBack) {
  DocumentFrame& frame = add(long_document(400));
  frame.entries().topIndex = 120;
  frame.list().show_top_row();
  frame.document().caret = 125;
  for (const std::size_t row : {123u, 125u, 130u}) frame.entries().select(row, true);
  const std::string before = tags(frame);
  main_.run(61);
  settle();
  EXPECT_EQ(frame.entries().size(), 397u);
  EXPECT_TRUE(main_.isWindowModified());
  frame.entries().select_all(false);
  frame.document().caret = 3;
  main_.run(204);
  settle();
  EXPECT_EQ(tags(frame), before);
  EXPECT_EQ(selected_rows(frame.entries()), (Rows{123, 125, 130}));
  EXPECT_EQ(frame.document().caret, 125);
  EXPECT_EQ(frame.entries().topIndex, 120u);
  EXPECT_EQ(frame.list().row_rect(120).top(), 0);
  EXPECT_FALSE(main_.isWindowModified());
  EXPECT_FALSE(main_.commands().action(204)->isEnabled());
  EXPECT_EQ(main_.commands().action(208)->text(), QStringLiteral("&Redo delete 3 chunks\tCtrl+Y"));
  frame.document().caret = 5;
  press_in_dialog(QDialogButtonBox::Cancel);
  main_.run(205);
  EXPECT_FALSE(main_.commands().action(204)->isEnabled()) << "who only looks leaves no level";
  main_.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&main_));
  QTest::keyClick(&frame.list(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(frame.entries().size(), 397u);
  EXPECT_FALSE(main_.commands().action(208)->isEnabled());
}

TEST_F(EditingTest, NotesStandAboveTheListUntilTheyAreDismissed) {
  DocumentFrame& frame = add_with_images(DocumentKind::MING, 1);
  auto* strip = frame.findChild<NoteStrip*>();
  ASSERT_NE(strip, nullptr);
  EXPECT_FALSE(strip->isVisible());
  QApplication::clipboard()->setText(QStringLiteral("\u0416"));
  frame.document().caret = 1;
  main_.run(203);
  EXPECT_EQ(chunk_count_tag(frame.entries(), tag::iTXt), 1u);
  EXPECT_EQ(selected_rows(frame.entries()), Rows{static_cast<std::size_t>(frame.document().caret)});
  ASSERT_TRUE(strip->isVisible());
  EXPECT_NE(strip->findChild<QLabel*>()->text().indexOf(QStringLiteral("iTXt")), -1);
  { const Progress progress(main_.services().host, "Working"); }
  EXPECT_TRUE(strip->isVisible()) << "the end of a progress leaves it";
  QTest::mouseClick(strip->findChild<QToolButton*>(), Qt::LeftButton);
  EXPECT_FALSE(strip->isVisible());
  EXPECT_TRUE(frame.document().notes.empty());
}

TEST_F(EditingTest, OtherChunksAreInsertedFromTheTableAndByName) {
  DocumentFrame& frame = add_new(DocumentKind::PING);
  std::vector<std::string> titles;
  const auto insert = [&](std::int64_t chunk, const char* name) {
    in_dialog([&, chunk, name](FormDialog& dialog) {
      dialog.form().set_value("chunk", chunk);
      dialog.form().set_value("name", std::string(name));
      press_in_dialog(QDialogButtonBox::Ok);
      QTest::mouseClick(dialog.buttons().button(QDialogButtonBox::Ok), Qt::LeftButton);
    });
    main_.run(1070);
    titles.push_back(title_);
  };
  const auto others = insertable_tags(frame.content());
  EXPECT_GT(others.size(), 20u);
  for (const ChunkTag tag : {tag::pHYs, tag::cICP}) insert(tag, "");
  EXPECT_EQ(tags(frame), "IHDR pHYs cICP IEND");
  EXPECT_EQ(titles, (std::vector<std::string>{"Edit pHYs", "Edit cICP"}));
}

TEST_F(EditingTest, SelectingWithShiftTakesALevelAndWithoutNone) {
  DocumentFrame& frame = add(animated_document(3));
  main_.run(50);
  EXPECT_FALSE(frame.document().undoAvailable);
  answers_.shift = true;
  main_.run(51);
  EXPECT_EQ(frame.content().undoLevels.size(), 1u);
  main_.run(204);
  EXPECT_EQ(frame.entries().selected_count(), 6u);
}

TEST_F(EditingTest, KeysMoveRows) {
  DocumentFrame& frame = add_with_images(DocumentKind::MING, 2);
  frame.document().caret = 2;
  const auto moved = frame.entries().entry(2).record;
  main_.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&main_));
  QTest::keyClick(&frame.list(), Qt::Key_Down, Qt::AltModifier);
  EXPECT_EQ(frame.entries().entry(3).record, moved);
  EXPECT_EQ(frame.document().caret, 3);
  QTest::keyClick(&frame.list(), Qt::Key_Up, Qt::AltModifier);
  EXPECT_EQ(frame.entries().entry(2).record, moved);
  EXPECT_TRUE(frame.document().dirty);
}

// -------------------------------------------------------------------------------------------------------
// opening editors

TEST_F(EditingTest, DoubleClickAndEnterOpenTheEditorOfTheirRow) {
  DocumentFrame& frame = add_with_images(DocumentKind::MING, 2);
  const std::pair<std::size_t, const char*> cases[] = {
      {0, "Edit MHDR"}, {1, "Edit LOOP"}, {2, "Edit PNGI"}, {4, "Edit ENDL"}, {5, "Edit MEND"}};
  for (const auto& [row, title] : cases) {
    frame.list().show_row(row);
    settle();
    press_in_dialog(row == 5 ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel);
    QTest::mouseDClick(frame.list().viewport(), Qt::LeftButton, {}, center(frame, row));
    EXPECT_EQ(title_, title);
    EXPECT_EQ(frame.document().caret, static_cast<int>(row));
    press_in_dialog(row == 5 ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel);
    QTest::keyClick(&frame.list(), Qt::Key_Return);
    EXPECT_EQ(title_, title);
  }
  EXPECT_FALSE(frame.document().dirty);
}

TEST_F(EditingTest, AChangeInTheEditorClosesTheEdit) {
  DocumentFrame& frame = add_with_images(DocumentKind::MING, 2);
  ChunkRecord header;
  ASSERT_TRUE(chunk_list_get(frame.entries(), 0, header));
  header.playTime = 77;
  chunk_list_put(frame.entries(), 0, header);
  const std::size_t levels = frame.content().undoLevels.size();
  frame.document().caret = 1;
  in_dialog([](FormDialog& dialog) {
    type(dialog, "level", QStringLiteral("9"));
    QTest::mouseClick(dialog.buttons().button(QDialogButtonBox::Ok), Qt::LeftButton);
  });
  main_.run(205);
  EXPECT_EQ(read_chunk_fields(frame.content(), 1).number("level"), 9);
  EXPECT_EQ(frame.entries().record(0).playTime, 0u) << "the header's counts are unknown now";
  EXPECT_TRUE(frame.document().dirty);
  EXPECT_EQ(frame.content().undoLevels.size(), levels + 1);
  main_.run(204);
  EXPECT_NE(read_chunk_fields(frame.content(), 1).number("level"), 9);
  EXPECT_EQ(frame.entries().record(0).playTime, 77u);
}

// -------------------------------------------------------------------------------------------------------
// the clipboard

TEST_F(EditingTest, CopyInOneWindowPastesInAnother) {
  DocumentFrame& from = add_with_images(DocumentKind::WEBP, 3);
  for (const std::size_t row : {1u, 3u}) from.entries().select(row, true);
  main_.run(202);
  settle();
  from.close_without_question();
  settle();
  MainWindow other;
  other.services() = answers_.services();
  DocumentFrame* to = other.add_document(animated_document(1));
  ASSERT_NE(to, nullptr);
  to->document().caret = 2;
  other.run(203);
  EXPECT_EQ(tags(*to), "IHDR acTL IDAT IDAT IDAT IEND");
  EXPECT_EQ(to->document().caret, 4);
  EXPECT_TRUE(to->document().dirty);
  EXPECT_TRUE(answers_.messages.empty()) << answers_.messages.front().text;
}

TEST_F(EditingTest, CutTakesAwayWhatItCopiesAndTellsWhatItCannot) {
  DocumentFrame& frame = add(long_document(6));
  frame.entries().select(2, true);
  main_.run(201);
  EXPECT_EQ(frame.entries().size(), 5u);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "A text") << "one text chunk is text for other programs";
  frame.entries().select_all(false);
  frame.entries().select(0, true);
  main_.run(201);
  ASSERT_EQ(answers_.messages.size(), 2u);
  EXPECT_EQ(answers_.messages[0].id, StringId::HeaderNotCopied);
  EXPECT_EQ(answers_.messages[1].id, StringId::NotCut);
  EXPECT_EQ(frame.entries().size(), 5u);
}

TEST_F(EditingTest, OneImageIsAPictureForOtherProgramsToo) {
  DocumentFrame& frame = add(still_document(20, 10));
  frame.entries().select(1, true);
  main_.run(202);
  const QImage image = QGuiApplication::clipboard()->image();
  ASSERT_EQ(image.size(), QSize(20, 10));
  const Picture picture = picture_of(frame.entries().record(1));
  for (int x = 0; x < 20; ++x) {
    const Colour pixel = PictureGetPixel(picture, x, 3);
    EXPECT_EQ(image.pixel(x, 3), qRgb(red_of(pixel), green_of(pixel), blue_of(pixel))) << x;
  }
}

TEST_F(EditingTest, PicturesAndTextOfOtherProgramsBecomeChunks) {
  QImage image(14, 11, QImage::Format_RGB32);
  image.fill(qRgb(200, 100, 50));
  struct Case {
    DocumentKind kind;
    const char* picture;  ///< tags after pasting a picture
    const char* text;     ///< and then a text
  };
  const Case cases[] = {{DocumentKind::PING, "IHDR IDAT IEND", "IHDR IDAT tEXt IEND"},
                        {DocumentKind::APNG, "IHDR acTL IDAT IEND", "IHDR acTL IDAT tEXt IEND"},
                        {DocumentKind::MING, "MHDR LOOP PNGI ENDL MEND", "MHDR LOOP PNGI tEXt ENDL MEND"},
                        {DocumentKind::WEBP, "WEBH WEBI", "WEBH WEBI"}};
  for (const Case& c : cases) {
    DocumentFrame& frame = add_new(c.kind);
    QGuiApplication::clipboard()->setImage(image);
    settle();
    main_.run(203);
    EXPECT_EQ(tags(frame), c.picture);
    QGuiApplication::clipboard()->setText(QStringLiteral("Gr\u00fc\u00dfe"));
    settle();
    main_.run(203);
    EXPECT_EQ(tags(frame), c.text);
  }
  ASSERT_EQ(answers_.messages.size(), 1u);
  EXPECT_EQ(answers_.messages[0].id, StringId::PasteRefused) << "a WebP holds no text";
}

TEST(PictureImage, ImagesBecomePicturesOfTheirDepthAndBack) {
  QImage mono(11, 5, QImage::Format_MonoLSB);
  mono.setColorTable({qRgb(1, 2, 3), qRgb(250, 240, 230)});
  mono.fill(0);
  mono.setPixel(3, 2, 1);
  QImage indexed(7, 5, QImage::Format_Indexed8);
  indexed.setColorTable({qRgb(9, 8, 7), qRgb(90, 80, 70), qRgb(1, 1, 200)});
  indexed.fill(2);
  indexed.setPixel(6, 4, 1);
  QImage clear = indexed;
  clear.setColorTable({qRgb(9, 8, 7), qRgba(90, 80, 70, 128), qRgb(1, 1, 200)});
  QImage grey(5, 3, QImage::Format_Grayscale8);
  grey.fill(77);
  QImage alpha(6, 4, QImage::Format_ARGB32_Premultiplied);
  alpha.fill(qRgba(0, 0, 0, 0));
  alpha.setPixelColor(2, 1, QColor(255, 0, 0, 255));
  QImage opaque(6, 4, QImage::Format_ARGB32);
  opaque.fill(qRgb(3, 2, 1));
  QImage deep(6, 4, QImage::Format_RGB16);
  deep.fill(Qt::green);
  const std::pair<QImage, std::uint32_t> cases[] = {{mono, 1},   {indexed, 8}, {clear, 32}, {grey, 8},
                                                    {alpha, 32}, {opaque, 24}, {deep, 24}};
  for (const auto& [image, bits] : cases) {
    const Picture picture = picture_of_image(image);
    ASSERT_TRUE(picture) << image.format();
    EXPECT_EQ(picture.bits(), bits) << image.format();
    const QImage back = image_of_picture(picture);
    ASSERT_EQ(back.size(), image.size());
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x)
        EXPECT_EQ(back.pixelColor(x, y), image.pixelColor(x, y)) << image.format() << ' ' << x << ' ' << y;
  }
  EXPECT_FALSE(picture_of_image({}));
}

// -------------------------------------------------------------------------------------------------------
// drag and drop

class DropTest : public EditingTest {
 protected:
  /// Drags to the middle of a row and drops there. Whether the list took it.
  bool drop(DocumentFrame& frame, const QMimeData& data, std::size_t row, std::int32_t* mark = nullptr) {
    const QPoint place = center(frame, row);
    QWidget* viewport = frame.list().viewport();
    QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &enter);
    QDragMoveEvent move(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &move);
    if (mark) *mark = frame.document().DropInsertMark;
    QDropEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &event);
    EXPECT_EQ(frame.document().DropInsertMark, -1);
    settle();
    settle();
    return move.isAccepted();
  }
};

TEST_F(DropTest, RowsAreCopiedToAnotherWindow) {
  DocumentFrame& frame = add_with_images(DocumentKind::MING, 2);
  const auto first = frame.entries().entry(2).record;
  frame.entries().select(2, true);
  const std::unique_ptr<QMimeData> rows(dragged_rows(frame));
  std::int32_t mark = 0;
  DocumentFrame& other = add_new(DocumentKind::MING);
  EXPECT_TRUE(drop(other, *rows, 0, &mark));
  EXPECT_EQ(chunk_count_images(other.entries(), DocumentKind::MING), 1u);
  const ChunkRecord& dropped = other.entries().record(static_cast<std::size_t>(mark));
  EXPECT_EQ(dropped.tag, tag::PNGI) << "where the mark was";
  EXPECT_EQ(picture_of(dropped).handle().data(), picture_of(*first).handle().data());
  EXPECT_EQ(other.document().caret, mark);
  EXPECT_TRUE(other.document().dirty);
  EXPECT_FALSE(frame.document().dirty);
  DocumentFrame& still = add(still_document());
  EXPECT_TRUE(drop(still, *rows, 1));
  ASSERT_EQ(answers_.messages.size(), 1u);
  EXPECT_EQ(answers_.messages[0].id, StringId::DropRefused);
  EXPECT_FALSE(still.document().dirty);
}

TEST_F(DropTest, OtherProgramsGetTheImagesAsFilesWhenTheyAskForThem) {
  DocumentFrame& frame = add(animated_document(3));
  const auto entries = frame_entries(frame.content());
  for (const std::size_t entry : {entries[0], entries[2]}) frame.entries().select(entry, true);
  for (const bool canvases : {false, true}) {
    const std::unique_ptr<QMimeData> rows(dragged_rows(frame, canvases));
    EXPECT_TRUE(dragged_files(*rows).empty()) << "inside the program they are rows";
    const QList<QUrl> urls = rows->urls();
    ASSERT_EQ(urls.size(), 2);
    EXPECT_EQ(rows->urls(), urls) << "each is made once";
    const std::filesystem::path last = to_path(urls[1].toLocalFile());
    EXPECT_TRUE(last.filename().string().ends_with(canvases ? "_00003 (2).png" : "_00003.png")) << last;
    DocumentWindow made;
    ASSERT_TRUE(open_document(made, last, main_.services().host));
    const Picture own = picture_of(frame.entries().record(entries[2]));
    const Picture got = picture_of(made.list.record(frame_entries(made)[0]));
    EXPECT_EQ(got.width(), own.width());
    EXPECT_EQ(PictureGetPixel(got, 1, 1), PictureGetPixel(own, 1, 1));
  }
  frame.entries().select_all(false);
  frame.entries().select(0, true);
  const std::unique_ptr<QMimeData> header(dragged_rows(frame));
  EXPECT_FALSE(header->hasUrls());
}

TEST_F(DropTest, RowsOfAnotherProgramComeAsTheirBlock) {
  DocumentFrame& source = add_with_images(DocumentKind::WEBP, 2);
  source.entries().select_all(true);
  const std::unique_ptr<QMimeData> rows(dragged_rows(source));
  QMimeData foreign;
  foreign.setData(kChunkMime, rows->data(kChunkMime));
  foreign.setData(QStringLiteral("application/x-vellumcraft-rows"), "1 1");
  DocumentFrame& to = add_with_images(DocumentKind::WEBP, 1);
  EXPECT_TRUE(drop(to, foreign, 1));
  EXPECT_EQ(tags(to), "WEBH WEBI WEBI WEBI");
  foreign.setData(kChunkMime, "VCHK nonsense");
  EXPECT_TRUE(drop(to, foreign, 1));
  ASSERT_EQ(answers_.messages.size(), 1u);
  EXPECT_EQ(answers_.messages[0].id, StringId::ClipboardInvalid);
  EXPECT_EQ(to.entries().size(), 4u);
}

TEST_F(DropTest, FilesBecomeFramesOfAnAnimationAndAreOpenedElsewhere) {
  const auto bad = folder_ / "bad.jpg";
  std::ofstream(bad).put('x');
  QMimeData files;
  const auto url = [](const std::filesystem::path& path) {
    return QUrl::fromLocalFile(QString::fromStdString(path.string()));
  };
  files.setUrls({url(picture_file()), url(picture_file())});
  DocumentFrame& frame = add_with_images(DocumentKind::WEBP, 1);
  EXPECT_TRUE(drop(frame, files, 0));
  EXPECT_EQ(tags(frame), "WEBH WEBI WEBI WEBI");
  DocumentFrame& mng = add_with_images(DocumentKind::MING, 3);
  ASSERT_TRUE(save_document(mng.content(), folder_ / "walk.mng", main_.services().host));
  files.setUrls({url(folder_ / "walk.mng")});
  EXPECT_TRUE(drop(frame, files, 3));
  EXPECT_EQ(tags(frame), "WEBH WEBI WEBI WEBI WEBI") << "an animation brings its first frame";
  EXPECT_TRUE(answers_.questions.empty());
  files.setUrls({url(bad)});
  frame.document().dirty = false;
  EXPECT_TRUE(drop(frame, files, 2));
  EXPECT_EQ(answers_.questions.size(), 1u);
  EXPECT_FALSE(frame.document().dirty) << "nothing was inserted";
  DocumentFrame& still = add(still_document());
  EXPECT_FALSE(drop(still, files, 1)) << "left to the main window, which opens it";
  EXPECT_EQ(still.entries().size(), 3u);
  answers_.busy = true;
  EXPECT_FALSE(drop(frame, files, 1)) << "while an operation runs";
}

TEST_F(DropTest, PressingASelectedRowAndMovingBeginsADrag) {
  DocumentFrame& frame = add(animated_document(3));
  int wanted = 0;
  // Tells of the drag in place of doing it, which would wait for a drop.
  QObject::disconnect(&frame.list(), &ChunkListView::drag_wanted, nullptr, nullptr);
  QObject::connect(&frame.list(), &ChunkListView::drag_wanted, [&wanted] { ++wanted; });
  frame.entries().select(2, true);
  frame.list().show_row(2);
  QWidget* viewport = frame.list().viewport();
  const QPoint place = center(frame, 2);
  const auto move = [&](QPoint to) {
    QMouseEvent event(QEvent::MouseMove, to, viewport->mapToGlobal(to), Qt::NoButton, Qt::LeftButton,
                      Qt::NoModifier);
    QApplication::sendEvent(viewport, &event);
  };
  QTest::mousePress(viewport, Qt::LeftButton, {}, place);
  move(place + QPoint(1, 1));
  EXPECT_EQ(wanted, 0);
  move(place + QPoint(QApplication::startDragDistance(), 4));
  EXPECT_EQ(wanted, 1);
  QTest::mouseRelease(viewport, Qt::LeftButton, {}, place);
  EXPECT_EQ(selected_rows(frame.entries()), (Rows{2}));
  EXPECT_FALSE(drag_pixmap(frame).isNull());
  frame.entries().select_all(false);
  frame.entries().select(0, true);
  DocumentFrame& other = add(animated_document(1));
  const std::unique_ptr<QMimeData> header(dragged_rows(frame));
  EXPECT_FALSE(drop(other, *header, 1)) << "images alone go to another window";
}

// -------------------------------------------------------------------------------------------------------
// menu and tip of a row

std::vector<int> numbers_of(const QMenu& menu, CommandBar& bar) {
  std::vector<int> numbers;
  for (const QAction* action : menu.actions()) {
    int number = action->isSeparator() ? 0 : -1;
    for (const CommandRow& row : command_table())
      if (bar.action(row.number) == action) number = row.number;
    numbers.push_back(number);
  }
  return numbers;
}

TEST_F(EditingTest, ARightClickOpensTheRowsMenuAndLeavesTheSelection) {
  DocumentFrame& frame = add(animated_document(2));
  frame.entries().select(3, true);
  frame.document().caret = 3;
  const QPoint place = center(frame, 1);
  QContextMenuEvent event(QContextMenuEvent::Mouse, place, frame.list().viewport()->mapToGlobal(place));
  QApplication::sendEvent(frame.list().viewport(), &event);
  EXPECT_EQ(frame.document().RightClickChunk, 1);
  EXPECT_EQ(frame.document().caret, 3);
  EXPECT_EQ(selected_rows(frame.entries()), (Rows{3}));
  auto* menu = main_.findChild<QMenu*>(QStringLiteral("row"));
  ASSERT_NE(menu, nullptr);
  const auto numbers = numbers_of(*menu, main_.commands());
  EXPECT_EQ(std::vector(numbers.begin() + 6, numbers.begin() + 10), (std::vector{0, 204, 208, 56}));
  std::vector<std::string> labels;
  for (const QAction* action : menu->actions()) labels.push_back(action->text().toStdString());
  EXPECT_EQ(std::ranges::count(labels, "Select all"), 1);
  EXPECT_EQ(std::ranges::count(labels, "Select none"), 1);
  EXPECT_TRUE(menu->actions()[2]->isEnabled());
  menu->close();
  delete menu;
  frame.entries().select_all(true);
  const std::unique_ptr<QMenu> all(make_context_menu(main_, frame, 0));
  for (const QAction* action : all->actions()) EXPECT_NE(action->text(), "Select all");
}

TEST_F(EditingTest, ARowTellsMoreOnceThePointerRests) {
  settings::FileTipDelay = 0;  // held to 100
  DocumentFrame& frame = add(long_document(30));
  frame.set_scale(0);
  auto* tip = frame.findChild<QLabel*>(QStringLiteral("VellumcraftFileTipClass"));
  ASSERT_NE(tip, nullptr);
  const auto hover = [&](std::size_t row) {
    const QPoint to = center(frame, row);
    QMouseEvent event(QEvent::MouseMove, to, frame.list().viewport()->mapToGlobal(to), Qt::NoButton,
                      Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(frame.list().viewport(), &event);
  };
  hover(2);
  EXPECT_FALSE(tip->isVisible());
  ASSERT_TRUE(QTest::qWaitFor([&] { return tip->isVisible(); }, 5000));
  EXPECT_EQ(tip->text(), "Title\nA text");
  const QRect list(frame.list().viewport()->mapToGlobal(QPoint()), frame.list().viewport()->size());
  EXPECT_TRUE(list.contains(tip->geometry()));
  hover(3);
  EXPECT_FALSE(tip->isVisible()) << "another row";
  ASSERT_TRUE(QTest::qWaitFor([&] { return tip->isVisible(); }, 5000));
  QTest::keyClick(&frame.list(), Qt::Key_Down);
  EXPECT_FALSE(tip->isVisible());
  settings::FileTipShow = 0;
  hover(4);
  EXPECT_EQ(frame.document().TipChunk, -1);
}

}  // namespace
}  // namespace vellum::testing
