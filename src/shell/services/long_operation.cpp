#include "shell/services/long_operation.h"

#include <QApplication>
#include <QKeyEvent>
#include <QThread>
#include <algorithm>
#include <array>
#include <utility>

#include "shell/services/finished.h"

namespace vellum {
namespace {

constexpr qint64 kPumpInterval = 50;  // milliseconds

constexpr std::array kInput = {
    QEvent::MouseButtonPress,
    QEvent::MouseButtonRelease,
    QEvent::MouseButtonDblClick,
    QEvent::MouseMove,
    QEvent::Wheel,
    QEvent::KeyPress,
    QEvent::KeyRelease,
    QEvent::ShortcutOverride,
    QEvent::Shortcut,
    QEvent::ContextMenu,
    QEvent::TouchBegin,
    QEvent::TouchUpdate,
    QEvent::TouchEnd,
    QEvent::TabletPress,
    QEvent::TabletMove,
    QEvent::TabletRelease,
    QEvent::DragEnter,
    QEvent::DragMove,
    QEvent::Drop,
    QEvent::InputMethod,
};

bool asks_to_stop(const QEvent& event) {
  if (event.type() == QEvent::KeyPress) return static_cast<const QKeyEvent&>(event).key() == Qt::Key_Escape;
  if (event.type() != QEvent::MouseButtonPress) return false;
  return static_cast<const QMouseEvent&>(event).button() & (Qt::LeftButton | Qt::RightButton);
}

}  // namespace

bool is_user_input(QEvent::Type type) { return std::ranges::find(kInput, type) != kInput.end(); }

LongOperation::~LongOperation() { set_depth(0); }

void LongOperation::begin() {
  if (depth_ == 0) sinceBegin_.start();
  set_depth(depth_ + 1);
}

void LongOperation::end() {
  if (depth_ == 1 && !stop_ && sinceBegin_.elapsed() >= kLongWork) tell_finished(tr("The work is done."));
  if (depth_ > 0) set_depth(depth_ - 1);
}

void LongOperation::set_depth(int depth) {
  const bool was = std::exchange(depth_, depth) > 0;
  if (was == (depth > 0)) return;
  if (was) {
    qApp->removeEventFilter(this);
    QApplication::restoreOverrideCursor();
    return;
  }
  stop_ = false;
  sincePump_.start();
  qApp->installEventFilter(this);
  QApplication::setOverrideCursor(Qt::WaitCursor);
}

bool LongOperation::stop_requested() {
  pump();
  return stop_;
}

void LongOperation::pump() {
  if (QThread::currentThread() != thread() || !running() || sincePump_.elapsed() < kPumpInterval) return;
  QCoreApplication::processEvents();
  sincePump_.restart();
}

bool LongOperation::eventFilter(QObject* watched, QEvent* event) {
  if (asks_to_stop(*event)) stop_ = true;
  // A window is closed by the user through its native window, by the program through the widget.
  const bool closes = event->type() == QEvent::Close && watched->isWindowType();
  if (!closes && !is_user_input(event->type())) return false;
  event->ignore();
  return true;
}

LongOperation::Pause::Pause(LongOperation& operation) : operation_(operation), depth_(operation.depth_) {
  operation_.set_depth(0);
}

LongOperation::Pause::~Pause() { operation_.set_depth(depth_); }

}  // namespace vellum
