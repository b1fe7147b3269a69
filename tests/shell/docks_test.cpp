// The docks of the main window and the tabs of its documents.
#include "shell/docks/docks.h"

#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>

#include "configuration/shell_settings.h"
#include "core/chunks/chunk_fields.h"
#include "core/chunks/new_chunk.h"
#include "core/edit/clipboard_block.h"
#include "core/edit/image_edit.h"
#include "core/edit/undo.h"
#include "core/model/chunk_layout.h"
#include "core/model/frame_values.h"
#include "operations/manage_frames.h"
#include "playback/compositor.h"
#include "shell/docks/inspector_panel.h"
#include "shell/docks/preview_panel.h"
#include "shell/docks/strip_panel.h"
#include "shell/editors/chunk_editor.h"
#include "shell/editors/edit_unknown.h"
#include "shell/forms/form_dialog.h"
#include "shell/look/picture_image.h"
#include "shell_fixture.h"

namespace vellum::testing {
namespace {

constexpr int kPreview = 821, kStrip = 822, kInspector = 823;

class DocksTest : public DialogTest {
 protected:
  template <class Panel>
  Panel& open(int command) {
    if (!main_.docks().is_seen(command)) main_.run(command);
    settle();
    return *dynamic_cast<Panel*>(main_.docks().panel(command));
  }
  void choose(DocumentFrame& frame, const std::vector<std::size_t>& rows) {
    frame.entries().select_all(false);
    for (const std::size_t row : rows) frame.entries().select(row, true);
    frame.document().caret = static_cast<std::int32_t>(rows.back());
    settle();
  }
  /// All that the entries hold.
  static std::vector<std::uint8_t> bytes_of(const DocumentWindow& window) {
    std::vector<std::uint8_t> all;
    write_chunk_block(window.document.kind, window.list, [&](std::span<const std::uint8_t> bytes) {
      all.insert(all.end(), bytes.begin(), bytes.end());
      return true;
    });
    return all;
  }
};

/// A document with one chunk of each tag, as the menus insert them.
DocumentWindow document_with(DocumentKind kind, const std::vector<ChunkTag>& tags, Host& host) {
  DocumentWindow window = document_of(kind, host);
  for (const ChunkTag tag : tags) {
    ChunkRecord record;
    if (!has_default_content(tag) || !new_chunk(window, record, tag))
      record.data = ChunkHandle::copy_of(std::vector<std::uint8_t>(record.size = 6), 0);
    record.tag = tag;
    chunk_list_insert(window.list, window.document, window.list.size() - 1, record);
  }
  chunk_list_close_change(window.list, window.document);
  return window;
}

/// Another value than this one; of a list the last choice, since one of the others asks for a palette.
FieldValue another(const Field& field, const FieldValue& value) {
  if (const auto* text = std::get_if<std::string>(&value))
    return field.look == FieldLook::Bytes ? FieldValue("hex:00" + text->substr(4)) : FieldValue(*text + "a");
  if (const auto* real = std::get_if<double>(&value)) return FieldValue(*real + 1);
  const std::int64_t number = std::get<std::int64_t>(value);
  if (field.type == FieldType::Choice && !field.choices.empty())
    return number == field.choices.back().value ? field.choices.front().value : field.choices.back().value;
  if (field.type == FieldType::Flag) return std::int64_t{number == 0};
  return number < field.most ? number + 1 : number - 1;
}

void type(Form& form, const FieldValues& values) {
  for (const Field& field : form.fields())
    if (!field.locked && *form.values().find(field.name) != *values.find(field.name))
      form.set_value(field.name, *values.find(field.name));
}

// Each field of each sort of entry, changed to another value in the Inspector of one document and in the
// editor of another.
TEST_F(DocksTest, TheInspectorDoesWhatTheEditorDoes) {
  using namespace tag;
  const std::map<DocumentKind, std::vector<ChunkTag>> kinds = {
      {DocumentKind::PING,
       {gAMA, bKGD, tEXt, zTXt, iTXt, tIME, pHYs, sRGB, cHRM, cICP, mDCV, cLLI, sBIT, sPLT}},
      {DocumentKind::APNG, {gAMA, tEXt, tIME, pHYs}},
      {DocumentKind::MING, {TERM, BACK, LOOP, ENDL, MOVE, SHOW, tEXt, FRAM, DEFI}},
      {DocumentKind::WEBP, {}}};
  int changes = 0;
  auto& inspector = open<InspectorPanel>(kInspector);
  for (const auto& [kind, tags] : kinds) {
    DocumentFrame& frame = add(document_with(kind, tags, main_.services().host));
    for (std::size_t row = 0; row < frame.entries().size(); ++row)
      for (const Field& field : chunk_fields(frame.content(), row)) {
        if (field.locked) continue;
        SCOPED_TRACE(tag_letters(frame.entries().record(row).tag) + " " + field.name);
        FieldValues values = read_chunk_fields(frame.content(), row);
        values.set(field.name, another(field, *values.find(field.name)));
        enable_field(chunk_fields(frame.content(), row), field, values);

        DocumentWindow edited{frame.document(), frame.entries(), {}};
        when_dialog_opens<FormDialog>([&](FormDialog& dialog) {
          type(dialog.form(), values);
          dialog.accept();
        });
        const ChunkTag tag = edited.list.record(row).tag;
        if (find_editor(edited, row)(&main_, edited, row, main_.services()) == Edited::Changed)
          close_entry_edit(edited, tag);
        const auto expected = bytes_of(edited);

        choose(frame, {row});
        const auto before = bytes_of(frame.content());
        ASSERT_NE(inspector.form(), nullptr);
        if (!inspector.fault().isEmpty()) QTest::keyClick(&inspector, Qt::Key_Escape);
        type(*inspector.form(), values);
        inspector.settle();
        settle();
        ASSERT_EQ(bytes_of(frame.content()), expected);
        EXPECT_EQ(frame.content().undoLevels.size(), expected == before ? 0u : 1u)
            << inspector.fault().toStdString();
        changes += expected != before;
        if (!frame.content().undoLevels.empty()) main_.run(204);
        settle();
        ASSERT_EQ(bytes_of(frame.content()), before);
        undo_clear(frame.content());
        main_.refresh();
      }
    frame.close_without_question();
  }
  EXPECT_GT(changes, 120);
}

TEST_F(DocksTest, TypingIsOneLevelAndAWrongValueIsToldAndNotTaken) {
  DocumentFrame& frame = add(animated_document(3));
  auto& inspector = open<InspectorPanel>(kInspector);
  choose(frame, {3});
  auto* number = inspector.form()->input("delayNum");
  number->setFocus();
  for (const std::int64_t value : {7, 70, 701}) {
    inspector.form()->set_value("delayNum", value);
    inspector.settle();
    number->setFocus();
  }
  EXPECT_EQ(frame.entries().record(3).frameControl.delayNum, 701);
  EXPECT_EQ(frame.content().undoLevels.size(), 3u) << "a command may have run in between";
  QTest::keyClicks(number, "5");
  QTest::keyClick(number, Qt::Key_Return);
  QTest::keyClicks(number, "9");
  QTest::keyClick(number, Qt::Key_Return);
  EXPECT_EQ(frame.content().undoLevels.size(), 4u) << "what is typed in a row is one change";
  const auto before = bytes_of(frame.content());
  QTest::keyClicks(number, "99999");
  QTest::keyClick(number, Qt::Key_Return);
  EXPECT_FALSE(inspector.fault().isEmpty());
  EXPECT_EQ(bytes_of(frame.content()), before);
  QTest::keyClick(number, Qt::Key_Delete);
  EXPECT_EQ(frame.entries().size(), 6u) << "Delete means the field";
  QTest::keyClick(number, Qt::Key_Escape);
  EXPECT_TRUE(inspector.fault().isEmpty());
  EXPECT_EQ(bytes_of(frame.content()), before);
}

TEST_F(DocksTest, BytesOfAnUnknownChunkAreChangedInPlace) {
  DocumentFrame& frame = add(document_with(DocumentKind::PING, {0x61624364}, main_.services().host));
  auto& inspector = open<InspectorPanel>(kInspector);
  choose(frame, {2});
  const std::vector<std::uint8_t> wanted = {0xAB, 0, 0, 0, 0, 0};
  HexView& view = inspector.bytes()->view();
  ASSERT_TRUE(QTest::qWaitFor([&] { return view.bytes().size() == wanted.size(); }));
  view.setFocus();
  QTest::keyClicks(&view, "ab");
  QTest::keyClick(&view, Qt::Key_Delete);
  EXPECT_EQ(frame.entries().size(), 4u);
  QTest::keyClick(&view, Qt::Key_Z, Qt::ControlModifier);
  inspector.settle();
  const auto payload = raw_payload(frame.entries().record(2));
  EXPECT_EQ(std::vector(payload.begin(), payload.end()), wanted);
  EXPECT_EQ(frame.content().undoLevels.size(), 1u);
}

TEST_F(DocksTest, SeveralFramesAreChangedTogetherInOneStep) {
  for (const DocumentKind kind : {DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP}) {
    DocumentFrame& frame = add(document_of(kind, main_.services().host));
    auto& inspector = open<InspectorPanel>(kInspector);
    const auto entries = frame_entries(frame.content());
    choose(frame, entries);
    const std::uint32_t ticks = ticks_per_second(frame.entries());
    std::size_t levels = 0;
    for (const auto& [name, value] : {std::pair("delay", FieldValue(std::int64_t{470})),
                                      {"dispose", FieldValue(std::int64_t{1})},
                                      {"blend", FieldValue(std::int64_t{1})},
                                      {"position", FieldValue(std::string("3, 4"))}}) {
      ASSERT_NE(inspector.form(), nullptr);
      if (!inspector.form()->has(name)) continue;
      const auto before = bytes_of(frame.content());
      inspector.form()->set_value(name, value);
      inspector.settle();
      settle();
      if (bytes_of(frame.content()) == before) continue;
      EXPECT_EQ(frame.content().undoLevels.size(), ++levels) << name;
      main_.run(204);
      EXPECT_EQ(bytes_of(frame.content()), before) << name;
      main_.run(208);
    }
    EXPECT_GE(levels, 2u);
    for (const std::size_t entry : entries) {
      const ChunkRecord& record = frame.entries().record(entry);
      EXPECT_EQ(frame_delay_ms(record, kind, ticks), 470u);
      EXPECT_EQ(GetFrameDispose(record, kind), 1u);
    }
    frame.close_without_question();
  }
}

TEST_F(DocksTest, AFrameOfTheStripLiesAtItsPlaceOnTheCanvas) {
  settings::StripOptions = 0;
  DocumentFrame& frame = add(animated_document(3));
  const std::size_t entry = frame_entries(frame.content())[1];
  std::size_t replaced = entry;
  Picture small = PictureCreate(10, 10, nullptr, 24);
  for (std::uint32_t i = 0; i < 100; ++i) PicturePutPixel(small, i % 10, i / 10, 0x0000FF);
  ASSERT_EQ(replace_image(frame.content(), replaced, small, main_.services().host), Replaced::Done);
  set_positions(frame.content(), {1}, {30, 20});
  StripView& view = open<StripPanel>(kStrip).view();
  const QImage drawn = view.viewport()->grab(view.cell_rect(1)).toImage();
  int red = 0, inside = 0;
  for (int y = 0; y < drawn.height(); ++y)
    for (int x = 0; x < drawn.width(); ++x) {
      if (drawn.pixel(x, y) != 0xFFFF0000) continue;
      ++red;
      // The last quarter across, the last third down.
      inside += x > drawn.width() / 2 && y > drawn.height() / 2;
    }
  EXPECT_GT(red, 50);
  EXPECT_EQ(inside, red);
  EXPECT_LT(red, drawn.width() * drawn.height() / 8);
}

TEST_F(DocksTest, ThePreviewFollowsEditsAndTheSelection) {
  DocumentFrame& frame = add(animated_document(4));
  auto& preview = open<PreviewPanel>(kPreview);
  ASSERT_NE(preview.player(), nullptr);
  EXPECT_TRUE(preview.is_waiting()) << "it plays";
  const auto entries = frame_entries(frame.content());
  const auto expect_frame = [&](std::uint32_t ordinal) {
    settle();
    Compositor judge(frame.entries(), frame.document());
    EXPECT_EQ(preview.player()->shown().ordinal, ordinal);
    EXPECT_EQ(
        preview.canvas().image(),
        image_of_picture(judge.frame(ordinal).picture).convertToFormat(preview.canvas().image().format()));
  };
  choose(frame, {entries[2]});
  expect_frame(2);
  EXPECT_FALSE(preview.is_waiting()) << "a frame that was chosen stands";
  Picture other = sample_picture(40, 30, 24);
  PicturePutPixel(other, 5, 5, 0x123456);
  std::size_t replaced = entries[2];
  ASSERT_EQ(replace_image(frame.content(), replaced, other, main_.services().host), Replaced::Done);
  expect_frame(2);
  main_.run(61);
  choose(frame, {entries[1]});
  expect_frame(1);
  preview.toggle();
  EXPECT_TRUE(preview.is_waiting());
  set_delays(frame.content(), {0}, 30);
  settle();
  EXPECT_TRUE(preview.player()->can_pause() || preview.is_waiting()) << "an edit doesn't stop it";
  DocumentFrame& still = add(still_document());
  EXPECT_FALSE(preview.is_waiting());
  still.close_without_question();
  frame.close_without_question();
  settle();
  EXPECT_EQ(preview.player(), nullptr);
}

TEST_F(DocksTest, WhatIsNotSeenRests) {
  DocumentFrame& frame = add(animated_document(3));
  const auto edit = [&] {
    for (const std::size_t row : frame_entries(frame.content())) choose(frame, {row});
    main_.run(207);
    main_.run(204);
    settle();
  };
  edit();
  EXPECT_EQ(main_.docks().told(), 0u);
  for (const DockRow& row : dock_table()) EXPECT_EQ(main_.docks().panel(row.command), nullptr);
  for (const DockRow& row : dock_table()) main_.run(row.command);
  settle();
  edit();
  auto& preview = open<PreviewPanel>(kPreview);
  for (const DockRow& row : dock_table()) main_.run(row.command);
  settle();
  const std::uint64_t told = main_.docks().told();
  edit();
  EXPECT_EQ(main_.docks().told(), told);
  EXPECT_EQ(preview.player(), nullptr);
  EXPECT_FALSE(preview.is_waiting());
  EXPECT_EQ(main_.findChildren<Form*>().size(), 0);
}

TEST_F(DocksTest, AnArrangementIsRememberedForItsSortOfScreen) {
  Docks& docks = main_.docks();
  docks.arrange(1000);
  for (const DockRow& row : dock_table()) EXPECT_FALSE(docks.is_seen(row.command)) << row.name;
  main_.run(kStrip);
  settle();
  docks.remember();
  docks.arrange(1366);
  settle();
  for (const DockRow& row : dock_table()) {
    EXPECT_EQ(docks.is_seen(row.command), row.opens) << row.name;
    EXPECT_EQ(main_.commands().action(row.command)->isChecked(), row.opens);
  }
  main_.run(kPreview);
  main_.addDockWidget(Qt::LeftDockWidgetArea, docks.dock(kInspector));
  docks.remember();
  docks.arrange(1099);
  settle();
  EXPECT_TRUE(docks.is_seen(kStrip) && !docks.is_seen(kInspector));
  docks.arrange(1920);
  settle();
  EXPECT_FALSE(docks.is_seen(kPreview));
  EXPECT_EQ(main_.dockWidgetArea(docks.dock(kInspector)), Qt::LeftDockWidgetArea);
  settings::DockLayoutWide = "edited by hand";
  docks.arrange(1200);
  settle();
  EXPECT_TRUE(docks.is_seen(kPreview)) << "as they come";
}

TEST_F(DocksTest, AllOfThemFitASmallScreenAndTheirTextsAreRead) {
  DocumentFrame& frame = add(animated_document(5));
  const QPalette before = QApplication::palette();
  for (QPalette palette : {before, dark_palette()}) {
    QApplication::style()->polish(palette);
    QApplication::setPalette(palette);
    main_.resize(800, 560);
    for (const DockRow& row : dock_table())
      if (!main_.docks().is_seen(row.command)) main_.run(row.command);
    for (std::size_t row = 0; row < frame.entries().size(); ++row) {
      choose(frame, {row});
      EXPECT_EQ(main_.size(), QSize(800, 560)) << row;
      for (const DockRow& dock : dock_table()) expect_presentable(*main_.docks().panel(dock.command));
    }
    EXPECT_GE(frame.width(), 300);
    for (const DockRow& row : dock_table()) {
      const QDockWidget& dock = *main_.docks().dock(row.command);
      EXPECT_TRUE(main_.rect().contains(QRect(dock.mapTo(&main_, QPoint()), dock.size()))) << row.name;
    }
  }
  QApplication::setPalette(before);
}

TEST_F(DocksTest, KeysGoFromPaneToPaneAndHelpIsThatOfThePane) {
  DocumentFrame& frame = add(animated_document(2));
  for (const DockRow& row : dock_table()) main_.run(row.command);
  settle();
  std::set<QString> topics;
  frame.setFocus();
  for (std::size_t i = 0; i <= dock_table().size(); ++i) {
    topics.insert(main_.docks().topic());
    main_.run(807);
  }
  EXPECT_EQ(topics.size(), dock_table().size() + 1);
  EXPECT_TRUE(main_.docks().topic().isEmpty());
  main_.run(kStrip);
  main_.run(307);
  EXPECT_EQ(main_.docks().topic(), QStringLiteral("IMAGESTRIP"));
  main_.run(52);
  main_.run(kStrip);
  EXPECT_TRUE(frame.isAncestorOf(QApplication::focusWidget())) << "a dock that closes gives the keys back";
}

TEST_F(DocksTest, SeveralDocumentsThatFillTheAreaHaveTabs) {
  DocumentTabs& tabs = main_.tabs();
  DocumentFrame& first = add(animated_document(2));
  EXPECT_TRUE(first.isMaximized());
  EXPECT_EQ(first.height(), main_.area().viewport()->height());
  EXPECT_FALSE(tabs.isVisible()) << "one document needs none";
  const auto named = [](const char* name) {
    DocumentWindow window = still_document();
    window.document.fileName = name;
    return window;
  };
  DocumentFrame& second = add(named("a&b.png"));
  DocumentFrame& third = add(named("c.png"));
  ASSERT_TRUE(tabs.isVisible());
  EXPECT_EQ(tabs.currentIndex(), 2);
  EXPECT_EQ(tabs.tabText(1).toStdString(), "a&&b.png");
  tabs.setCurrentIndex(1);
  EXPECT_EQ(main_.area().active(), &second);
  second.entries().select(1, true);
  second.document().dirty = true;
  main_.refresh();
  EXPECT_EQ(tabs.tabText(1).toStdString(), "a&&b.png*");
  tabs.moveTab(2, 0);
  EXPECT_EQ(tabs.documents(), (std::vector{&third, &first, &second}));
  main_.run(805);
  EXPECT_EQ(main_.area().active(), &third) << "round and round in the order of the tabs";
  main_.run(806);
  EXPECT_EQ(main_.area().active(), &second);
  for (const int command : {801, 802}) {
    main_.run(command);
    settle();
    EXPECT_FALSE(tabs.isVisible()) << command;
    second.showMaximized();
    settle();
    EXPECT_TRUE(tabs.isVisible()) << command;
  }
  emit tabs.tabCloseRequested(0);
  settle();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  settle();
  EXPECT_EQ(tabs.documents(), (std::vector{&first, &second}));
  answers_.answers = {Answer::Cancel};
  emit tabs.tabCloseRequested(1);
  settle();
  EXPECT_EQ(tabs.count(), 2) << "its changes were asked about";
  main_.run(109);
}

}  // namespace
}  // namespace vellum::testing
