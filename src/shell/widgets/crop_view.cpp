#include "shell/widgets/crop_view.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

#include "shell/look/style.h"
#include "shell/widgets/checkers.h"

namespace vellum {
namespace {

constexpr double kGrip = 7;           // device-independent pixels around an edge that take hold of it
constexpr double kMostEnlarged = 16;  // small pictures are enlarged in whole steps
constexpr int kStep = 1, kLongStep = 10;

struct CursorRow {
  int hold;
  Qt::CursorShape shape;
};

Qt::CursorShape cursor_of(int hold) {
  static constexpr CursorRow rows[] = {
      {1, Qt::SizeHorCursor},   {4, Qt::SizeHorCursor},   {2, Qt::SizeVerCursor},
      {8, Qt::SizeVerCursor},   {3, Qt::SizeFDiagCursor}, {12, Qt::SizeFDiagCursor},
      {6, Qt::SizeBDiagCursor}, {9, Qt::SizeBDiagCursor}, {16, Qt::SizeAllCursor}};
  const auto row = std::ranges::find(rows, hold, &CursorRow::hold);
  return row == std::end(rows) ? Qt::CrossCursor : row->shape;
}

}  // namespace

CropView::CropView(QWidget* parent) : QWidget(parent) {
  setMouseTracking(true);
  setFocusPolicy(Qt::StrongFocus);
  setAccessibleName(tr("Rectangle"));
  setAccessibleDescription(tr("Arrow keys move the rectangle, with Control they change its size"));
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void CropView::set_picture(const QImage& picture) {
  picture_ = picture;
  update();
}

void CropView::set_rectangle(const QRect& rectangle) {
  rectangle_ = rectangle & picture_.rect();
  update();
}

void CropView::set_aspect(double aspect) {
  aspect_ = aspect;
  if (aspect_ > 0) take(in_aspect(rectangle_, kRight | kBottom));
}

QRectF CropView::shown_area() const {
  if (picture_.isNull()) return {};
  double scale = std::min(1.0 * width() / picture_.width(), 1.0 * height() / picture_.height());
  if (scale > 1) scale = std::min(std::floor(scale), kMostEnlarged);
  const QSizeF size(picture_.width() * scale, picture_.height() * scale);
  return {{(width() - size.width()) / 2, (height() - size.height()) / 2}, size};
}

QRectF CropView::on_screen(const QRect& rectangle) const {
  const QRectF area = shown_area();
  const double scale = picture_.isNull() ? 1 : area.width() / picture_.width();
  return {area.left() + rectangle.left() * scale, area.top() + rectangle.top() * scale,
          rectangle.width() * scale, rectangle.height() * scale};
}

QPoint CropView::pixel_at(const QPointF& position) const {
  const QRectF area = shown_area();
  if (area.isEmpty()) return {};
  const double scale = picture_.width() / area.width();
  const auto held = [scale](double at, int length) {
    return std::clamp(static_cast<int>(std::lround(at * scale)), 0, length);
  };
  return {held(position.x() - area.left(), picture_.width()),
          held(position.y() - area.top(), picture_.height())};
}

int CropView::hold_at(const QPointF& position) const {
  const QRectF box = on_screen(rectangle_);
  if (!box.adjusted(-kGrip, -kGrip, kGrip, kGrip).contains(position)) return kNew;
  int hold = 0;
  if (std::abs(position.x() - box.left()) <= kGrip)
    hold |= kLeft;
  else if (std::abs(position.x() - box.right()) <= kGrip)
    hold |= kRight;
  if (std::abs(position.y() - box.top()) <= kGrip)
    hold |= kTop;
  else if (std::abs(position.y() - box.bottom()) <= kGrip)
    hold |= kBottom;
  return hold ? hold : kInside;
}

QRect CropView::in_aspect(QRect rectangle, int hold) const {
  if (aspect_ <= 0 || rectangle.isEmpty() || hold == kInside) return rectangle;
  // The side that is dragged alone decides; of a corner the width does.
  const bool by_height = (hold & (kTop | kBottom)) && !(hold & (kLeft | kRight));
  int width = by_height ? static_cast<int>(std::lround(rectangle.height() * aspect_)) : rectangle.width();
  int height = by_height ? rectangle.height() : static_cast<int>(std::lround(rectangle.width() / aspect_));
  const int most_width = hold & kLeft ? rectangle.right() + 1 : picture_.width() - rectangle.left();
  const int most_height = hold & kTop ? rectangle.bottom() + 1 : picture_.height() - rectangle.top();
  const double fit =
      std::min({1.0, 1.0 * most_width / std::max(width, 1), 1.0 * most_height / std::max(height, 1)});
  width = std::max(static_cast<int>(width * fit), 1);
  height = std::max(static_cast<int>(height * fit), 1);
  if (hold & kLeft) rectangle.setLeft(rectangle.right() + 1 - width);
  if (hold & kTop) rectangle.setTop(rectangle.bottom() + 1 - height);
  return {rectangle.topLeft(), QSize(width, height)};
}

void CropView::take(QRect rectangle) {
  rectangle &= picture_.rect();
  if (rectangle.isEmpty() || rectangle == rectangle_) return;
  rectangle_ = rectangle;
  update();
  emit drawn(QRect(rectangle_));
}

void CropView::drag_to(const QPoint& pixel) {
  QRect next = before_;
  if (hold_ == kInside) {
    next.translate(pixel - pressed_);
    next.moveLeft(std::clamp(next.left(), 0, picture_.width() - next.width()));
    next.moveTop(std::clamp(next.top(), 0, picture_.height() - next.height()));
    return take(next);
  }
  int hold = hold_;
  if (hold_ == kNew) {
    next = QRect(QPoint(std::min(pressed_.x(), pixel.x()), std::min(pressed_.y(), pixel.y())),
                 QSize(std::abs(pixel.x() - pressed_.x()), std::abs(pixel.y() - pressed_.y())));
    hold = (pixel.x() < pressed_.x() ? kLeft : kRight) | (pixel.y() < pressed_.y() ? kTop : kBottom);
  } else {
    if (hold_ & kLeft) next.setLeft(std::min(pixel.x(), before_.right()));
    if (hold_ & kRight) next.setRight(std::max(pixel.x() - 1, before_.left()));
    if (hold_ & kTop) next.setTop(std::min(pixel.y(), before_.bottom()));
    if (hold_ & kBottom) next.setBottom(std::max(pixel.y() - 1, before_.top()));
  }
  take(in_aspect(next, hold));
}

void CropView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || picture_.isNull()) return;
  hold_ = hold_at(event->position());
  pressed_ = pixel_at(event->position());
  before_ = rectangle_;
}

void CropView::mouseMoveEvent(QMouseEvent* event) {
  if (hold_ == kNothing)
    setCursor(cursor_of(hold_at(event->position())));
  else
    drag_to(pixel_at(event->position()));
}

void CropView::mouseReleaseEvent(QMouseEvent*) { hold_ = kNothing; }

void CropView::keyPressEvent(QKeyEvent* event) {
  static constexpr std::pair<int, QPoint> arrows[] = {
      {Qt::Key_Left, {-1, 0}}, {Qt::Key_Right, {1, 0}}, {Qt::Key_Up, {0, -1}}, {Qt::Key_Down, {0, 1}}};
  for (const auto& [key, direction] : arrows) {
    if (event->key() != key) continue;
    const QPoint step = direction * (event->modifiers() & Qt::ShiftModifier ? kLongStep : kStep);
    QRect next = rectangle_;
    if (event->modifiers() & Qt::ControlModifier) {
      next.setSize({std::max(next.width() + step.x(), 1), std::max(next.height() + step.y(), 1)});
      return take(in_aspect(next, step.x() ? kRight : kBottom));
    }
    next.translate(step);
    next.moveLeft(std::clamp(next.left(), 0, picture_.width() - next.width()));
    next.moveTop(std::clamp(next.top(), 0, picture_.height() - next.height()));
    return take(next);
  }
  QWidget::keyPressEvent(event);
}

void CropView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const QRectF area = shown_area();
  if (area.isEmpty()) return;
  paint_checkers(painter, area.toAlignedRect());
  painter.setRenderHint(QPainter::SmoothPixmapTransform, area.width() < picture_.width());
  painter.drawImage(area, picture_);
  const QRectF box = on_screen(rectangle_);
  QPainterPath around;
  around.addRect(area);
  around.addRect(box);
  painter.fillPath(around, QColor(0, 0, 0, 140));
  // A light line in a dark one is seen on every ground.
  painter.setPen(QPen(Qt::black, 3));
  painter.drawRect(box);
  painter.setPen(QPen(hasFocus() ? QColor(style::kAccent) : QColor(Qt::white), 1));
  painter.drawRect(box);
  for (const QPointF& corner : {box.topLeft(), box.topRight(), box.bottomLeft(), box.bottomRight()}) {
    const QRectF handle(corner.x() - kGrip / 2, corner.y() - kGrip / 2, kGrip, kGrip);
    painter.fillRect(handle.adjusted(-1, -1, 1, 1), Qt::black);
    painter.fillRect(handle, Qt::white);
  }
}

}  // namespace vellum
