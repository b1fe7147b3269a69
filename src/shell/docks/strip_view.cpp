#include "shell/docks/strip_view.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>
#include <QTimer>

#include "base/text.h"
#include "configuration/shell_settings.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kInset = 4, kStripGap = 12, kChecker = 6;
constexpr int kRoomHeight = 84;                  // of a picture, where the strip may choose
constexpr int kLeastRoom = 48, kMostRoom = 288;  // pixels high; the width is a third more
constexpr int kFarthest = 1 << 14;  // pixels that a picture may reach beyond its canvas, and be as large as
constexpr int kRoomStep = 12;       // a strip that grows makes its pictures anew in steps

bool option(StripOption bit) { return (settings::StripOptions & bit) != 0; }

void paint_ground(QPainter& painter, const QRect& rect, Colour background) {
  if (!option(kStripCheckers))
    return painter.fillRect(rect, QColor(red_of(background), green_of(background), blue_of(background)));
  painter.fillRect(rect, Qt::white);
  for (int y = 0; y < rect.height(); y += kChecker)
    for (int x = y / kChecker % 2 * kChecker; x < rect.width(); x += 2 * kChecker)
      painter.fillRect(QRect(rect.topLeft() + QPoint(x, y), QSize(kChecker, kChecker)) & rect,
                       QColor(0xCCCCCC));
}

/// The largest canvas in the middle of a room.
QRect canvas_in(const QRect& room, Extent canvas) {
  const QSize size =
      QSize(static_cast<int>(std::max(canvas.width, 1u)), static_cast<int>(std::max(canvas.height, 1u)))
          .scaled(room.size(), Qt::KeepAspectRatio)
          .expandedTo(QSize(1, 1));
  return {room.topLeft() + QPoint((room.width() - size.width()) / 2, (room.height() - size.height()) / 2),
          size};
}

/// Where a picture lies on a canvas that is drawn there.
QRect place_on(const QRect& drawn, Extent canvas, FrameOffset offset, Extent picture) {
  const auto scaled = [](std::int64_t value, int to, std::uint32_t from) {
    return static_cast<int>(std::clamp<std::int64_t>(value * to / std::max(from, 1u), -kFarthest, kFarthest));
  };
  return {drawn.left() + scaled(offset.x, drawn.width(), canvas.width),
          drawn.top() + scaled(offset.y, drawn.height(), canvas.height),
          std::max(scaled(picture.width, drawn.width(), canvas.width), 1),
          std::max(scaled(picture.height, drawn.height(), canvas.height), 1)};
}

}  // namespace

StripView::StripView(ThumbnailCache& thumbnails, QWidget* parent)
    : QAbstractScrollArea(parent), thumbnails_(thumbnails) {
  setFocusPolicy(Qt::StrongFocus);
  setFrameShape(QFrame::NoFrame);
  setAccessibleName(tr("Film strip"));
  setLayoutDirection(Qt::LeftToRight);  // time runs that way in every language
  viewport()->setAcceptDrops(true);
}

void StripView::show_window(DocumentWindow* window) {
  window_ = window;
  anchor_ = followed_ = 0;
  pressed_ = drop_ = std::nullopt;
  shown_.clear();
  composed_.clear();
  state_ = {};
  reload();
}

bool StripView::vertical() const { return option(kStripVertical) || height() > width(); }

int StripView::caption_height() const {
  return option(kStripNumbers) || option(kStripDelays) ? fontMetrics().height() + kInset : 0;
}

/// For the pictures: as large as the strip is deep.
QSize StripView::room() const {
  const int deep = vertical() ? (viewport()->width() - 2 * kInset) * 3 / 4
                              : viewport()->height() - 2 * kInset - caption_height();
  const int high = std::clamp(deep / kRoomStep * kRoomStep, kLeastRoom, kMostRoom);
  return {high * 4 / 3, high};
}

QSize StripView::cell_size() const { return room() + QSize(2 * kInset, 2 * kInset + caption_height()); }

int StripView::pitch() const {
  const int gap = option(kStripGaps) ? kStripGap : 1;
  return (vertical() ? cell_size().height() : cell_size().width()) + gap;
}

QSize StripView::sizeHint() const {
  const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent);
  const QSize cell(kRoomHeight * 4 / 3 + 2 * kInset, kRoomHeight + 2 * kInset + caption_height());
  return option(kStripVertical) ? QSize(cell.width() + bar, cell.height() * 5)
                                : QSize(cell.width() * 6, cell.height() + bar);
}

QSize StripView::minimumSizeHint() const {
  const int least = kLeastRoom + 2 * kInset + caption_height();
  return {least, least};
}

void StripView::reload() {
  entries_ = window_ ? frame_entries(*window_) : std::vector<std::size_t>();
  std::vector<std::shared_ptr<const ChunkRecord>> records;
  for (const std::size_t entry : entries_) records.push_back(window_->list.entry(entry).record);
  if (records != shown_) {
    shown_ = std::move(records);
    composed_.clear();
    state_ = {};
  }
  values_ = window_ ? view_values(window_->list, window_->document) : ViewValues();
  resizeEvent(nullptr);
  const std::size_t at = current();
  if (at < entries_.size()) setAccessibleDescription(tr("Frame %1 of %2").arg(at + 1).arg(entries_.size()));
  viewport()->update();
}

void StripView::resizeEvent(QResizeEvent*) {
  setHorizontalScrollBarPolicy(vertical() ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
  setVerticalScrollBarPolicy(vertical() ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
  QScrollBar* bar = vertical() ? verticalScrollBar() : horizontalScrollBar();
  (vertical() ? horizontalScrollBar() : verticalScrollBar())->setRange(0, 0);
  const int page = vertical() ? viewport()->height() : viewport()->width();
  const std::int64_t whole = static_cast<std::int64_t>(entries_.size()) * pitch();
  bar->setRange(0, static_cast<int>(std::clamp<std::int64_t>(whole - page, 0, INT_MAX)));
  bar->setPageStep(page);
  bar->setSingleStep(pitch());
}

QRect StripView::cell_rect(std::size_t frame) const {
  const auto start = static_cast<int>(static_cast<std::int64_t>(frame) * pitch());
  const QPoint corner = vertical() ? QPoint(0, start - verticalScrollBar()->value())
                                   : QPoint(start - horizontalScrollBar()->value(), 0);
  return {corner, cell_size()};
}

std::optional<std::size_t> StripView::frame_at(QPoint place) const {
  const int along =
      vertical() ? place.y() + verticalScrollBar()->value() : place.x() + horizontalScrollBar()->value();
  const auto frame = static_cast<std::size_t>(std::max(along, 0) / pitch());
  if (frame >= entries_.size() || !cell_rect(frame).contains(place)) return std::nullopt;
  return frame;
}

/// The frame of the caret, or the last one in front of it.
std::size_t StripView::current() const {
  if (entries_.empty()) return 0;
  const auto behind =
      std::ranges::upper_bound(entries_, static_cast<std::size_t>(std::max(window_->document.caret, 0)));
  return behind == entries_.begin() ? 0 : static_cast<std::size_t>(behind - entries_.begin() - 1);
}

void StripView::choose(std::size_t frame, Qt::KeyboardModifiers modifiers) {
  if (frame >= entries_.size()) return;
  ChunkList& list = window_->list;
  window_->document.caret = static_cast<std::int32_t>(entries_[frame]);
  if (modifiers & Qt::ControlModifier) {
    list.select(entries_[frame], !list.entry(entries_[frame]).selected);
    anchor_ = frame;
  } else if (modifiers & Qt::ShiftModifier) {
    list.select_all(false);
    const auto [first, last] = std::minmax(std::min(anchor_, entries_.size() - 1), frame);
    for (std::size_t i = first; i <= last; ++i) list.select(entries_[i], true);
  } else {
    list.select_all(false);
    list.select(entries_[frame], true);
    anchor_ = frame;
  }
  followed_ = frame;
  show_frame(frame);
  reload();
  if (selected) selected();
}

void StripView::show_current() {
  const std::size_t at = current();
  if (std::exchange(followed_, at) != at && at < entries_.size()) show_frame(at);
}

void StripView::show_frame(std::size_t frame) {
  QScrollBar* bar = vertical() ? verticalScrollBar() : horizontalScrollBar();
  const QRect cell = cell_rect(frame);
  const int first = vertical() ? cell.top() : cell.left(), last = vertical() ? cell.bottom() : cell.right();
  const int room = vertical() ? viewport()->height() : viewport()->width();
  if (first < 0) bar->setValue(bar->value() + first);
  if (first >= 0 && last >= room) bar->setValue(bar->value() + last + 1 - room);
}

/// The selected frames, one place on.
void StripView::shift(bool forward) {
  const FrameList frames = selected_frames(*window_);
  if (frames.empty() || !move_selected) return;
  if (forward && frames.back() + 1 < entries_.size()) move_selected(frames.back() + 2, false);
  if (!forward && frames.front() > 0) move_selected(frames.front() - 1, false);
}

void StripView::mousePressEvent(QMouseEvent* event) {
  const auto frame = frame_at(event->position().toPoint());
  if (event->button() != Qt::LeftButton || !frame) return;
  pressed_ = frame;
  pressedAt_ = event->position().toPoint();
  const bool plain = (event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier)) == 0;
  // A selected frame may be the beginning of a drag of all that are selected.
  if (!plain || !window_->list.entry(entries_[*frame]).selected) choose(*frame, event->modifiers());
}

std::size_t StripView::drop_position(QPoint place) const {
  const int along =
      vertical() ? place.y() + verticalScrollBar()->value() : place.x() + horizontalScrollBar()->value();
  return std::min(static_cast<std::size_t>(std::max(along + pitch() / 2, 0) / pitch()), entries_.size());
}

void StripView::mouseMoveEvent(QMouseEvent* event) {
  const QPoint place = event->position().toPoint();
  if (!pressed_ || !(event->buttons() & Qt::LeftButton)) return;
  if (!drop_ && (place - pressedAt_).manhattanLength() < QApplication::startDragDistance()) return;
  if (drag_out && leaves(place)) {
    pressed_.reset();
    viewport()->unsetCursor();
    mark_drop(std::nullopt);
    return drag_out();
  }
  mark_drop(drop_position(place));
  viewport()->setCursor(Qt::ClosedHandCursor);
  QScrollBar* bar = vertical() ? verticalScrollBar() : horizontalScrollBar();
  const int along = vertical() ? place.y() : place.x();
  const int room = vertical() ? viewport()->height() : viewport()->width();
  if (along < 0 || along > room) bar->setValue(bar->value() + (along < 0 ? -1 : 1) * pitch() / 2);
}

/// Along the strip it scrolls, as far as the window reaches; across, the frames come out of it.
bool StripView::leaves(QPoint place) const {
  const int across = vertical() ? place.x() : place.y();
  const int room = vertical() ? viewport()->width() : viewport()->height();
  const int far = QApplication::startDragDistance();
  return across < -far || across > room + far ||
         !window()->rect().contains(viewport()->mapTo(window(), place));
}

void StripView::mark_drop(std::optional<std::size_t> position) {
  if (std::exchange(drop_, position) != position) viewport()->update();
}

void StripView::dragEnterEvent(QDragEnterEvent* event) { follow_drag(*event); }
void StripView::dragMoveEvent(QDragMoveEvent* event) { follow_drag(*event); }

void StripView::follow_drag(QDropEvent& event) {
  if (!is_own || !is_own(*event.mimeData())) return event.ignore();
  mark_drop(drop_position(event.position().toPoint()));
  event.setDropAction(event.modifiers() & Qt::ControlModifier ? Qt::CopyAction : Qt::MoveAction);
  event.accept();
}

void StripView::dragLeaveEvent(QDragLeaveEvent*) { mark_drop(std::nullopt); }

/// The frames move when the drag is over.
void StripView::dropEvent(QDropEvent* event) {
  follow_drag(*event);
  const auto to = drop_;
  mark_drop(std::nullopt);
  if (!to || !event->isAccepted()) return;
  const bool copy = event->dropAction() == Qt::CopyAction;
  QTimer::singleShot(0, this, [this, to, copy] {
    if (window_ && move_selected) move_selected(*to, copy);
  });
}

void StripView::mouseReleaseEvent(QMouseEvent* event) {
  const auto pressed = std::exchange(pressed_, std::nullopt);
  const auto drop = std::exchange(drop_, std::nullopt);
  viewport()->unsetCursor();
  if (drop && move_selected) return move_selected(*drop, event->modifiers() & Qt::ControlModifier);
  if (pressed && (event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier)) == 0)
    choose(*pressed, Qt::NoModifier);
}

void StripView::mouseDoubleClickEvent(QMouseEvent* event) {
  const auto frame = frame_at(event->position().toPoint());
  if (frame && open_entry) open_entry(entries_[*frame]);
}

void StripView::keyPressEvent(QKeyEvent* event) {
  if (entries_.empty()) return event->ignore();
  const std::size_t at = current(), last = entries_.size() - 1;
  const int back = vertical() ? Qt::Key_Up : Qt::Key_Left, on = vertical() ? Qt::Key_Down : Qt::Key_Right;
  const int key = event->key();
  const Qt::KeyboardModifiers held = event->modifiers() & Qt::ShiftModifier;
  if ((key == back || key == on) && event->modifiers() & Qt::AltModifier) return shift(key == on);
  if (key == back) return choose(at == 0 ? 0 : at - 1, held);
  if (key == on) return choose(std::min(at + 1, last), held);
  if (key == Qt::Key_Home) return choose(0, held);
  if (key == Qt::Key_End) return choose(last, held);
  if (key == Qt::Key_Space) return choose(at, event->modifiers() & Qt::ControlModifier);
  if (key == Qt::Key_Delete && event->modifiers() == Qt::NoModifier && delete_selected)
    return delete_selected();
  if ((key == Qt::Key_Return || key == Qt::Key_Enter) && open_entry) return open_entry(entries_[at]);
  QAbstractScrollArea::keyPressEvent(event);
}

/// The canvases up to a frame are composed one on the other.
const QPixmap& StripView::composed(std::size_t frame, QSize size) {
  if (std::exchange(composedSize_, size) != size) {
    composed_.clear();
    state_ = {};
  }
  while (composed_.size() <= frame) {
    const ChunkRecord& record = window_->list.record(entries_[composed_.size()]);
    Picture canvas = compose_frame(state_, values_, record);
    if (!canvas) canvas = picture_of(record);
    composed_.push_back(QPixmap::fromImage(scaled_image(canvas, canvas ? size : QSize())));
  }
  return composed_[frame];
}

/// What the frame holds, at its place on the canvas.
void StripView::paint_frame(QPainter& painter, std::size_t frame, const QRect& canvas) {
  const double ratio = devicePixelRatioF();
  const auto draw = [&](const QPixmap& pixmap, const QRect& place) {
    if (!pixmap.isNull()) painter.drawPixmap(place, pixmap);
  };
  if (option(kStripCanvases)) return draw(composed(frame, canvas.size() * ratio), canvas);
  const auto& record = window_->list.entry(entries_[frame]).record;
  const Picture picture = picture_of(*record);
  if (!picture) return;
  const QRect place = place_on(canvas, values_.canvas, GetFrameOffset(*record, values_.kind),
                               {picture.width(), picture.height()});
  painter.save();
  painter.setClipRect(canvas, Qt::IntersectClip);
  draw(thumbnails_.get(record, place.size() * ratio), place);
  painter.restore();
}

void StripView::paint_cell(QPainter& painter, std::size_t frame) {
  const QRect cell = cell_rect(frame);
  const bool chosen = window_->list.entry(entries_[frame]).selected;
  painter.fillRect(cell, palette().color(chosen ? QPalette::Highlight : QPalette::Base));
  const QRect room(cell.topLeft() + QPoint(kInset, kInset), this->room());
  const QRect canvas = canvas_in(room, values_.canvas);
  paint_ground(painter, canvas, values_.background);
  paint_frame(painter, frame, canvas);
  painter.setPen(palette().color(chosen ? QPalette::HighlightedText : QPalette::Text));
  const QRect line(room.left(), room.bottom() + kInset, room.width(), fontMetrics().height());
  if (option(kStripNumbers)) painter.drawText(line, Qt::AlignLeft, QString::number(frame + 1));
  if (option(kStripDelays)) {
    const auto delay = frame_delay_ms(window_->list.record(entries_[frame]), values_.kind, values_.ticks);
    painter.drawText(line, Qt::AlignRight, tr("%1 ms").arg(to_qt(grouped(delay))));
  }
  if (hasFocus() && frame == current()) {
    painter.setPen(QPen(style::bracket_colour(palette()), 2));
    painter.drawRect(cell.adjusted(1, 1, -1, -1));
  }
}

void StripView::paintEvent(QPaintEvent*) {
  QPainter painter(viewport());
  painter.setLayoutDirection(layoutDirection());
  painter.fillRect(viewport()->rect(), style::work_area_colour(palette()));
  if (entries_.empty() && window_) {
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(viewport()->rect(), Qt::AlignCenter, tr("No frames"));
  }
  // The list may have lost entries that are told of in a moment.
  const std::size_t count = entries_.empty() || entries_.back() < window_->list.size() ? entries_.size() : 0;
  QScrollBar* bar = vertical() ? verticalScrollBar() : horizontalScrollBar();
  const int room = vertical() ? viewport()->height() : viewport()->width();
  for (auto i = static_cast<std::size_t>(bar->value() / pitch()); i < count; ++i) {
    const QRect cell = cell_rect(i);
    if ((vertical() ? cell.top() : cell.left()) >= room) break;
    paint_cell(painter, i);
  }
  if (drop_) paint_drop_mark(painter);
}

void StripView::paint_drop_mark(QPainter& painter) {
  QRect mark = cell_rect(*drop_);
  const int before = option(kStripGaps) ? kStripGap / 2 + 2 : 2;
  if (vertical())
    mark = QRect(mark.left(), std::max(mark.top() - before, 0), mark.width(), 4);
  else
    mark = QRect(std::max(mark.left() - before, 0), mark.top(), 4, mark.height());
  painter.fillRect(mark, QColor(style::kAccent));
}

}  // namespace vellum
