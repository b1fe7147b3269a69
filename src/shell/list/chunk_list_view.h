// The list of a document window on the screen. It draws the window's ChunkList and keeps no list of its own.
#pragma once

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QMimeData>
#include <functional>

#include "core/edit/placement.h"
#include "shell/list/row_geometry.h"
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
  /// Whether what is dragged over the list may be dropped on it, and what then puts it behind a row.
  std::function<bool(const QMimeData&)> may_drop;
  /// Whether the document is among the favorites, which a mark on its first row tells.
  std::function<bool()> is_favorite;
  std::function<void(const QMimeData&, std::size_t row)> drop;

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
  void paint_rows(QPainter& painter, const QRect& area);
  void apply(std::size_t row, SelectMode mode);
  void paint_drop_mark(QPainter& painter);
  void follow_drag();
  void hover(QPoint place);
  std::size_t drop_row(QPoint place);
  void mark_drop(std::int32_t position);
  void scroll_beside(QPoint place);
  std::size_t row_for_key(int key) const;
  void announce_caret();

  std::int64_t scrolled() const;

  DocumentWindow& window_;
  ThumbnailCache& thumbnails_;
  RowGeometry geometry_;
  RowSelection selection_;
  Extent canvas_;
  Colour background_ = 0;
  std::uint64_t rowsPainted_ = 0;
  bool layoutPending_ = false;
  bool dragging_ = false;
  QPoint dragPlace_;
  std::size_t pressedRow_ = kNoEntry;  ///< a selected row that was pressed; a release there selects it alone
  QPoint pressedPlace_;
  QBasicTimer dragTimer_;
  ListShape dropShape_;  ///< of the list while something is dragged over it
  int dropScroll_ = 0;   ///< pixels that a drag beside the edge scrolls by
  QBasicTimer dropTimer_;
  RowTip tip_;
};

}  // namespace vellum
