#include "shell/widgets/color_plane.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <cmath>

#include "shell/look/style.h"

namespace vellum {
namespace {

constexpr int kBarWidth = 22;
constexpr int kHueStep = 5;  // degrees of a key
constexpr int kInset = 3;    // room for the focus frame

int percent(double part, double whole) {
  return std::clamp(static_cast<int>(std::lround(part * 100 / whole)), 0, 100);
}

}  // namespace

HsbColor hsb_of(const QColor& color, const HsbColor& before) {
  const int hue =
      color.hsvHueF() < 0 ? before.hue : static_cast<int>(std::lround(color.hsvHueF() * 360)) % 360;
  return {hue, static_cast<int>(std::lround(color.hsvSaturationF() * 100)),
          static_cast<int>(std::lround(color.valueF() * 100))};
}

ColorPlane::ColorPlane(QWidget* parent) : QWidget(parent) {
  setFocusPolicy(Qt::StrongFocus);
  setMinimumSize(200, 160);
  setAccessibleName(tr("Saturation, brightness and hue"));
}

void ColorPlane::set_color(const HsbColor& color) {
  if (color == color_) return;
  color_ = color;
  setAccessibleDescription(color.color().name());
  update();
}

QRect ColorPlane::square() const {
  return rect().adjusted(kInset, kInset, -kInset - kBarWidth - style::kGap, -kInset);
}
QRect ColorPlane::bar() const {
  return {width() - kInset - kBarWidth, kInset, kBarWidth, height() - 2 * kInset};
}

void ColorPlane::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const QRect plane = square(), hues = bar();
  // White to the hue across, and then black from below: together exactly saturation and brightness.
  QLinearGradient across(plane.topLeft(), plane.topRight());
  across.setColorAt(0, Qt::white);
  across.setColorAt(1, QColor::fromHsv(color_.hue, 255, 255));
  painter.fillRect(plane, across);
  QLinearGradient down(plane.topLeft(), plane.bottomLeft());
  down.setColorAt(0, Qt::transparent);
  down.setColorAt(1, Qt::black);
  painter.fillRect(plane, down);
  QLinearGradient circle(hues.topLeft(), hues.bottomLeft());
  for (int i = 0; i <= 6; ++i) circle.setColorAt(i / 6.0, QColor::fromHsv(i * 60 % 360, 255, 255));
  painter.fillRect(hues, circle);

  painter.setRenderHint(QPainter::Antialiasing);
  const QPointF place(plane.left() + color_.saturation * (plane.width() - 1) / 100.0,
                      plane.top() + (100 - color_.brightness) * (plane.height() - 1) / 100.0);
  painter.setPen(QPen(Qt::white, 3));
  painter.drawEllipse(place, 5, 5);
  painter.setPen(QPen(Qt::black, 1.4));
  painter.drawEllipse(place, 5, 5);
  const double y = hues.top() + color_.hue * (hues.height() - 1) / 359.0;
  const QRectF mark(hues.left() - 2, y - 3, hues.width() + 4, 6);
  painter.setPen(QPen(Qt::white, 3));
  painter.drawRect(mark);
  painter.setPen(QPen(Qt::black, 1.2));
  painter.drawRect(mark);
  if (!hasFocus()) return;
  painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
  painter.drawRect(rect().adjusted(1, 1, -1, -1));
}

void ColorPlane::follow(QPoint place) {
  HsbColor next = color_;
  const QRect plane = square();
  if (inBar_) {
    next.hue = std::clamp((place.y() - bar().top()) * 359 / std::max(bar().height() - 1, 1), 0, 359);
  } else {
    next.saturation = percent(place.x() - plane.left(), std::max(plane.width() - 1, 1));
    next.brightness = 100 - percent(place.y() - plane.top(), std::max(plane.height() - 1, 1));
  }
  mix(next);
}

void ColorPlane::mix(HsbColor color) {
  if (color == color_) return;
  set_color(color);
  emit mixed(color_);
}

void ColorPlane::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  inBar_ = event->position().x() > square().right() + style::kGap / 2.0;
  follow(event->position().toPoint());
}

void ColorPlane::mouseMoveEvent(QMouseEvent* event) {
  if (event->buttons() & Qt::LeftButton) follow(event->position().toPoint());
}

void ColorPlane::keyPressEvent(QKeyEvent* event) {
  HsbColor next = color_;
  switch (event->key()) {
    case Qt::Key_Left:
      next.saturation = std::max(next.saturation - 1, 0);
      break;
    case Qt::Key_Right:
      next.saturation = std::min(next.saturation + 1, 100);
      break;
    case Qt::Key_Up:
      next.brightness = std::min(next.brightness + 1, 100);
      break;
    case Qt::Key_Down:
      next.brightness = std::max(next.brightness - 1, 0);
      break;
    case Qt::Key_PageUp:
      next.hue = (next.hue + 360 - kHueStep) % 360;
      break;
    case Qt::Key_PageDown:
      next.hue = (next.hue + kHueStep) % 360;
      break;
    default:
      return QWidget::keyPressEvent(event);
  }
  mix(next);
}

}  // namespace vellum
