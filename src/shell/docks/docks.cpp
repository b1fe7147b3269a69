#include "shell/docks/docks.h"

#include <QApplication>
#include <QTimer>
#include <algorithm>

#include "configuration/shell_settings.h"
#include "shell/look/style.h"

namespace vellum {
namespace {

constexpr int kLargeScreen = 1100;  // pixels across, below which docks would leave too little for the list
constexpr int kArrangement = 1;     // counts up when remembered arrangements mean something else
constexpr int kBusyInterval = 50;   // milliseconds until panels are told of what happened during a command
constexpr int kLeastColumn = 340, kMostColumn = 400;  // pixels across at the side, as they come

std::string& kept_arrangement(bool small) {
  return small ? settings::DockLayoutSmall : settings::DockLayoutWide;
}

}  // namespace

Docks::Docks(QMainWindow& window, DockContext context)
    : QObject(&window), window_(window), context_(std::move(context)) {
  window.setDockOptions(QMainWindow::AllowNestedDocks | QMainWindow::AllowTabbedDocks |
                        QMainWindow::GroupedDragging);
  window.setTabPosition(Qt::AllDockWidgetAreas, QTabWidget::North);
  window.setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
  window.setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
  docks_.reserve(dock_table().size());
  for (const DockRow& row : dock_table()) add(row);
}

Docks::~Docks() {
  for (Open& open : docks_) open.dock->disconnect(this);
}

void Docks::add(const DockRow& row) {
  auto* dock = new QDockWidget(tr(row.title), &window_);
  dock->setObjectName(QLatin1String(row.name));
  dock->hide();
  window_.addDockWidget(row.side, dock);
  docks_.push_back({&row, dock});
  connect(dock, &QDockWidget::visibilityChanged, this, [this, &open = docks_.back()](bool seen) {
    see(open, seen);
    emit changed();
  });
}

void Docks::make(Open& open) {
  if (open.panel) return;
  open.panel = open.row->make(context_);
  open.dock->setWidget(open.panel);
}

void Docks::see(Open& open, bool seen) {
  open.seen = seen;
  if (seen) make(open);
  if (!seen && open.panel) open.panel->settle();
  show_in(open, seen ? frame_.get() : nullptr);
}

void Docks::show_in(Open& open, DocumentFrame* frame) {
  if (std::exchange(open.shown, frame) == frame || !open.panel) return;
  ++told_;
  open.panel->show_document(frame);
}

void Docks::set_document(DocumentFrame* frame) {
  if (frame_ == frame) return;
  if (frame_) frame_->disconnect(this);
  frame_ = frame;
  for (Open& open : docks_)
    if (open.seen) show_in(open, frame);
  if (!frame) return;
  connect(frame, &DocumentFrame::changed, this, &Docks::follow_later);
  // Nothing may be drawn of a document that is gone.
  connect(frame, &QObject::destroyed, this, [this] {
    for (Open& open : docks_) show_in(open, nullptr);
  });
}

void Docks::follow_later() {
  if (pending_ || std::ranges::none_of(docks_, &Open::seen)) return;
  pending_ = true;
  QTimer::singleShot(0, this, &Docks::follow);
}

void Docks::follow() {
  if (context_.services.busy && context_.services.busy())
    return QTimer::singleShot(kBusyInterval, this, &Docks::follow);
  pending_ = false;
  for (Open& open : docks_)
    if (open.seen && open.shown) {
      ++told_;
      open.panel->follow();
    }
}

void Docks::settle() {
  for (Open& open : docks_)
    if (open.seen && open.shown) open.panel->settle();
}

const Docks::Open* Docks::find(int command) const {
  const auto found = std::ranges::find(docks_, command, [](const Open& open) { return open.row->command; });
  return found == docks_.end() ? nullptr : &*found;
}

Docks::Open* Docks::find(int command) { return const_cast<Open*>(std::as_const(*this).find(command)); }

DockPanel* Docks::panel(int command) const {
  const Open* open = find(command);
  return open ? open->panel : nullptr;
}

QDockWidget* Docks::dock(int command) const {
  const Open* open = find(command);
  return open ? open->dock : nullptr;
}

bool Docks::is_seen(int command) const {
  const Open* open = find(command);
  return open && open->seen;
}

const Docks::Open* Docks::focused() const {
  const QWidget* now = QApplication::focusWidget();
  const auto found =
      std::ranges::find_if(docks_, [now](const Open& open) { return now && open.dock->isAncestorOf(now); });
  return found == docks_.end() ? nullptr : &*found;
}

QString Docks::topic() const {
  const Open* open = focused();
  return open ? QString::fromLatin1(open->row->page) : QString();
}

void Docks::toggle(int command) {
  Open* open = find(command);
  if (!open) return;
  if (!open->seen) return show(command, false);
  // Who had the keyboard there goes on in the list.
  if (frame_ && open == focused()) frame_->setFocus();
  open->dock->close();
}

void Docks::show(int command, bool focus) {
  Open* open = find(command);
  if (!open) return;
  make(*open);
  open->dock->show();
  open->dock->raise();
  if (focus) open->panel->setFocus(Qt::ShortcutFocusReason);
}

void Docks::focus_next(QWidget* list) {
  const Open* now = focused();
  const auto behind = now ? docks_.begin() + (now - docks_.data()) + 1 : docks_.begin();
  const auto next = std::find_if(behind, docks_.end(), [](const Open& open) { return open.seen; });
  if (next != docks_.end())
    next->panel->setFocus(Qt::ShortcutFocusReason);
  else if (list)
    list->setFocus(Qt::ShortcutFocusReason);
}

void Docks::arrange(int screen_width) {
  small_ = screen_width < kLargeScreen;
  const std::string& kept = kept_arrangement(*small_);
  const bool known =
      !kept.empty() &&
      window_.restoreState(QByteArray::fromBase64(QByteArray::fromStdString(kept)), kArrangement);
  if (!known && !*small_) arrange_as_they_come(screen_width);
  for (Open& open : docks_)
    if (!open.dock->isHidden()) make(open);
}

void Docks::arrange_as_they_come(int screen_width) {
  QList<QDockWidget*> column;
  QList<int> heights;
  for (Open& open : docks_) {
    if (!open.row->opens) continue;
    make(open);
    open.dock->show();
    if (open.row->side != Qt::RightDockWidgetArea) continue;
    column << open.dock;
    heights << open.panel->sizeHint().height();
  }
  if (column.isEmpty()) return;
  window_.resizeDocks(column, heights, Qt::Vertical);
  window_.resizeDocks({column.first()}, {std::clamp(screen_width / 5, kLeastColumn, kMostColumn)},
                      Qt::Horizontal);
}

void Docks::remember() const {
  if (small_) kept_arrangement(*small_) = window_.saveState(kArrangement).toBase64().toStdString();
}

}  // namespace vellum
