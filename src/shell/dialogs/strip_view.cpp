#include "shell/dialogs/strip_view.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>

#include "base/text.h"
#include "configuration/shell_settings.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kRoomWidth = 112, kRoomHeight = 84, kInset = 4, kStripGap = 12, kChecker = 6;

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

}  // namespace

StripView::StripView(DocumentWindow& window, ThumbnailCache& thumbnails, QWidget* parent)
    : QAbstractScrollArea(parent), window_(window), thumbnails_(thumbnails) {
  setFocusPolicy(Qt::StrongFocus);
  setAccessibleName(tr("Film strip"));
  reload();
}

bool StripView::vertical() const { return option(kStripVertical); }

QSize StripView::cell_size() const {
  const bool caption = option(kStripNumbers) || option(kStripDelays);
  return {kRoomWidth + 2 * kInset,
          kRoomHeight + 2 * kInset + (caption ? fontMetrics().height() + kInset : 0)};
}

int StripView::pitch() const {
  const int gap = option(kStripGaps) ? kStripGap : 1;
  return (vertical() ? cell_size().height() : cell_size().width()) + gap;
}

QSize StripView::sizeHint() const {
  const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent);
  const QSize cell = cell_size();
  return vertical() ? QSize(cell.width() + bar + 4, pitch() * 5)
                    : QSize(pitch() * 6, cell.height() + bar + 4);
}

void StripView::reload() {
  entries_ = frame_entries(window_);
  std::vector<std::shared_ptr<const ChunkRecord>> records;
  for (const std::size_t entry : entries_) records.push_back(window_.list.entry(entry).record);
  if (records != shown_) {
    shown_ = std::move(records);
    composed_.clear();
    state_ = {};
  }
  values_ = view_values(window_.list, window_.document);
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
  const auto behind =
      std::ranges::upper_bound(entries_, static_cast<std::size_t>(std::max(window_.document.caret, 0)));
  return behind == entries_.begin() ? 0 : static_cast<std::size_t>(behind - entries_.begin() - 1);
}

void StripView::choose(std::size_t frame, Qt::KeyboardModifiers modifiers) {
  if (frame >= entries_.size()) return;
  ChunkList& list = window_.list;
  window_.document.caret = static_cast<std::int32_t>(entries_[frame]);
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
  show_frame(frame);
  reload();
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
  const FrameList frames = selected_frames(window_);
  if (frames.empty() || !move_selected) return;
  if (forward && frames.back() + 1 < entries_.size()) move_selected(frames.back() + 2);
  if (!forward && frames.front() > 0) move_selected(frames.front() - 1);
}

void StripView::mousePressEvent(QMouseEvent* event) {
  const auto frame = frame_at(event->position().toPoint());
  if (event->button() != Qt::LeftButton || !frame) return;
  pressed_ = frame;
  pressedAt_ = event->position().toPoint();
  const bool plain = (event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier)) == 0;
  // A selected frame may be the beginning of a drag of all that are selected.
  if (!plain || !window_.list.entry(entries_[*frame]).selected) choose(*frame, event->modifiers());
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
  drop_ = drop_position(place);
  viewport()->setCursor(Qt::ClosedHandCursor);
  QScrollBar* bar = vertical() ? verticalScrollBar() : horizontalScrollBar();
  const int along = vertical() ? place.y() : place.x();
  const int room = vertical() ? viewport()->height() : viewport()->width();
  if (along < 0 || along > room) bar->setValue(bar->value() + (along < 0 ? -1 : 1) * pitch() / 2);
  viewport()->update();
}

void StripView::mouseReleaseEvent(QMouseEvent* event) {
  const auto pressed = std::exchange(pressed_, std::nullopt);
  const auto drop = std::exchange(drop_, std::nullopt);
  viewport()->unsetCursor();
  if (drop && move_selected) return move_selected(*drop);
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

QPixmap StripView::composed(std::size_t frame, QSize room) {
  while (composed_.size() <= frame) {
    const ChunkRecord& record = window_.list.record(entries_[composed_.size()]);
    Picture canvas = compose_frame(state_, values_, record);
    if (!canvas) canvas = picture_of(record);
    QSize size;
    if (canvas)
      size = QSize(static_cast<int>(canvas.width()), static_cast<int>(canvas.height()))
                 .scaled(room, Qt::KeepAspectRatio)
                 .expandedTo(QSize(1, 1));
    composed_.push_back(QPixmap::fromImage(scaled_image(canvas, size)));
  }
  return composed_[frame];
}

QPixmap StripView::picture_of_frame(std::size_t frame, QSize room) {
  if (option(kStripCanvases)) return composed(frame, room);
  const auto& record = window_.list.entry(entries_[frame]).record;
  const Picture picture = picture_of(*record);
  if (!picture) return {};
  const QSize size(static_cast<int>(picture.width()), static_cast<int>(picture.height()));
  return thumbnails_.get(record, size.scaled(room, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
}

void StripView::paint_cell(QPainter& painter, std::size_t frame) {
  const QRect cell = cell_rect(frame);
  const bool selected = window_.list.entry(entries_[frame]).selected;
  painter.fillRect(cell, palette().color(selected ? QPalette::Highlight : QPalette::Base));
  const QRect room(cell.topLeft() + QPoint(kInset, kInset), QSize(kRoomWidth, kRoomHeight));
  const double ratio = devicePixelRatioF();
  QPixmap pixmap = picture_of_frame(frame, room.size() * ratio);
  pixmap.setDevicePixelRatio(ratio);
  const QSize size = pixmap.deviceIndependentSize().toSize();
  const QPoint corner =
      room.topLeft() + QPoint((room.width() - size.width()) / 2, (room.height() - size.height()) / 2);
  paint_ground(painter, QRect(corner, size), values_.background);
  painter.drawPixmap(corner, pixmap);
  painter.setPen(palette().color(selected ? QPalette::HighlightedText : QPalette::Text));
  const QRect line(room.left(), room.bottom() + kInset, room.width(), fontMetrics().height());
  if (option(kStripNumbers)) painter.drawText(line, Qt::AlignLeft, QString::number(frame + 1));
  if (option(kStripDelays)) {
    const auto delay = frame_delay_ms(window_.list.record(entries_[frame]), values_.kind, values_.ticks);
    painter.drawText(line, Qt::AlignRight, tr("%1 ms").arg(to_qt(grouped(delay))));
  }
  if (hasFocus() && frame == current()) {
    painter.setPen(QPen(style::bracket_colour(palette()), 2));
    painter.drawRect(cell.adjusted(1, 1, -1, -1));
  }
}

void StripView::paintEvent(QPaintEvent*) {
  QPainter painter(viewport());
  painter.fillRect(viewport()->rect(), style::work_area_colour(palette()));
  // The list may have lost entries that are told of in a moment.
  const std::size_t count = entries_.empty() || entries_.back() < window_.list.size() ? entries_.size() : 0;
  QScrollBar* bar = vertical() ? verticalScrollBar() : horizontalScrollBar();
  const int room = vertical() ? viewport()->height() : viewport()->width();
  for (auto i = static_cast<std::size_t>(bar->value() / pitch()); i < count; ++i) {
    const QRect cell = cell_rect(i);
    if ((vertical() ? cell.top() : cell.left()) >= room) break;
    paint_cell(painter, i);
  }
  if (!drop_) return;
  QRect mark = cell_rect(*drop_);
  const int before = option(kStripGaps) ? kStripGap / 2 + 2 : 2;
  if (vertical())
    mark = QRect(mark.left(), std::max(mark.top() - before, 0), mark.width(), 4);
  else
    mark = QRect(std::max(mark.left() - before, 0), mark.top(), 4, mark.height());
  painter.fillRect(mark, QColor(style::kAccent));
}

}  // namespace vellum
