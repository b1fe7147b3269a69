#include "shell/window/work_area.h"

#include <QPaintEvent>

#include "configuration/shell_settings.h"

namespace vellum {
namespace {

constexpr int kCascadeStep = 28;

}  // namespace

WorkArea::WorkArea(RecentFiles& recent, QWidget* parent)
    : QMdiArea(parent), empty_(new EmptyState(recent, viewport())) {
  setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  setAccessibleName(tr("Documents"));
  update_empty_state();
}

std::vector<DocumentFrame*> WorkArea::documents() const {
  std::vector<DocumentFrame*> frames;
  for (QMdiSubWindow* window : subWindowList())
    if (auto* frame = qobject_cast<DocumentFrame*>(window)) frames.push_back(frame);
  return frames;
}

DocumentFrame* WorkArea::active() const { return qobject_cast<DocumentFrame*>(currentSubWindow()); }

void WorkArea::add(DocumentFrame* frame) {
  const QMdiSubWindow* before = currentSubWindow();
  const bool maximized = !before || before->isMaximized();
  const QSize client = viewport()->size();
  const QSize size(std::clamp(settings::FileWindowX, 1, std::max(client.width(), 1)),
                   DocumentFrame::opening_height(client.height()));
  const QPoint place = next_place(size);
  addSubWindow(frame);
  frame->setGeometry(QRect(place, size));
  maximized ? frame->showMaximized() : frame->show();
  update_empty_state();
}

/// Beside the window furthest to the right; where that doesn't fit, in steps from the left.
QPoint WorkArea::next_place(QSize size) const {
  int right = 0;
  const auto frames = documents();
  for (const DocumentFrame* frame : frames) right = std::max(right, frame->geometry().right() + 1);
  if (right + size.width() <= viewport()->width()) return {right, 0};
  return {static_cast<int>(frames.size()) * kCascadeStep % std::max(viewport()->width() - size.width(), 1),
          0};
}

void WorkArea::update_empty_state() {
  empty_->setGeometry(viewport()->rect());
  const bool empty = documents().empty();
  if (empty && empty_->isHidden()) empty_->setFocus();
  empty_->setVisible(empty);
}

void WorkArea::paintEvent(QPaintEvent* event) {
  QPainter painter(viewport());
  painter.setClipRegion(event->region());
  background_.paint(painter, viewport()->rect(), palette());
}

bool WorkArea::viewportEvent(QEvent* event) {
  const bool handled = QMdiArea::viewportEvent(event);
  const auto type = event->type();
  if (type == QEvent::Resize || type == QEvent::ChildRemoved) update_empty_state();
  return handled;
}

}  // namespace vellum
