// The list of a document window on the screen. It draws the window's ChunkList and keeps no list of its own.
#pragma once

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QMimeData>
#include <functional>

#include "core/edit/move_chunks.h"
#include "core/edit/placement.h"
#include "shell/list/row_geometry.h"
#include "shell/list/row_search.h"
#include "shell/list/row_selection.h"
#include "shell/list/row_tip.h"
#include "shell/list/thumbnail.h"

namespace vellum {

/// Listens to `window.list` for as long as it lives. Nothing that it does while scrolling, drawing or taking
/// a click costs more than the rows that are seen.
class ChunkListView : public QAbstractScrollArea {
  Q_OBJECT
 public:
  ChunkListView(DocumentWindow& window, ThumbnailCache& thumbnails, QWidget* parent = nullptr);
  ~ChunkListView() override;

  /// Where a row is drawn, in the viewport's coordinates.
  QRect row_rect(std::size_t row);
  /// The row under a place of the viewport; kNoEntry where there is none.
  std::size_t row_at(QPoint place);
  void show_row(std::size_t row);
  /// Scrolls so that the list's `topIndex` is the first row.
  void show_top_row();

  /// Looks for a text in the rows. `hide`: rows without it are not shown, and what is not shown is not
  /// selected; a row that a command selects later is shown all the same. An empty text shows all.
  void find_text(const QString& text, bool hide);
  const RowSearch& search() const { return search_; }
  /// The caret goes to the next row with the text, or to the one before; nothing where there is none.
  void go_to_found(bool forwards);
  bool is_shown(std::size_t row) const { return shown_.empty() || (row < shown_.size() && shown_[row]); }
  /// Selects all rows that are shown, or none; `images`: image entries alone.
  void select_shown(bool selected, bool images);
  std::size_t entries() const { return window_.list.size(); }

  /// Whether what is dragged over the list may be dropped on it, and what then puts it behind a row.
  std::function<bool(const QMimeData&)> may_drop;
  /// Whether the document is among the favorites, which a mark on its first row tells.
  std::function<bool()> is_favorite;
  std::function<void(const QMimeData&, std::size_t row)> drop;
  /// Whether what is dragged are selected rows of this list: they move, or are copied while Control is held,
  /// to where a line shows; what then puts them in front of the entry at a position.
  std::function<bool(const QMimeData&)> is_own;
  std::function<void(std::size_t position, bool copy)> put_here;

  /// How many rows were drawn since the view was made.
  std::uint64_t rows_painted() const { return rowsPainted_; }

 signals:
  /// Entries, selection or caret are no longer what they were.
  void changed();
  /// A double click, or Enter: the caret's row is to be edited.
  void edit_wanted();
  /// A right click on a row (the last one where there is none), or the menu key.
  void menu_wanted(std::size_t row, QPoint screenPlace);
  /// The selected rows are to be dragged away.
  void drag_wanted();
  /// Escape, while a text is looked for.
  void search_ended();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  bool viewportEvent(QEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dragLeaveEvent(QDragLeaveEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  void list_changed(const ListChange& change);
  void settle();
  void lay_out();
  void update_rows(std::size_t first, std::size_t count);
  void update_scroll_bar();
  void look_up_document();
  void show_found();
  void settle_caret();
  std::size_t shown_from(std::size_t row, bool forwards) const;
  void paint_rows(QPainter& painter, const QRect& area);
  void apply(std::size_t row, SelectMode mode);
  void paint_drop_mark(QPainter& painter);
  void follow_drag();
  void hover(QPoint place);
  std::size_t drop_row(QPoint place);
  std::size_t gap_at(QPoint place);
  bool is_own_drag(const QDropEvent& event) const;
  void follow_own_drag(QDropEvent& event);
  void mark_drop(std::int32_t position);
  void scroll_beside(QPoint place);
  std::size_t row_for_key(int key) const;
  void announce_caret();

  std::int64_t scrolled() const;

  DocumentWindow& window_;
  ThumbnailCache& thumbnails_;
  RowGeometry geometry_;
  RowSelection selection_;
  RowSearch search_;
  bool hides_ = false;       ///< rows without the text that is looked for
  bool searchOld_ = false;   ///< entries came or went since it was looked for
  std::vector<bool> shown_;  ///< empty: all rows
  Extent canvas_;
  Colour background_ = 0;
  std::vector<std::uint8_t> transparency_;  ///< of the document's pictures
  std::uint64_t rowsPainted_ = 0;
  bool layoutPending_ = false;
  bool dragging_ = false;
  QPoint dragPlace_;
  std::size_t pressedRow_ = kNoEntry;  ///< a selected row that was pressed; a release there selects it alone
  QPoint pressedPlace_;
  QBasicTimer dragTimer_;
  ListShape dropShape_;  ///< of the list while something is dragged over it
  std::pair<PutRows, bool> lastGap_{{kNoEntry, false}, false};  ///< where a drag stood, and whether it may
  int dropScroll_ = 0;  ///< pixels that a drag beside the edge scrolls by
  QBasicTimer dropTimer_;
  RowTip tip_;
};

}  // namespace vellum
