#include "shell/widgets/picture_view.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>
#include <cmath>

#include "configuration/shell_settings.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/widgets/checkers.h"

namespace vellum {
namespace {

constexpr int kZoomSteps[] = {25, 33, 50, 67, 100, 150, 200, 300, 400, 600, 800, 1200, 1600, 2400, 3200};
constexpr int kGridZoom = 800;  // percent from which on the pixel grid is drawn
constexpr int kScrollStep = 20;

constexpr int kLongStep = 10;  // pixels, with Shift held

constexpr struct {
  int key, x, y;
} kMoves[] = {{Qt::Key_Left, -1, 0}, {Qt::Key_Right, 1, 0}, {Qt::Key_Up, 0, -1}, {Qt::Key_Down, 0, 1}};

int grid_step(int setting) { return std::clamp(setting, 1, 256); }

}  // namespace

PictureView::PictureView(QWidget* parent) : QAbstractScrollArea(parent) {
  setFocusPolicy(Qt::StrongFocus);
  setAccessibleName(tr("Picture"));
  setLayoutDirection(Qt::LeftToRight);  // a picture is never mirrored
  viewport()->setMouseTracking(true);
}

std::span<const int> PictureView::zoom_steps() { return kZoomSteps; }

void PictureView::set_picture(const Picture& picture) {
  const bool same =
      picture_ && picture && picture_.width() == picture.width() && picture_.height() == picture.height();
  change_picture(picture);
  if (same) return;
  cross_ = {};
  fit();
  update_scroll_bars();
}

void PictureView::change_picture(const Picture& picture) {
  picture_ = picture;
  image_ = upside_down_image(picture).mirrored();
  reduced_ = {};
  update_scroll_bars();
  viewport()->update();
}

void PictureView::set_placing(bool placing) {
  placing_ = placing;
  holding_ = false;
  viewport()->setCursor(placing ? Qt::SizeAllCursor : Qt::ArrowCursor);
}

void PictureView::set_outlines(const QRect& part, const QRect& canvas) {
  part_ = part;
  canvas_ = canvas;
  viewport()->update();
}

void PictureView::set_ground(std::optional<QColor> ground) {
  ground_ = ground;
  viewport()->update();
}

void PictureView::set_picking(bool picking) {
  picking_ = picking;
  viewport()->setCursor(picking ? Qt::CrossCursor : Qt::ArrowCursor);
  viewport()->update();
}

QSize PictureView::scaled_size() const {
  if (!picture_) return {};
  const auto scaled = [this](std::uint32_t side) {
    return static_cast<int>(std::clamp<std::int64_t>(std::int64_t{side} * zoom_ / 100, 1, INT_MAX / 2));
  };
  return {scaled(picture_.width()), scaled(picture_.height())};
}

QRect PictureView::picture_rect() const {
  const QSize size = scaled_size(), room = viewport()->size();
  const auto left = [](int picture, int view, int scrolled) {
    return picture < view ? (view - picture) / 2 : -scrolled;
  };
  return {QPoint(left(size.width(), room.width(), horizontalScrollBar()->value()),
                 left(size.height(), room.height(), verticalScrollBar()->value())),
          size};
}

QPoint PictureView::pixel_at(QPointF place) const {
  const QPointF inside = (place - picture_rect().topLeft()) * 100.0 / zoom_;
  return {static_cast<int>(std::floor(inside.x())), static_cast<int>(std::floor(inside.y()))};
}

bool PictureView::holds(QPoint pixel) const {
  return picture_ && QRect(QPoint(), image_.size()).contains(pixel);
}

void PictureView::update_scroll_bars() {
  const QSize size = scaled_size(), room = viewport()->size();
  const auto set = [](QScrollBar* bar, int picture, int view) {
    bar->setRange(0, std::max(picture - view, 0));
    bar->setPageStep(view);
    bar->setSingleStep(kScrollStep);
  };
  set(horizontalScrollBar(), size.width(), room.width());
  set(verticalScrollBar(), size.height(), room.height());
}

void PictureView::set_zoom(int percent) { set_zoom(percent, QRectF(viewport()->rect()).center()); }

void PictureView::set_zoom(int percent, QPointF anchor) {
  fitted_ = false;
  zoom_to(percent, anchor);
}

void PictureView::zoom_to(int percent, QPointF anchor) {
  percent = std::clamp(percent, kZoomSteps[0], kZoomSteps[std::size(kZoomSteps) - 1]);
  if (percent == zoom_) return;
  const QPointF inside = (anchor - picture_rect().topLeft()) * percent / zoom_;
  zoom_ = percent;
  reduced_ = {};
  update_scroll_bars();
  horizontalScrollBar()->setValue(static_cast<int>(std::lround(inside.x() - anchor.x())));
  verticalScrollBar()->setValue(static_cast<int>(std::lround(inside.y() - anchor.y())));
  viewport()->update();
  emit zoomed(zoom_);
}

void PictureView::step_zoom(int direction, QPointF anchor) {
  const auto above = std::ranges::upper_bound(kZoomSteps, zoom_);
  const auto at = std::ranges::lower_bound(kZoomSteps, zoom_);
  if (direction > 0 && above != std::end(kZoomSteps)) set_zoom(*above, anchor);
  if (direction < 0 && at != std::begin(kZoomSteps)) set_zoom(*std::prev(at), anchor);
}

void PictureView::fit() {
  if (!picture_) return;
  int best = kZoomSteps[0];
  for (const int step : kZoomSteps)
    if (step <= 100 && std::int64_t{picture_.width()} * step / 100 <= viewport()->width() &&
        std::int64_t{picture_.height()} * step / 100 <= viewport()->height())
      best = step;
  zoom_to(best, QRectF(viewport()->rect()).center());
  fitted_ = true;
}

void PictureView::resizeEvent(QResizeEvent*) {
  if (fitted_) fit();
  update_scroll_bars();
}

void PictureView::paintEvent(QPaintEvent* event) {
  QPainter painter(viewport());
  painter.fillRect(event->rect(), style::work_area_colour(palette()));
  const QRect area = picture_rect().intersected(viewport()->rect());
  if (area.isEmpty()) return;
  if (ground_)
    painter.fillRect(area, *ground_);
  else if (image_.hasAlphaChannel())
    paint_checkers(painter, area);
  paint_picture(painter, area);
  if (zoom_ >= kGridZoom) paint_grid(painter, area);
  paint_outlines(painter);
  if (picking_ && hasFocus()) paint_cross(painter);
}

/// Dashes of two colors, which show on any picture.
void PictureView::paint_outlines(QPainter& painter) const {
  const auto outline = [&](const QRect& pixels, const QColor& color) {
    if (pixels.isEmpty()) return;
    const double scale = zoom_ / 100.0;
    const QPoint corner = picture_rect().topLeft();
    const QRectF place(corner.x() + pixels.x() * scale, corner.y() + pixels.y() * scale,
                       pixels.width() * scale, pixels.height() * scale);
    const QRect frame = place.toRect().adjusted(-1, -1, 0, 0);
    painter.setPen(Qt::white);
    painter.drawRect(frame);
    painter.setPen(QPen(color, 1, Qt::DashLine));
    painter.drawRect(frame);
  };
  outline(canvas_, Qt::black);
  outline(part_, QColor::fromRgb(style::kAccent));
}

/// Only the pixels that are seen are scaled; a reduced picture is made once for each zoom.
void PictureView::paint_picture(QPainter& painter, const QRect& area) {
  const QRect whole = picture_rect();
  if (zoom_ < 100) {
    if (reduced_.isNull())
      reduced_ =
          QPixmap::fromImage(image_.scaled(whole.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    painter.drawPixmap(area.topLeft(), reduced_, area.translated(-whole.topLeft()));
    return;
  }
  const QPoint first = pixel_at(area.topLeft()), last = pixel_at(area.bottomRight());
  const QRect source = QRect(first, last).intersected(image_.rect());
  const double scale = zoom_ / 100.0;
  const QRectF target(whole.left() + source.left() * scale, whole.top() + source.top() * scale,
                      source.width() * scale, source.height() * scale);
  painter.drawImage(target, image_.copy(source));
}

void PictureView::paint_grid(QPainter& painter, const QRect& area) const {
  const QRect whole = picture_rect();
  const double scale = zoom_ / 100.0;
  painter.setPen(QColor(128, 128, 128, 140));
  const int wide = grid_step(settings::GridWide), deep = grid_step(settings::GridDeep);
  const QPoint first = pixel_at(area.topLeft()), last = pixel_at(area.bottomRight());
  for (int x = first.x() / wide * wide; x <= last.x() + 1; x += wide) {
    const int at = whole.left() + static_cast<int>(x * scale);
    painter.drawLine(at, area.top(), at, area.bottom());
  }
  for (int y = first.y() / deep * deep; y <= last.y() + 1; y += deep) {
    const int at = whole.top() + static_cast<int>(y * scale);
    painter.drawLine(area.left(), at, area.right(), at);
  }
}

/// Around the pixel that a key would pick, dark within light, so that it shows on any color.
void PictureView::paint_cross(QPainter& painter) const {
  const double scale = zoom_ / 100.0;
  const QPoint corner = picture_rect().topLeft() + (QPointF(cross_) * scale).toPoint();
  const int side = std::max(static_cast<int>(scale), 5);
  const QRect frame(corner, QSize(side, side));
  painter.setPen(Qt::white);
  painter.drawRect(frame.adjusted(-2, -2, 1, 1));
  painter.setPen(Qt::black);
  painter.drawRect(frame.adjusted(-1, -1, 0, 0));
}

void PictureView::wheelEvent(QWheelEvent* event) {
  if (!(event->modifiers() & Qt::ControlModifier)) return QAbstractScrollArea::wheelEvent(event);
  if (event->angleDelta().y() != 0) step_zoom(event->angleDelta().y() > 0 ? 1 : -1, event->position());
  event->accept();
}

void PictureView::mousePressEvent(QMouseEvent* event) {
  const QPoint pixel = pixel_at(event->position());
  if (picking_ && event->button() == Qt::LeftButton) {
    if (!holds(pixel)) return;
    cross_ = pixel;
    viewport()->update();
    emit picked(pixel);
    return;
  }
  if (event->button() != Qt::LeftButton && event->button() != Qt::MiddleButton) return;
  if (placing_ && event->button() == Qt::LeftButton && part_.contains(pixel)) {
    holding_ = true;
    heldAt_ = event->position();
    return;
  }
  dragging_ = true;
  dragFrom_ = event->position().toPoint();
  viewport()->setCursor(Qt::ClosedHandCursor);
}

void PictureView::mouseMoveEvent(QMouseEvent* event) {
  const QPoint place = event->position().toPoint();
  if (holding_) {
    const QPointF by = (event->position() - heldAt_) * 100.0 / zoom_;
    const QPoint whole(static_cast<int>(by.x()), static_cast<int>(by.y()));
    heldAt_ += QPointF(whole) * zoom_ / 100.0;
    if (!whole.isNull()) emit moved(whole);
  }
  if (dragging_) {
    const QPoint moved = place - std::exchange(dragFrom_, place);
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - moved.x());
    verticalScrollBar()->setValue(verticalScrollBar()->value() - moved.y());
  }
  tell(pixel_at(event->position()));
}

void PictureView::mouseReleaseEvent(QMouseEvent*) {
  holding_ = false;
  if (!std::exchange(dragging_, false)) return;
  viewport()->setCursor(picking_ ? Qt::CrossCursor : placing_ ? Qt::SizeAllCursor : Qt::ArrowCursor);
}

void PictureView::leaveEvent(QEvent*) { emit pointed(QString()); }

bool PictureView::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::Leave) emit pointed(QString());
  return QAbstractScrollArea::viewportEvent(event);
}

bool PictureView::move_part(const QKeyEvent& event) {
  if (!placing_) return false;
  const int step = event.modifiers() & Qt::ShiftModifier ? kLongStep : 1;
  for (const auto& move : kMoves)
    if (move.key == event.key()) return emit moved(QPoint(move.x, move.y) * step), true;
  return false;
}

bool PictureView::move_cross(int key) {
  if (!picking_ || !picture_) return false;
  if (key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter) return emit picked(cross_), true;
  for (const auto& move : kMoves)
    if (move.key == key) {
      if (const QPoint to = cross_ + QPoint(move.x, move.y); holds(to)) cross_ = to;
      tell(cross_);
      setAccessibleDescription(pixel_text(cross_));
      viewport()->update();
      return true;
    }
  return false;
}

void PictureView::keyPressEvent(QKeyEvent* event) {
  const QPointF middle = QRectF(viewport()->rect()).center();
  if (move_cross(event->key()) || move_part(*event)) return;
  switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
      return step_zoom(1, middle);
    case Qt::Key_Minus:
      return step_zoom(-1, middle);
    case Qt::Key_1:
      return set_zoom(100);
    case Qt::Key_F:
      return fit();
    default:
      QAbstractScrollArea::keyPressEvent(event);
  }
}

void PictureView::tell(QPoint pixel) { emit pointed(holds(pixel) ? pixel_text(pixel) : QString()); }

QColor PictureView::pixel_color(QPoint pixel) const {
  return holds(pixel) ? image_.pixelColor(pixel) : QColor();
}

QString PictureView::pixel_text(QPoint pixel) const {
  const QColor color = pixel_color(pixel);
  const QString rgb = QStringLiteral("%1, %2, %3").arg(color.red()).arg(color.green()).arg(color.blue());
  const QString place = QStringLiteral("%1, %2: ").arg(pixel.x()).arg(pixel.y());
  if (picture_.bits() <= 8)
    return place + tr("index %1 (%2)").arg(PictureGetPixel(picture_, pixel.x(), pixel.y())).arg(rgb);
  return picture_.bits() == 32 ? place + rgb + tr(", alpha %1").arg(color.alpha()) : place + rgb;
}

}  // namespace vellum
