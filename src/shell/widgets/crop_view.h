// A picture with a rectangle on it that the mouse and the keyboard draw, move and stretch.
#pragma once

#include <QImage>
#include <QWidget>

namespace vellum {

class CropView : public QWidget {
  Q_OBJECT
 public:
  explicit CropView(QWidget* parent = nullptr);

  /// What lies below the rectangle; shown as large as fits, enlarged in whole steps alone.
  void set_picture(const QImage& picture);
  /// In pixels of the picture, held inside it.
  void set_rectangle(const QRect& rectangle);
  const QRect& rectangle() const { return rectangle_; }
  /// Width to height that dragging keeps; 0: free.
  void set_aspect(double aspect);

  QSize sizeHint() const override { return {400, 300}; }
  QSize minimumSizeHint() const override { return {200, 150}; }

 signals:
  /// The user made the rectangle another.
  void drawn(const QRect& rectangle);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  /// What a press takes hold of: edges (bits 1 left, 2 top, 4 right, 8 bottom), the inside, a new rectangle.
  enum Hold { kNothing = 0, kLeft = 1, kTop = 2, kRight = 4, kBottom = 8, kInside = 16, kNew = 32 };

  QRectF shown_area() const;
  QRectF on_screen(const QRect& rectangle) const;
  QPoint pixel_at(const QPointF& position) const;
  int hold_at(const QPointF& position) const;
  void drag_to(const QPoint& pixel);
  void take(QRect rectangle);
  QRect in_aspect(QRect rectangle, int hold) const;

  QImage picture_;
  QRect rectangle_;
  double aspect_ = 0;
  int hold_ = kNothing;
  QPoint pressed_;
  QRect before_;
};

}  // namespace vellum
