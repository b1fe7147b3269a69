// A picture at any zoom, over checkers where it lets them through.
#pragma once

#include <QAbstractScrollArea>
#include <QImage>
#include <QPixmap>
#include <optional>
#include <span>

#include "image/picture.h"

namespace vellum {

/// Keys: plus and minus zoom, 1 shows actual pixels, F fits; arrows scroll. The wheel zooms with Control
/// held, and dragging moves. While one picks, a click gives a pixel, and arrows move a cross that Space or
/// Enter picks at.
class PictureView : public QAbstractScrollArea {
  Q_OBJECT
 public:
  explicit PictureView(QWidget* parent = nullptr);

  /// Zoom and place stay where the size is the same; otherwise the picture is fitted.
  void set_picture(const Picture& picture);
  const Picture& picture() const { return picture_; }
  void set_picking(bool picking);
  /// The same, but zoom and place stay whatever the size is.
  void change_picture(const Picture& picture);
  /// One places a part of the picture: dragging it, and arrow keys (ten pixels with Shift), tell how far it
  /// is to go. `part` and `canvas` are outlined, in pixels of the picture; an empty one isn't.
  void set_placing(bool placing);
  void set_outlines(const QRect& part, const QRect& canvas);
  /// Behind what lets through; without a color checkers.
  void set_ground(std::optional<QColor> ground);

  /// The steps that plus, minus and the wheel take, in percent.
  static std::span<const int> zoom_steps();
  /// Percent, 25 to 3200.
  int zoom() const { return zoom_; }
  /// Keeps what is under `anchor` (in the viewport) where it is.
  void set_zoom(int percent, QPointF anchor);
  void set_zoom(int percent);
  /// One step up or down.
  void step_zoom(int direction, QPointF anchor);
  /// The largest step up to 100 % at which all of it is seen; kept so when the size of the view changes.
  void fit();

  /// Where the picture lies in the viewport, and the pixel under a place of it (outside the picture too).
  QRect picture_rect() const;
  QPoint pixel_at(QPointF place) const;
  /// The color of a pixel with its alpha, through the table of an indexed picture.
  QColor pixel_color(QPoint pixel) const;
  /// "12, 5: index 3 (255, 0, 0)".
  QString pixel_text(QPoint pixel) const;
  QSize sizeHint() const override { return {480, 360}; }

 signals:
  void zoomed(int percent);
  /// What is under the pointer; empty outside the picture.
  void pointed(const QString& text);
  void picked(QPoint pixel);
  void moved(QPoint pixels);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void leaveEvent(QEvent* event) override;
  bool viewportEvent(QEvent* event) override;

 private:
  void zoom_to(int percent, QPointF anchor);
  QSize scaled_size() const;
  bool holds(QPoint pixel) const;
  void update_scroll_bars();
  void paint_picture(QPainter& painter, const QRect& area);
  void paint_grid(QPainter& painter, const QRect& area) const;
  void paint_cross(QPainter& painter) const;
  void paint_outlines(QPainter& painter) const;
  bool move_cross(int key);
  bool move_part(const QKeyEvent& event);
  void tell(QPoint pixel);

  Picture picture_;
  QImage image_;     ///< upright
  QPixmap reduced_;  ///< the whole picture at the zoom, below 100 %
  int zoom_ = 100;
  bool fitted_ = true;  ///< follows the size of the view until someone zooms
  bool picking_ = false, placing_ = false, holding_ = false;
  QRect part_, canvas_;
  QPointF heldAt_;  ///< where the part was taken hold of, moved on by what was told
  std::optional<QColor> ground_;
  QPoint cross_;
  QPoint dragFrom_;
  bool dragging_ = false;
};

}  // namespace vellum
