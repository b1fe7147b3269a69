// The part of a viewer that shows the frame, at any zoom. A frame's pixel at 100 percent is one of the
// screen's, whatever the desktop's scale factor is: places and scroll values count those.
#pragma once

#include <QAbstractScrollArea>
#include <QImage>

#include "image/picture.h"

namespace vellum {

class ViewerCanvas : public QAbstractScrollArea {
  Q_OBJECT
 public:
  explicit ViewerCanvas(QWidget* parent = nullptr);

  /// Shows a frame now, before the call returns. `multiplied`: colors of 32 bits are multiplied by alpha.
  void show_frame(const Picture& picture, bool multiplied);
  const QImage& image() const { return image_; }

  /// Of the part around the frame, and below it where it lets through.
  void set_ground(const QColor& around, bool checkered);
  int zoom() const { return zoom_; }
  /// Keeps what is under `anchor` (in the viewport) where it is.
  void set_zoom(int percent, QPointF anchor);
  void set_zoom(int percent);
  /// To the next of the usual zooms.
  void step_zoom(int direction, QPointF anchor);
  void fit();
  /// The frame lies in the middle of the height too, and fits whatever size this gets, until it is zoomed by
  /// hand.
  void set_filling(bool filling);
  /// In the viewport.
  QRect frame_place() const;
  void scroll_by(QPoint pixels);

 signals:
  void zoomed(int percent);
  void close_wanted();
  void full_screen_wanted();
  void pointer_moved();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  /// The right button closes; it opens no menu.
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  QSize room() const;
  void update_scroll_bars();

  Picture picture_;
  QImage image_;
  QImage reduced_;  ///< of a 1-bit picture below 100 %
  QColor around_;
  bool checkered_ = false, middle_ = false, fits_ = false, dragging_ = false;
  int zoom_ = 100;
  QPoint dragFrom_;
};

}  // namespace vellum
