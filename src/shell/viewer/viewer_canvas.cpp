#include "shell/viewer/viewer_canvas.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>
#include <cmath>

#include "shell/look/viewer_image.h"
#include "shell/viewer/viewer_geometry.h"
#include "shell/widgets/checkers.h"
#include "shell/widgets/picture_view.h"

namespace vellum {
namespace {

constexpr int kScrollStep = 20;

}  // namespace

ViewerCanvas::ViewerCanvas(QWidget* parent) : QAbstractScrollArea(parent), around_(Qt::white) {
  setFrameShape(QFrame::NoFrame);
  setFocusPolicy(Qt::StrongFocus);
  setAccessibleName(tr("Animation"));
  setLayoutDirection(Qt::LeftToRight);  // a picture is never mirrored
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
  viewport()->setMouseTracking(true);
}

void ViewerCanvas::show_frame(const Picture& picture, bool multiplied) {
  const QSize before = image_.size();
  picture_ = picture;
  reduced_ = {};
  fill_image(image_, picture, multiplied);
  if (image_.size() != before && fits_) fit();
  if (image_.size() != before) update_scroll_bars();
  viewport()->repaint();
}

void ViewerCanvas::set_ground(const QColor& around, bool checkered) {
  around_ = around;
  checkered_ = checkered;
  viewport()->update();
}

QSize ViewerCanvas::room() const { return (QSizeF(viewport()->size()) * devicePixelRatioF()).toSize(); }

QRect ViewerCanvas::frame_place() const {
  return frame_rect(zoomed_size(image_.size(), zoom_), room(),
                    {horizontalScrollBar()->value(), verticalScrollBar()->value()}, middle_);
}

void ViewerCanvas::update_scroll_bars() {
  const QSize size = image_.isNull() ? QSize() : zoomed_size(image_.size(), zoom_);
  const auto set = [](QScrollBar* bar, int frame, int seen) {
    bar->setRange(0, std::max(frame - seen, 0));
    bar->setPageStep(seen);
    bar->setSingleStep(kScrollStep);
  };
  set(horizontalScrollBar(), size.width(), room().width());
  set(verticalScrollBar(), size.height(), room().height());
}

void ViewerCanvas::set_zoom(int percent) {
  fits_ = false;
  set_zoom(percent, QRectF(viewport()->rect()).center());
}

void ViewerCanvas::set_zoom(int percent, QPointF anchor) {
  percent = std::clamp(percent, kLeastZoom, kMostZoom);
  if (percent == zoom_) return;
  anchor *= devicePixelRatioF();
  const QPointF inside = (anchor - frame_place().topLeft()) * percent / zoom_;
  zoom_ = percent;
  reduced_ = {};
  update_scroll_bars();
  horizontalScrollBar()->setValue(static_cast<int>(std::lround(inside.x() - anchor.x())));
  verticalScrollBar()->setValue(static_cast<int>(std::lround(inside.y() - anchor.y())));
  viewport()->update();
  emit zoomed(zoom_);
}

void ViewerCanvas::step_zoom(int direction, QPointF anchor) {
  fits_ = false;
  const auto steps = PictureView::zoom_steps();
  const auto above = std::ranges::upper_bound(steps, zoom_), at = std::ranges::lower_bound(steps, zoom_);
  if (direction > 0 && above != steps.end()) set_zoom(*above, anchor);
  if (direction < 0 && at != steps.begin()) set_zoom(*std::prev(at), anchor);
}

void ViewerCanvas::fit() {
  if (image_.isNull()) return;
  const QSize room = (QSizeF(maximumViewportSize()) * devicePixelRatioF()).toSize();
  set_zoom(fitting_zoom(image_.size(), room), QRectF(viewport()->rect()).center());
}

void ViewerCanvas::set_filling(bool filling) {
  middle_ = fits_ = filling;
  if (fits_) fit();
  viewport()->update();
}

void ViewerCanvas::scroll_by(QPoint pixels) {
  horizontalScrollBar()->setValue(horizontalScrollBar()->value() + pixels.x());
  verticalScrollBar()->setValue(verticalScrollBar()->value() + pixels.y());
}

/// A desktop gives a window its size when it likes to.
void ViewerCanvas::resizeEvent(QResizeEvent*) {
  if (fits_) fit();
  update_scroll_bars();
}

void ViewerCanvas::paintEvent(QPaintEvent* event) {
  QPainter painter(viewport());
  const double ratio = devicePixelRatioF();
  painter.scale(1 / ratio, 1 / ratio);
  const QRect area =
      QRectF(QPointF(event->rect().topLeft()) * ratio, QSizeF(event->rect().size()) * ratio).toAlignedRect();
  const QRect whole = image_.isNull() ? QRect() : frame_place();
  const QRect seen = whole & area;
  for (const QRect& part : QRegion(area) - seen) painter.fillRect(part, around_);
  if (seen.isEmpty()) return;
  if (image_.hasAlphaChannel()) {
    if (checkered_)
      paint_checkers(painter, whole & QRect(QPoint(), room()));
    else
      painter.fillRect(seen, around_);
  }
  if (zoom_ == 100) return painter.drawImage(seen.topLeft(), image_, seen.translated(-whole.topLeft()));
  if (picture_.bits() == 1 && zoom_ < 100) {
    if (reduced_.isNull()) reduced_ = black_on_white(picture_, whole.size());
    return painter.drawImage(whole.topLeft(), reduced_);
  }
  // Nearest pixels, and only those that are seen.
  painter.setClipRect(seen);
  painter.drawImage(whole, image_);
}

void ViewerCanvas::wheelEvent(QWheelEvent* event) {
  if (event->angleDelta().y() != 0) step_zoom(event->angleDelta().y() > 0 ? 1 : -1, event->position());
  event->accept();
}

void ViewerCanvas::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::RightButton) return emit close_wanted();
  if (event->button() != Qt::LeftButton && event->button() != Qt::MiddleButton) return;
  dragging_ = true;
  dragFrom_ = event->position().toPoint();
}

void ViewerCanvas::mouseMoveEvent(QMouseEvent* event) {
  emit pointer_moved();
  const QPoint place = event->position().toPoint();
  if (dragging_) scroll_by((std::exchange(dragFrom_, place) - place) * devicePixelRatioF());
}

void ViewerCanvas::mouseReleaseEvent(QMouseEvent*) { dragging_ = false; }

void ViewerCanvas::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::RightButton) return emit close_wanted();
  if (event->button() == Qt::LeftButton) emit full_screen_wanted();
}

void ViewerCanvas::contextMenuEvent(QContextMenuEvent* event) { event->accept(); }

}  // namespace vellum
