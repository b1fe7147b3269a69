#include "shell/viewer/progress_strip.h"

#include <QMouseEvent>
#include <QPainter>

#include "shell/look/style.h"
#include "shell/viewer/viewer_geometry.h"

namespace vellum {
namespace {

constexpr int kTextHeight = 11;        // pixels: a line of text fits the strip
constexpr double kFilledShare = 0.35;  // how far the filled part goes from the ground to the accent

}  // namespace

ProgressStrip::ProgressStrip(QWidget* parent) : QWidget(parent) {
  setFixedHeight(kStripHeight);
  setAccessibleName(tr("Progress"));
  setLayoutDirection(Qt::LeftToRight);  // as the film strip
  QFont small = font();
  small.setPixelSize(kTextHeight);
  setFont(small);
  setCursor(Qt::PointingHandCursor);
}

void ProgressStrip::show_progress(std::uint32_t ordinal, const QString& text) {
  if (ordinal == ordinal_ && text == text_) return;
  ordinal_ = ordinal;
  text_ = text;
  setAccessibleDescription(text);
  update();
}

void ProgressStrip::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setLayoutDirection(layoutDirection());
  const QColor ground = palette().color(QPalette::Base);
  const QColor filled = style::between(ground, QColor::fromRgb(style::kAccent), kFilledShare);
  const int edge = text_.isEmpty() ? 0 : strip_filled(ordinal_, frames_, width());
  painter.fillRect(QRect(0, 0, edge, height()), filled);
  painter.fillRect(QRect(edge, 0, width() - edge, height()), ground);
  painter.setPen(style::readable_on(palette().color(QPalette::Text), filled));
  const QString shown = fontMetrics().elidedText(text_, Qt::ElideRight, width());
  painter.drawText(rect(), Qt::AlignCenter, shown);
}

void ProgressStrip::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  emit sought(strip_ordinal(event->position().toPoint().x(), width(), frames_));
}

void ProgressStrip::mouseMoveEvent(QMouseEvent* event) {
  if (event->buttons() & Qt::LeftButton)
    emit sought(strip_ordinal(event->position().toPoint().x(), width(), frames_));
}

}  // namespace vellum
