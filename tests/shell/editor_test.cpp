// The editors of chunks, opened for real: what is typed arrives, Cancel and bad values change nothing.
#include "shell/editors/chunk_editor.h"
#include "shell/editors/edit_unknown.h"

#include <QAbstractSpinBox>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>

#include "core/build/convert_records.h"
#include "core/chunks/chunk_fields.h"
#include "core/chunks/chunk_payload.h"
#include "core/chunks/new_chunk.h"
#include "core/edit/insert_chunk.h"
#include "core/files/save_document.h"
#include "core/model/chunk_layout.h"
#include "core/settings.h"
#include "shell/forms/color_button.h"
#include "shell/forms/form_dialog.h"
#include "shell_fixture.h"
#include "support/documents.h"
#include "support/judge.h"
#include "support/settings_guard.h"

namespace vellum::testing {
namespace {

class EditorTest : public ::testing::Test {
 protected:
  EditorTest() : services_(answers_.services()) {}
  ~EditorTest() override { chooseColor = nullptr; }

  /// A document of this kind with one new chunk of each tag.
  static DocumentWindow document_of(DocumentKind kind, const std::vector<ChunkTag>& tags) {
    DocumentWindow window;
    window.document.kind = kind;
    for (const ChunkTag tag : tags) {
      ChunkRecord record;
      NewChunkArgument argument;
      if (tag == tag::IDAT || tag == tag::fcTL || tag == tag::PNGI || tag == tag::WEBI)
        argument.picture = sample_picture(12, 10, 24).handle();
      const bool made = new_chunk(window, record, tag, argument);
      if (!made) record.data = ChunkHandle::create(record.size = tag == tag::MOVE ? 13 : 5);
      record.tag = tag;
      chunk_list_append(window.list, window.document, record);
    }
    chunk_list_close_change(window.list, window.document);
    return window;
  }

  /// Opens the editor of the first entry with the tag, and does `work` in it. Whether it reports a change.
  template <class Work>
  bool edit(DocumentWindow& window, ChunkTag tag, Work work) {
    const OpenEditor open = find_editor(window.document.kind, tag);
    EXPECT_NE(open, nullptr) << tag_letters(tag);
    QTimer::singleShot(0, qApp, [&] {
      dialog_ = qobject_cast<FormDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog_, nullptr) << tag_letters(tag);
      expect_presentable(*dialog_);
      work();
      if (QApplication::activeModalWidget() == dialog_) dialog_->reject();
    });
    return open && open(nullptr, window, chunk_find_first(window.list, tag), services_) == Edited::Changed;
  }
  void type(const char* field, const QString& text) {
    QWidget* input = dialog_->form().input(field);
    ASSERT_NE(input, nullptr) << field;
    if (auto* list = qobject_cast<QComboBox*>(input); list && !list->isEditable())
      return list->setCurrentText(text);
    QWidget* typed = input;
    if (auto* spin = qobject_cast<QAbstractSpinBox*>(input)) typed = spin->findChild<QLineEdit*>();
    typed->setFocus();
    QTest::keyClick(typed, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(typed, text);
  }
  void check_box(const char* field, bool on) {
    auto* box = qobject_cast<QCheckBox*>(dialog_->form().input(field));
    ASSERT_NE(box, nullptr) << field;
    box->setChecked(on);
  }
  template <class Widget = QPushButton>
  Widget* child(const char* name) {
    return dialog_->findChild<Widget*>(QLatin1String(name));
  }
  void press(QDialogButtonBox::StandardButton button) {
    QTest::mouseClick(dialog_->buttons().button(button), Qt::LeftButton);
  }
  Answers answers_;
  Services services_;
  FormDialog* dialog_ = nullptr;
};

struct Typing {
  DocumentKind kind;
  ChunkTag tag;
  const char *field, *text;
  std::int64_t value;
};

const std::vector<ChunkTag> kStillTags = {tag::IHDR, tag::gAMA, tag::bKGD, tag::tRNS,
                                          tag::tEXt, tag::zTXt, tag::tIME, tag::IEND};
const std::vector<ChunkTag> kMngTags = {tag::MHDR, tag::TERM, tag::BACK, tag::LOOP, tag::PNGI, tag::ENDL,
                                        tag::FRAM, tag::DEFI, tag::MOVE, tag::SHOW, tag::tEXt, tag::MEND};

const Typing kTypings[] = {
    {DocumentKind::PING, tag::IHDR, "height", "77", 77},
    {DocumentKind::PING, tag::IHDR, "colorType", "Grey", 0},
    {DocumentKind::PING, tag::gAMA, "stored", "100000", 100000},
    {DocumentKind::PING, tag::bKGD, "green", "5", 5},
    {DocumentKind::PING, tag::tIME, "year", "1999", 1999},
    {DocumentKind::APNG, tag::acTL, "numPlays", "12", 12},
    {DocumentKind::APNG, tag::fcTL, "delayDen", "30", 30},
    {DocumentKind::MING, tag::MHDR, "ticksPerSecond", "600", 600},
    {DocumentKind::MING, tag::TERM, "delay", "9", 9},
    {DocumentKind::MING, tag::BACK, "mandatory", "Color is required", 1},
    {DocumentKind::MING, tag::LOOP, "count", "3", 3},
    {DocumentKind::MING, tag::ENDL, "level", "255", 255},
    {DocumentKind::MING, tag::FRAM, "delay", "40", 40},
    {DocumentKind::MING, tag::DEFI, "x", "-12", -12},
    {DocumentKind::MING, tag::MOVE, "last", "2", 2},
    {DocumentKind::WEBP, tag::WEBH, "loopCount", "4", 4},
};

TEST_F(EditorTest, WhatIsTypedArrivesAndCancelChangesNothing) {
  for (const Typing& t : kTypings) {
    DocumentWindow window;
    if (t.kind == DocumentKind::PING) window = document_of(t.kind, kStillTags);
    if (t.kind == DocumentKind::APNG)
      window = document_of(t.kind, {tag::IHDR, tag::acTL, tag::IDAT, tag::fcTL, tag::IEND});
    if (t.kind == DocumentKind::MING) window = document_of(t.kind, kMngTags);
    if (t.kind == DocumentKind::WEBP) window = document_of(t.kind, {tag::WEBH, tag::WEBI});
    const std::size_t at = chunk_find_first(window.list, t.tag);
    const auto before = window.list.entry(at).record;
    SCOPED_TRACE(tag_letters(t.tag));

    EXPECT_FALSE(edit(window, t.tag, [&] {
      EXPECT_EQ(dialog_->windowTitle().toStdString(), "Edit " + tag_letters(t.tag));
      type(t.field, QLatin1String(t.text));
      press(QDialogButtonBox::Cancel);
    }));
    EXPECT_EQ(window.list.entry(at).record, before);
    EXPECT_FALSE(edit(window, t.tag, [&] { press(QDialogButtonBox::Ok); })) << "nothing was typed";
    EXPECT_FALSE(window.document.dirty);
    EXPECT_FALSE(edit(window, t.tag, [&] {
      type(t.field, QLatin1String(t.text));
      press(QDialogButtonBox::Reset);
      press(QDialogButtonBox::Ok);
    }));

    EXPECT_TRUE(edit(window, t.tag, [&] {
      for (QCheckBox* box : dialog_->findChildren<QCheckBox*>())
        if (box->text().contains(QLatin1String("For ever"))) box->setChecked(false);
      type(t.field, QLatin1String(t.text));
      press(QDialogButtonBox::Ok);
    }));
    EXPECT_TRUE(window.document.dirty);
    EXPECT_EQ(read_chunk_fields(window, at).number(t.field), t.value);
    EXPECT_TRUE(answers_.messages.empty()) << answers_.messages.front().text;
  }
}

TEST_F(EditorTest, ABadValueIsToldAndFocusedAndTheDialogStays) {
  DocumentWindow window = document_of(DocumentKind::MING, kMngTags);
  EXPECT_FALSE(edit(window, tag::MHDR, [&] {
    auto* tabs = dialog_->findChild<QTabWidget*>();
    ASSERT_NE(tabs, nullptr);
    type("frameHeight", QStringLiteral("ten"));
    tabs->setCurrentIndex(1);
    press(QDialogButtonBox::Ok);
    EXPECT_TRUE(dialog_->isVisible());
    EXPECT_EQ(tabs->currentIndex(), 0);
    EXPECT_EQ(dialog_->focusWidget(), dialog_->form().input("frameHeight"));
    press(QDialogButtonBox::Cancel);
  }));
  ASSERT_EQ(answers_.messages.size(), 1u);
  EXPECT_EQ(answers_.messages[0].text, "Frame height must be a whole number from 1 to 1000000.");
  EXPECT_FALSE(window.document.dirty);
}

TEST_F(EditorTest, ReturnIsOkFromWithinANumber) {
  DocumentWindow window = document_of(DocumentKind::MING, kMngTags);
  EXPECT_TRUE(edit(window, tag::ENDL, [&] {
    type("level", QStringLiteral("7"));
    QTest::keyClick(dialog_->form().input("level"), Qt::Key_Up);
    QTest::keyClick(dialog_->form().input("level"), Qt::Key_Return);
    EXPECT_FALSE(dialog_->isVisible());
  }));
  EXPECT_EQ(read_chunk_fields(window, chunk_find_first(window.list, tag::ENDL)).number("level"), 8);
}

TEST_F(EditorTest, FieldsOutOfUseAreDisabled) {
  DocumentWindow window = document_of(DocumentKind::MING, kMngTags);
  edit(window, tag::TERM, [&] {
    EXPECT_TRUE(dialog_->form().input("afterAction")->isEnabled());
    type("action", QStringLiteral("Cease displaying"));
    for (const char* field : {"afterAction", "delay", "iterations"})
      EXPECT_FALSE(dialog_->form().input(field)->isEnabled()) << field;
  });
  edit(window, tag::FRAM, [&] {
    EXPECT_FALSE(dialog_->form().input("timeout")->isEnabled());
    type("changeTimeout", QStringLiteral("This subframe, deterministic"));
    EXPECT_TRUE(dialog_->form().input("timeout")->isEnabled());
    EXPECT_FALSE(dialog_->form().input("sync")->isEnabled());
  });
}

TEST_F(EditorTest, LatinOneIsAskedForAndRepaired) {
  for (const Answer answer : {Answer::No, Answer::Yes}) {
    DocumentWindow window = document_of(DocumentKind::PING, kStillTags);
    answers_.answers = {answer};
    const bool changed = edit(window, tag::tEXt, [&] {
      auto* text = qobject_cast<QPlainTextEdit*>(dialog_->form().input("text"));
      text->setPlainText(
          QString::fromUtf8("a\xE2\x82\xAC"
                            "b"));
      press(QDialogButtonBox::Ok);
      if (answer == Answer::No)
        EXPECT_EQ(text->textCursor().selectedText(), QString::fromUtf8("\xE2\x82\xAC"));
    });
    EXPECT_EQ(changed, answer == Answer::Yes);
    const auto payload =
        chunk_payload(window.list.record(chunk_find_first(window.list, tag::tEXt)), window.document.kind);
    const std::string text(payload->begin(), payload->end());
    EXPECT_EQ(text.substr(8), changed ? "a?b" : "This space for rent...");
  }
}

TEST_F(EditorTest, TextsCountTheirBytes) {
  DocumentWindow window = document_of(DocumentKind::PING, kStillTags);
  EXPECT_TRUE(edit(window, tag::zTXt, [&] {
    qobject_cast<QPlainTextEdit*>(dialog_->form().input("text"))->setPlainText(QString(2000, u'x'));
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return child<QLabel>("counters")->text().startsWith("2,000 characters, 2,000 bytes, "); },
        5000))
        << child<QLabel>("counters")->text().toStdString();
    type("keyword", QStringLiteral("Author"));
    check_box("compressed", false);
    press(QDialogButtonBox::Ok);
  }));
  EXPECT_EQ(chunk_count_tag(window.list, tag::tEXt), 2u);
  EXPECT_EQ(chunk_count_tag(window.list, tag::zTXt), 0u);
}

TEST_F(EditorTest, TwoFieldsTellTheSameThing) {
  DocumentWindow window = document_of(DocumentKind::PING, kStillTags);
  EXPECT_TRUE(edit(window, tag::gAMA, [&] {
    type("gamma", QStringLiteral("1.80"));
    EXPECT_EQ(dialog_->form().values().number("stored"), 55556);
    type("stored", QStringLiteral("100000"));
    EXPECT_EQ(dialog_->form().values().real("gamma"), 1.0);
    press(QDialogButtonBox::Ok);
  }));
  chooseColor = [](QWidget*, Colour, bool) { return std::optional(make_colour(10, 20, 30)); };
  EXPECT_TRUE(edit(window, tag::bKGD, [&] {
    QTest::mouseClick(child<ColorButton>("color"), Qt::LeftButton);
    press(QDialogButtonBox::Ok);
  }));
  const FieldValues color = read_chunk_fields(window, chunk_find_first(window.list, tag::bKGD));
  EXPECT_EQ(color.number("red"), 10);
  EXPECT_EQ(color.number("green"), 20);
  EXPECT_EQ(color.number("blue"), 30);

  DocumentWindow mng = document_of(DocumentKind::MING, kMngTags);
  EXPECT_TRUE(edit(mng, tag::BACK, [&] {
    QTest::mouseClick(child<ColorButton>("color"), Qt::LeftButton);
    press(QDialogButtonBox::Ok);
  }));
  EXPECT_EQ(read_chunk_fields(mng, chunk_find_first(mng.list, tag::BACK)).number("red"), 10 * 257);

  DocumentWindow anim = document_of(DocumentKind::APNG, {tag::IHDR, tag::acTL, tag::fcTL, tag::IEND});
  EXPECT_TRUE(edit(anim, tag::fcTL, [&] {
    type("rate", QStringLiteral("24000/1001"));
    EXPECT_EQ(dialog_->form().values().number("delayDen"), 24000);
    type("delayNum", QStringLiteral("24"));
    EXPECT_EQ(dialog_->form().values().text("rate"), "1 ms");
    press(QDialogButtonBox::Ok);
  }));
}

TEST_F(EditorTest, HeadersOfferWhatTheirColorTypeAllowsAndCountTheirFrames) {
  DocumentWindow window = document_of(DocumentKind::PING, kStillTags);
  edit(window, tag::IHDR, [&] {
    auto* depths = qobject_cast<QComboBox*>(dialog_->form().input("bitDepth"));
    EXPECT_EQ(depths->count(), 2);
    type("colorType", QStringLiteral("Palette"));
    EXPECT_EQ(depths->count(), 4);
    EXPECT_EQ(depths->currentText(), "8");
    type("colorType", QStringLiteral("Grey with alpha"));
    EXPECT_EQ(depths->count(), 2);
  });
  DocumentWindow mng = document_of(DocumentKind::MING, kMngTags);
  EXPECT_TRUE(edit(mng, tag::MHDR, [&] {
    QTest::mouseClick(child("count"), Qt::LeftButton);
    press(QDialogButtonBox::Ok);
  }));
  EXPECT_EQ(mng.list.record(0).layerCount, 2u);
  EXPECT_NE(mng.list.record(0).simplicityProfile & 1, 0u);
}

TEST_F(EditorTest, EveryControlHasANameAKeyAndAPlaceInTheTabOrder) {
  const std::pair<DocumentKind, std::vector<ChunkTag>> documents[] = {{DocumentKind::PING, kStillTags},
                                                                      {DocumentKind::MING, kMngTags}};
  for (const auto& [kind, tags] : documents) {
    DocumentWindow window = document_of(kind, tags);
    for (const ChunkTag tag : tags) {
      static constexpr ChunkTag without_form[] = {tag::IEND, tag::MEND, tag::PLTE, tag::tRNS};
      if (!find_editor(kind, tag) || std::ranges::find(without_form, tag) != std::end(without_form)) continue;
      edit(window, tag, [&] {
        for (const Field& field : dialog_->form().fields()) {
          QWidget* input = dialog_->form().input(field.name);
          EXPECT_FALSE(input->accessibleName().isEmpty()) << field.name;
          if (!field.locked) EXPECT_TRUE(input->focusPolicy() & Qt::TabFocus) << field.name;
        }
        for (const QLabel* label : dialog_->findChildren<QLabel*>()) {
          const bool marks = label->text().contains(u'&');
          if (marks) EXPECT_NE(label->buddy(), nullptr) << label->text().toStdString();
        }
      });
    }
  }
}

}  // namespace
}  // namespace vellum::testing
