// A film strip: the frames of a document side by side, each at its place on the canvas. It draws the
// document's list and selects in it, and keeps no list of its own.
#pragma once

#include <QAbstractScrollArea>
#include <QMimeData>
#include <QPixmap>
#include <functional>

#include "core/model/compose.h"
#include "operations/frames.h"
#include "shell/list/thumbnail.h"

namespace vellum {

/// Bits of `StripOptions`.
enum StripOption {
  kStripNumbers = 1,
  kStripDelays = 2,
  kStripCheckers = 4,
  kStripCanvases = 8,
  kStripVertical = 16,
  kStripGaps = 32,
};

class StripView : public QAbstractScrollArea {
  Q_OBJECT
 public:
  explicit StripView(ThumbnailCache& thumbnails, QWidget* parent = nullptr);

  /// Null: nothing is shown. The window must live until another one is shown.
  void show_window(DocumentWindow* window);

  /// What the user asks for by double click or Return, Delete, dragging or Alt and an arrow: a frame, and
  /// where the selected ones go (in front of frame `to`, or at the end), or copies of them.
  std::function<void(std::size_t entry)> open_entry;
  std::function<void()> selected;  ///< a frame was chosen, which is the caret's entry now
  std::function<void()> delete_selected;
  std::function<void(std::size_t to, bool copy)> move_selected;
  std::function<void()> drag_out;                ///< the selected frames were dragged out of the strip
  std::function<bool(const QMimeData&)> is_own;  ///< those come back

  /// Reads the document and the options anew.
  void reload();
  /// Scrolls to the caret's frame where the caret has moved.
  void show_current();
  std::size_t frames() const { return entries_.size(); }
  /// Where a frame is drawn, in the viewport's coordinates.
  QRect cell_rect(std::size_t frame) const;
  /// Frames run down and not across: by the option, or where this is higher than wide.
  bool vertical() const;
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dragLeaveEvent(QDragLeaveEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  int caption_height() const;
  QSize room() const;
  QSize cell_size() const;
  int pitch() const;
  std::optional<std::size_t> frame_at(QPoint place) const;
  std::size_t current() const;
  void choose(std::size_t frame, Qt::KeyboardModifiers modifiers);
  void show_frame(std::size_t frame);
  void shift(bool forward);
  void paint_cell(QPainter& painter, std::size_t frame);
  void paint_frame(QPainter& painter, std::size_t frame, const QRect& canvas);
  void paint_drop_mark(QPainter& painter);
  const QPixmap& composed(std::size_t frame, QSize size);
  std::size_t drop_position(QPoint place) const;
  void mark_drop(std::optional<std::size_t> position);
  void follow_drag(QDropEvent& event);
  bool leaves(QPoint place) const;

  DocumentWindow* window_ = nullptr;
  ThumbnailCache& thumbnails_;
  std::vector<std::size_t> entries_;
  std::vector<std::shared_ptr<const ChunkRecord>> shown_;  ///< the records that were composed
  std::vector<QPixmap> composed_;
  QSize composedSize_;
  CanvasState state_;
  ViewValues values_;
  std::size_t anchor_ = 0, followed_ = 0;  ///< frame that a range begins at; one that was scrolled to
  std::optional<std::size_t> pressed_, drop_;
  QPoint pressedAt_;
};

}  // namespace vellum
