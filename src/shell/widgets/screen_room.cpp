#include "shell/widgets/screen_room.h"

#include <QDialogButtonBox>
#include <QEvent>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

namespace vellum {
namespace {

constexpr QSize kWindowFrame(8, 40);  // title and edges that a window manager adds; unknown until it is shown

bool holds_buttons(const QLayoutItem& item) { return qobject_cast<QDialogButtonBox*>(item.widget()); }

/// Moves all items of an upright layout but the buttons behind them into a part that scrolls. The width of
/// its bar.
int make_scroll(QDialog& dialog, QVBoxLayout& layout) {
  auto* content = new QWidget;
  auto* inner = new QVBoxLayout(content);
  inner->setContentsMargins(0, 0, 0, 0);
  inner->setSpacing(layout.spacing());
  while (layout.count() > 0 && !holds_buttons(*layout.itemAt(0))) {
    const int stretch = layout.stretch(0);
    QLayoutItem* item = layout.takeAt(0);
    if (QLayout* rows = item->layout()) {
      rows->setParent(nullptr);
      inner->addLayout(rows, stretch);
    } else if (QWidget* widget = item->widget()) {
      inner->addWidget(widget, stretch, item->alignment());
      delete item;
    } else {
      inner->addItem(item);
      inner->setStretch(inner->count() - 1, stretch);
    }
  }
  auto* area = new QScrollArea(&dialog);
  area->setFrameShape(QFrame::NoFrame);
  area->setWidgetResizable(true);
  area->setFocusPolicy(Qt::NoFocus);
  area->setWidget(content);
  layout.insertWidget(0, area, 1);
  return area->verticalScrollBar()->sizeHint().width();
}

}  // namespace

QSize ScreenRoom::room_of(const QWidget& window) const {
  return most_.isEmpty() ? window.screen()->availableSize() - kWindowFrame : most_;
}

bool ScreenRoom::eventFilter(QObject* watched, QEvent* event) {
  auto* dialog = event->type() == QEvent::Show ? qobject_cast<QDialog*>(watched) : nullptr;
  if (!dialog || !dialog->isWindow() || event->spontaneous()) return false;
  const QSize room = room_of(*dialog);
  const QSize least = dialog->minimumSizeHint().expandedTo(dialog->minimumSize());
  const bool fits = least.width() <= room.width() && least.height() <= room.height();
  auto* layout = fits ? nullptr : qobject_cast<QVBoxLayout*>(dialog->layout());
  if (layout) {
    dialog->setMinimumSize(dialog->minimumSize().boundedTo(room));
    // Room for the bar beside the content, so that it need not scroll to the side as well.
    const int bar = make_scroll(*dialog, *layout);
    dialog->resize(std::max(dialog->width(), least.width() + bar), dialog->height());
  }
  dialog->resize(dialog->size().boundedTo(room));
  return false;
}

}  // namespace vellum
