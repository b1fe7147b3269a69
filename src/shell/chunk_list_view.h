// The list of a document window on the screen. It draws the window's ChunkList and keeps no list of its own.
#pragma once

#include <QAbstractScrollArea>
#include <QBasicTimer>

#include "core/document.h"
#include "shell/row_geometry.h"
#include "shell/row_selection.h"
#include "shell/thumbnail.h"

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
  /// How many rows were drawn since the view was made.
  std::uint64_t rows_painted() const { return rowsPainted_; }

 signals:
  /// Entries, selection or caret are no longer what they were.
  void changed();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  void list_changed(const ListChange& change);
  void settle();
  void lay_out();
  void update_rows(std::size_t first, std::size_t count);
  void update_scroll_bar();
  void paint_rows(QPainter& painter, const QRect& area);
  void apply(std::size_t row, SelectMode mode);
  void follow_drag();
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
  QBasicTimer dragTimer_;
};

}  // namespace vellum
