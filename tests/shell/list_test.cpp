// The list of the main window: finding rows, dragging them inside it, and the menu of a row.
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QMenu>

#include "configuration/shell_settings.h"
#include "core/edit/insert_chunk.h"
#include "core/model/chunk_layout.h"
#include "shell/look/text.h"
#include "shell/window/row_drag.h"
#include "shell_fixture.h"
#include "support/documents.h"

namespace vellum::testing {
namespace {

using Rows = std::set<std::size_t>;

constexpr int kDelete = 61, kEdit = 205, kUndo = 204, kSelectAll = 50, kFind = 210, kNext = 211,
              kBackwards = 212;

class ListTest : public WindowTest {
 protected:
  /// IHDR, acTL, two texts, three frames, IEND.
  DocumentFrame& add_mixed() {
    DocumentWindow window = animated_document(3);
    const std::string nul(1, '\0');
    for (const std::string& text : {"Author" + nul + "Somebody else", "Title" + nul + "Hay and a Needle"})
      chunk_list_insert(window.list, window.document, 2, record_of(tag::tEXt, text));
    chunk_list_close_change(window.list, window.document);
    DocumentFrame& frame = add(std::move(window));
    frame.set_scale(0);
    settle();
    return frame;
  }
  static void find(DocumentFrame& frame, const QString& text) {
    auto* line = frame.find_bar().findChild<QLineEdit*>();
    line->clear();
    QTest::keyClicks(line, text);
  }
  static Rows seen(DocumentFrame& frame) {
    Rows rows;
    for (std::size_t i = 0; i < frame.entries().size(); ++i)
      if (frame.list().row_rect(i).height() > 0) rows.insert(i);
    return rows;
  }
  static std::string tags(DocumentFrame& frame) { return tags_of(frame.entries()); }

  SettingsGuard guard_;
};

TEST_F(ListTest, FindsRowsByWhatTheyShowAndByTheirTexts) {
  const struct {
    const char* text;
    Rows rows;
  } cases[] = {{"needle", {2}},           {"TITLE", {2}}, {"some", {3}},     {"image", {4, 5, 6}},
               {"40 x 30", {0, 4, 5, 6}}, {"7: IM", {6}}, {"3 frames", {1}}, {"nothing like it", {}}};
  DocumentFrame& frame = add_mixed();
  main_.run(kFind);
  for (const auto& c : cases) {
    find(frame, c.text);
    EXPECT_EQ(seen(frame), c.rows) << c.text;
    const QString told = QStringLiteral("%1 of 8 rows").arg(c.rows.size());
    EXPECT_EQ(frame.find_bar().told(), c.rows.empty() ? text_of(StringId::FindNoMatch) : told) << c.text;
    main_.run(kSelectAll);
    EXPECT_EQ(selected_rows(frame.entries()), c.rows) << c.text;
    for (const Qt::Key key :
         {Qt::Key_Home, Qt::Key_Down, Qt::Key_Down, Qt::Key_End, Qt::Key_Up, Qt::Key_PageUp}) {
      QTest::keyClick(&frame.list(), key, Qt::ShiftModifier);
      const Rows selected = selected_rows(frame.entries());
      EXPECT_TRUE(std::ranges::includes(c.rows, selected)) << c.text;
      if (!c.rows.empty())
        EXPECT_TRUE(c.rows.contains(static_cast<std::size_t>(frame.document().caret))) << c.text;
    }
  }
  QTest::keyClick(frame.find_bar().findChild<QLineEdit*>(), Qt::Key_Escape);
  EXPECT_EQ(seen(frame).size(), 8u);
  EXPECT_FALSE(frame.find_bar().isVisible());
}

TEST_F(ListTest, CommandsWorkOnTheRowsThatAreSeen) {
  DocumentFrame& frame = add_mixed();
  main_.run(kSelectAll);
  main_.run(kFind);
  find(frame, "image");
  main_.run(kDelete);
  settle();
  EXPECT_EQ(tags(frame), "IHDR acTL tEXt tEXt IEND");
  EXPECT_TRUE(seen(frame).empty());
  main_.run(kEdit);  // no dialog may open: its caret is not seen
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  main_.run(kUndo);
  settle();
  EXPECT_EQ(seen(frame), (Rows{4, 5, 6})) << "a row that comes is looked at";
  frame.entries().select_all(false);
  ASSERT_TRUE(insert_chunk(frame.content(), tag::tIME, {}, main_.services().host));
  settle();
  EXPECT_TRUE(frame.list().is_shown(caret_entry(frame.content()))) << "what a command made is seen";
}

TEST_F(ListTest, StepsFromOneFoundRowToTheNextAndAroundTheEnds) {
  settings::FindHidesRows = 0;
  DocumentFrame& frame = add_mixed();
  main_.run(kFind);
  find(frame, "tEXt");
  EXPECT_EQ(seen(frame).size(), 8u);
  std::vector<int> carets;
  for (const int command : {kNext, kNext, kNext, kBackwards, kBackwards}) {
    main_.run(command);
    carets.push_back(frame.document().caret);
  }
  EXPECT_EQ(carets, (std::vector{2, 3, 2, 3, 2}));
  EXPECT_EQ(selected_rows(frame.entries()), (Rows{2}));
}

TEST_F(ListTest, RowsAreDraggedToWhereTheLineShows) {
  struct Case {
    std::vector<std::size_t> selected;
    std::size_t gap;
    bool control;
    std::vector<std::size_t> order;  ///< of the entries as they were; empty: not taken
  };
  const Case cases[] = {
      {{4}, 7, false, {0, 1, 2, 3, 5, 6, 4, 7}},
      {{4, 6}, 5, false, {0, 1, 2, 3, 4, 6, 5, 7}},
      {{6}, 4, false, {0, 1, 2, 3, 6, 4, 5, 7}},
      {{2, 3}, 6, false, {0, 1, 4, 5, 2, 3, 6, 7}},
      {{2, 5}, 4, false, {0, 1, 3, 2, 5, 4, 6, 7}},
      {{5}, 5, false, {0, 1, 2, 3, 4, 5, 6, 7}},
      {{5}, 7, true, {0, 1, 2, 3, 4, 5, 6, 5, 7}},
      {{2, 4}, 6, true, {0, 1, 2, 3, 4, 5, 2, 4, 6, 7}},
      {{0}, 4, false, {}},
      {{4}, 8, false, {}},
      {{0, 4}, 6, true, {}},
  };
  for (const Case& c : cases) {
    DocumentFrame& frame = add_mixed();
    ChunkList& list = frame.entries();
    std::vector<std::shared_ptr<const ChunkRecord>> before, after;
    for (std::size_t i = 0; i < list.size(); ++i) before.push_back(list.entry(i).record);
    for (const std::size_t row : c.selected) list.select(row, true);
    const std::unique_ptr<QMimeData> rows(dragged_rows(frame));
    const QRect last = frame.list().row_rect(std::min(c.gap, list.size() - 1));
    const QPoint place(20, c.gap < list.size() ? last.top() + 2 : last.bottom() - 2);
    const auto modifiers = c.control ? Qt::ControlModifier : Qt::NoModifier;
    const auto actions = Qt::CopyAction | Qt::MoveAction;
    QDragEnterEvent enter(place, actions, rows.get(), Qt::LeftButton, modifiers);
    QApplication::sendEvent(frame.list().viewport(), &enter);
    EXPECT_EQ(enter.isAccepted(), !c.order.empty());
    EXPECT_EQ(frame.document().DropInsertMark, c.order.empty() ? -1 : static_cast<int>(c.gap));
    QDropEvent event(place, actions, rows.get(), Qt::LeftButton, modifiers);
    QApplication::sendEvent(frame.list().viewport(), &event);
    settle();
    settle();
    for (std::size_t i = 0; i < list.size(); ++i) after.push_back(list.entry(i).record);
    std::vector<std::shared_ptr<const ChunkRecord>> wanted;
    for (const std::size_t i : c.order) wanted.push_back(before[i]);
    if (c.order.empty()) wanted = before;
    // A header may have been made anew with the count of the frames.
    for (std::size_t i = 0; i < std::min(wanted.size(), after.size()); ++i)
      if (i != 1) EXPECT_EQ(after[i], wanted[i]) << "case " << &c - cases << ", row " << i;
    EXPECT_EQ(after.size(), wanted.size()) << "case " << &c - cases;
    EXPECT_EQ(frame.content().undoLevels.size(), wanted == before ? 0u : 1u) << "case " << &c - cases;
    if (wanted != before) main_.run(kUndo);
    EXPECT_EQ(list.entry(4).record, before[4]) << "case " << &c - cases;
    EXPECT_TRUE(answers_.messages.empty());
    frame.close_without_question();
    settle();
  }
}

TEST_F(ListTest, TheMenuOfARowBeginsWithEditing) {
  DocumentFrame& frame = add_mixed();
  frame.document().caret = 5;
  QTest::keyClick(&frame.list(), Qt::Key_F10, Qt::ShiftModifier);
  auto* menu = main_.findChild<QMenu*>(QStringLiteral("row"));
  ASSERT_NE(menu, nullptr);
  std::string labels;
  for (int i = 0; i < 6; ++i)
    labels += menu->actions()[i]->text().section(u'\t', 0, 0).remove(u'&').toStdString() + '|';
  EXPECT_EQ(labels, "Edit chunk...|Insert|Cut|Copy|Paste|Delete chunk|");
  EXPECT_FALSE(menu->actions()[1]->menu()->isEmpty());
  EXPECT_EQ(frame.document().RightClickChunk, 5);
  menu->actions()[5]->trigger();
  menu->close();
  EXPECT_EQ(tags(frame), "IHDR acTL tEXt tEXt IDAT IDAT IEND") << "without a selection it takes its row";
}

}  // namespace
}  // namespace vellum::testing
