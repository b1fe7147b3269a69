// A film strip: the frames of a document side by side. It draws the document's list and selects in it, and
// keeps no list of its own.
#pragma once

#include <QAbstractScrollArea>
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
  StripView(DocumentWindow& window, ThumbnailCache& thumbnails, QWidget* parent = nullptr);

  /// What the user asks for by double click or Return, Delete, dragging or Alt and an arrow: a frame, and
  /// where the selected ones go (in front of frame `to`, or at the end).
  std::function<void(std::size_t entry)> open_entry;
  std::function<void()> delete_selected;
  std::function<void(std::size_t to)> move_selected;

  /// Reads the document and the options anew.
  void reload();
  std::size_t frames() const { return entries_.size(); }
  /// Where a frame is drawn, in the viewport's coordinates.
  QRect cell_rect(std::size_t frame) const;
  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  bool vertical() const;
  QSize cell_size() const;
  int pitch() const;
  std::optional<std::size_t> frame_at(QPoint place) const;
  std::size_t current() const;
  void choose(std::size_t frame, Qt::KeyboardModifiers modifiers);
  void show_frame(std::size_t frame);
  void shift(bool forward);
  void paint_cell(QPainter& painter, std::size_t frame);
  QPixmap picture_of_frame(std::size_t frame, QSize room);
  QPixmap composed(std::size_t frame, QSize room);
  std::size_t drop_position(QPoint place) const;

  DocumentWindow& window_;
  ThumbnailCache& thumbnails_;
  std::vector<std::size_t> entries_;
  std::vector<std::shared_ptr<const ChunkRecord>> shown_;  ///< the records that were composed
  std::vector<QPixmap> composed_;
  CanvasState state_;
  ViewValues values_;
  std::size_t anchor_ = 0;
  std::optional<std::size_t> pressed_, drop_;
  QPoint pressedAt_;
};

}  // namespace vellum
