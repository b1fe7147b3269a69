#include "shell/list/chunk_list_view.h"

#include <QScrollBar>

#include "core/model/chunk_layout.h"
#include "shell/list/row_painter.h"
#include "shell_fixture.h"

namespace vellum::testing {
namespace {

/// A view on its own, with room for a dozen text rows.
class ViewTest : public ::testing::Test {
 protected:
  void show(DocumentWindow content, int scale = 0) {
    window_ = std::move(content);
    window_.document.thumbScale = scale;
    chunk_list_layout(window_.list, window_.document);
    view_ = std::make_unique<ChunkListView>(window_, thumbnails_);
    view_->resize(300, 24 * 12);
    view_->show();
    settle();
  }
  static void settle() { QTest::qWait(1); }
  void click(std::size_t row, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseClick(view_->viewport(), Qt::LeftButton, modifiers, view_->row_rect(row).center());
  }
  /// How many rows are drawn by what `action` causes.
  template <class Action>
  std::uint64_t rows_drawn(Action action) {
    settle();
    const std::uint64_t before = view_->rows_painted();
    action();
    settle();
    return view_->rows_painted() - before;
  }
  std::set<std::size_t> selected() const { return selected_rows(window_.list); }

  DocumentWindow window_;
  ThumbnailCache thumbnails_;
  std::unique_ptr<ChunkListView> view_;
};

using Rows = std::set<std::size_t>;
constexpr auto kShift = Qt::ShiftModifier;
constexpr auto kControl = Qt::ControlModifier;

TEST_F(ViewTest, PlacesAndRowsAgreeWhereverTheListIsScrolled) {
  show(animated_document(30, 80, 60), 5);
  for (const int scrolled : {0, 1, 333, 1500, 1'000'000}) {
    view_->verticalScrollBar()->setValue(scrolled);
    for (std::size_t row = 0; row < window_.list.size(); ++row) {
      const QRect rect = view_->row_rect(row);
      EXPECT_EQ(view_->row_at(rect.topLeft()), row);
      EXPECT_EQ(view_->row_at(rect.bottomRight()), row);
    }
    EXPECT_TRUE(view_->row_rect(window_.list.topIndex).intersects(view_->viewport()->rect()));
  }
}

TEST_F(ViewTest, ClicksSelect) {
  struct Step {
    std::size_t row;
    Qt::KeyboardModifiers modifiers;
  };
  struct Case {
    std::vector<Step> steps;
    Rows selected;
  };
  const Case cases[] = {
      {{{3, {}}}, {3}},
      {{{3, {}}, {5, {}}}, {5}},
      {{{3, {}}, {5, kControl}}, {3, 5}},
      {{{3, {}}, {5, kControl}, {3, kControl}}, {5}},
      {{{3, {}}, {6, kShift}}, {3, 4, 5, 6}},
      {{{3, {}}, {6, kShift}, {4, kShift}}, {3, 4}},
      {{{3, {}}, {6, kShift}, {1, kShift}}, {1, 2, 3}},
      {{{8, {}}, {3, kControl}, {5, kShift}}, {3, 4, 5}},
      {{{3, {}}, {6, kShift}, {5, {}}}, {5}},
      {{{2, {}}, {4, kControl}, {4, {}}}, {4}},
  };
  for (const Case& c : cases) {
    show(long_document(20));
    for (const Step& step : c.steps) click(step.row, step.modifiers);
    EXPECT_EQ(selected(), c.selected) << "case " << &c - cases;
    EXPECT_EQ(window_.document.caret, static_cast<int>(c.steps.back().row)) << "case " << &c - cases;
  }
}

TEST_F(ViewTest, DraggingSelectsARangeBothWays) {
  show(long_document(20));
  const auto place = [this](std::size_t row) { return view_->row_rect(row).center(); };
  QTest::mousePress(view_->viewport(), Qt::LeftButton, {}, place(4));
  const auto move = [&](std::size_t row) {
    QMouseEvent event(QEvent::MouseMove, place(row), view_->viewport()->mapToGlobal(place(row)), Qt::NoButton,
                      Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view_->viewport(), &event);
  };
  move(7);
  EXPECT_EQ(selected(), (Rows{4, 5, 6, 7}));
  move(5);
  EXPECT_EQ(selected(), (Rows{4, 5}));
  move(2);
  EXPECT_EQ(selected(), (Rows{2, 3, 4}));
  QTest::mouseRelease(view_->viewport(), Qt::LeftButton, {}, place(2));
  EXPECT_EQ(window_.document.caret, 2);
}

TEST_F(ViewTest, KeysMoveTheCaretAndSelect) {
  struct Key {
    Qt::Key key;
    Qt::KeyboardModifiers modifiers;
  };
  struct Case {
    std::vector<Key> keys;
    int caret;
    Rows selected;
  };
  const Case cases[] = {
      {{{Qt::Key_Down, {}}}, 6, {6}},
      {{{Qt::Key_Up, {}}}, 4, {4}},
      {{{Qt::Key_Home, {}}}, 0, {0}},
      {{{Qt::Key_Home, {}}, {Qt::Key_Up, {}}}, 0, {0}},
      {{{Qt::Key_End, {}}}, 39, {39}},
      {{{Qt::Key_End, {}}, {Qt::Key_Down, {}}}, 39, {39}},
      {{{Qt::Key_PageDown, {}}}, 17, {17}},
      {{{Qt::Key_PageDown, {}}, {Qt::Key_PageUp, {}}}, 5, {5}},
      {{{Qt::Key_Down, kShift}, {Qt::Key_Down, kShift}, {Qt::Key_Up, kShift}}, 6, {5, 6}},
      {{{Qt::Key_Home, kShift}}, 0, {0, 1, 2, 3, 4, 5}},
      {{{Qt::Key_Down, kControl}, {Qt::Key_Down, kControl}}, 7, {5}},
      {{{Qt::Key_Down, kControl}, {Qt::Key_Down, kControl}, {Qt::Key_Space, kControl}}, 7, {5, 7}},
      {{{Qt::Key_Down, kControl}, {Qt::Key_Space, {}}}, 6, {6}},
  };
  for (const Case& c : cases) {
    show(long_document(40));
    click(5);
    for (const Key& key : c.keys) QTest::keyClick(view_.get(), key.key, key.modifiers);
    EXPECT_EQ(window_.document.caret, c.caret) << "case " << &c - cases;
    EXPECT_EQ(selected(), c.selected) << "case " << &c - cases;
    EXPECT_TRUE(view_->viewport()->rect().contains(view_->row_rect(static_cast<std::size_t>(c.caret))))
        << "case " << &c - cases;
  }
}

TEST_F(ViewTest, KeysAndClicksOnAnEmptyListDoNothing) {
  show({});
  QTest::keyClick(view_.get(), Qt::Key_Down);
  QTest::keyClick(view_.get(), Qt::Key_Space);
  QTest::mouseClick(view_->viewport(), Qt::LeftButton, {}, {20, 20});
  EXPECT_EQ(window_.document.caret, 0);
}

TEST_F(ViewTest, ANewCaretRedrawsTheTwoRowsInvolved) {
  show(long_document(40));
  click(2);
  EXPECT_EQ(rows_drawn([this] { click(8); }), 2u);
  EXPECT_EQ(rows_drawn([this] { QTest::keyClick(view_.get(), Qt::Key_Down, kControl); }), 2u);
}

TEST_F(ViewTest, ALongListCostsTheRowsThatAreSeen) {
  show(long_document(100'000));
  constexpr std::uint64_t kSeen = 13;
  EXPECT_LE(rows_drawn([this] { view_->viewport()->update(); }), kSeen);
  EXPECT_LE(rows_drawn([this] { view_->verticalScrollBar()->setValue(1'200'000); }), kSeen);
  EXPECT_LE(rows_drawn([this] { QTest::keyClick(view_.get(), Qt::Key_End); }), kSeen);
  EXPECT_EQ(window_.document.caret, 99'999);
  EXPECT_LE(rows_drawn([this] { window_.list.select_all(true); }), kSeen);
  EXPECT_LE(rows_drawn([this] { click(99'995); }), kSeen);
  EXPECT_EQ(selected(), (Rows{99'995}));
  EXPECT_LE(rows_drawn([this] { QTest::keyClick(view_.get(), Qt::Key_Home, kShift); }), kSeen);
  EXPECT_EQ(window_.list.selected_count(), 99'996u);
}

TEST_F(ViewTest, EntriesThatComeOneByOneAreLaidOutTogether) {
  show({});
  int told = 0;
  QObject::connect(view_.get(), &ChunkListView::changed, [&told] { ++told; });
  const DocumentWindow source = long_document(500);
  const std::uint64_t drawn = rows_drawn([&] {
    for (std::size_t i = 0; i < source.list.size(); ++i)
      chunk_list_append(window_.list, window_.document, source.list.record(i));
    chunk_list_close_change(window_.list, window_.document);
  });
  EXPECT_LE(drawn, 2 * 13u) << "once, and once more for the scroll bar that appears";
  EXPECT_GE(told, 500);
  EXPECT_EQ(view_->row_at({10, 24 * 3 + 1}), 3u);
}

TEST_F(ViewTest, ThumbnailsAreMadeForTheRowsThatAreSeenAndKept) {
  show(animated_document(200, 80, 60), 5);
  const std::uint64_t made = thumbnails_.made();
  EXPECT_GT(made, 0u);
  EXPECT_LE(made, 4u);
  rows_drawn([this] { view_->viewport()->update(); });
  EXPECT_EQ(thumbnails_.made(), made);
}

}  // namespace
}  // namespace vellum::testing
