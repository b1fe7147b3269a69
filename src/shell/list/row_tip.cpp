#include "shell/list/row_tip.h"

#include <QTimerEvent>
#include <QToolTip>

#include "configuration/shell_settings.h"
#include "core/chunks/chunk_tip.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr QPoint kBesidePointer(12, 18);
constexpr int kRightMargin = 8, kBottomMargin = 4;

}  // namespace

RowTip::RowTip(QWidget& area, DocumentWindow& window)
    : QLabel(&area, Qt::ToolTip | Qt::WindowTransparentForInput), area_(area), window_(window) {
  setObjectName(QStringLiteral("VellumcraftFileTipClass"));
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setTextFormat(Qt::PlainText);
  setPalette(QToolTip::palette());
  setForegroundRole(QPalette::ToolTipText);
  setBackgroundRole(QPalette::ToolTipBase);
  setFrameStyle(QFrame::Box | QFrame::Plain);
  setMargin(style::kGap / 2);
  setFont(style::list_font());
}

void RowTip::hover(std::size_t row, QPoint place) {
  place_ = place;
  if (settings::FileTipShow == 0) return dismiss();
  const auto wanted = static_cast<std::int32_t>(row);
  if (window_.document.TipChunk == wanted) return;
  dismiss();
  window_.document.TipChunk = wanted;
  timer_.start(std::clamp(settings::FileTipDelay, 100, 5000), this);
}

void RowTip::dismiss() {
  timer_.stop();
  window_.document.TipChunk = -1;
  hide();
}

void RowTip::timerEvent(QTimerEvent* event) {
  if (event->timerId() != timer_.timerId()) return QLabel::timerEvent(event);
  timer_.stop();
  const std::int32_t row = window_.document.TipChunk;
  if (row < 0 || static_cast<std::size_t>(row) >= window_.list.size()) return;
  setText(to_qt(chunk_tip(window_, static_cast<std::size_t>(row))));
  if (!text().isEmpty()) show_text();
}

/// At the pointer, and wholly inside the list where there is room.
void RowTip::show_text() {
  adjustSize();
  const QRect room(area_.mapToGlobal(QPoint(0, 0)), area_.size());
  const QPoint wanted = area_.mapToGlobal(place_) + kBesidePointer;
  const int right = room.x() + room.width() - kRightMargin - width();
  const int bottom = room.y() + room.height() - kBottomMargin - height();
  move(std::max(std::min(wanted.x(), right), room.x()), std::max(std::min(wanted.y(), bottom), room.y()));
  show();
}

}  // namespace vellum
