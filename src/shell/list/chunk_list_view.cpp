#include "shell/list/chunk_list_view.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <cmath>

#include "core/model/chunk_description.h"
#include "core/model/frame_values.h"
#include "shell/list/row_painter.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kScrollStep = 24;               // pixels, one row of text
constexpr int kDragScrollInterval = 30;       // milliseconds
constexpr int kDropMark = 3, kDropArrow = 6;  // pixels
constexpr int kDropEdge = 20;                 // pixels from an edge within which a drag scrolls

SelectMode mode_of_key(Qt::KeyboardModifiers modifiers) {
  if (modifiers & Qt::ShiftModifier) return SelectMode::Extend;
  return modifiers & Qt::ControlModifier ? SelectMode::Move : SelectMode::Only;
}

}  // namespace

ChunkListView::ChunkListView(DocumentWindow& window, ThumbnailCache& thumbnails, QWidget* parent)
    : QAbstractScrollArea(parent),
      window_(window),
      thumbnails_(thumbnails),
      selection_(window),
      search_(window),
      tip_(*viewport(), window) {
  setFrameShape(QFrame::NoFrame);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  setFocusPolicy(Qt::StrongFocus);
  setAccessibleName(tr("Chunk list"));
  setFont(style::list_font());
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
  viewport()->setMouseTracking(true);
  viewport()->setAcceptDrops(true);
  setLayoutDirection(Qt::LeftToRight);  // tags, numbers and facts stand in columns from the left
  selection_.shown = [this](std::size_t row) { return is_shown(row); };
  window_.list.changed = [this](const ListChange& change) { list_changed(change); };
  lay_out();
}

ChunkListView::~ChunkListView() { window_.list.changed = nullptr; }

std::int64_t ChunkListView::scrolled() const { return verticalScrollBar()->value(); }

QRect ChunkListView::row_rect(std::size_t row) {
  settle();
  return QRect(0, static_cast<int>(geometry_.top(row) - scrolled()), viewport()->width(),
               geometry_.height(row));
}

std::size_t ChunkListView::row_at(QPoint place) {
  settle();
  return geometry_.row_at(place.y() + scrolled());
}

void ChunkListView::show_row(std::size_t row) {
  const QRect rect = row_rect(row);
  QScrollBar* bar = verticalScrollBar();
  if (rect.top() < 0 || rect.height() > viewport()->height())
    bar->setValue(static_cast<int>(geometry_.top(row)));
  else if (rect.bottom() >= viewport()->height())
    bar->setValue(bar->value() + rect.bottom() + 1 - viewport()->height());
}

void ChunkListView::show_top_row() {
  settle();
  const std::size_t top = std::min(window_.list.topIndex, geometry_.rows());
  verticalScrollBar()->setValue(static_cast<int>(geometry_.top(top)));
}

void ChunkListView::list_changed(const ListChange& change) {
  tip_.dismiss();
  switch (change.what) {
    case ListChange::What::Selection:
      for (std::size_t i = change.first; !shown_.empty() && i < change.first + change.count; ++i)
        if (window_.list.entry(i).selected && !is_shown(i)) layoutPending_ = true;
      layoutPending_ ? viewport()->update() : update_rows(change.first, change.count);
      break;
    case ListChange::What::Content:
      look_up_document();
      search_.look_at(change.first, change.count);
      update_rows(change.first, change.count);
      break;
    default:
      // Many entries may come one by one: the heights are summed when they are next needed.
      layoutPending_ = true;
      searchOld_ = searchOld_ || change.what != ListChange::What::Layout;
      viewport()->update();
  }
  emit changed();
}

void ChunkListView::settle() {
  if (std::exchange(layoutPending_, false)) lay_out();
}

void ChunkListView::lay_out() {
  if (std::exchange(searchOld_, false)) search_.look_again();
  show_found();
  geometry_ = RowGeometry(window_.list, shown_);
  look_up_document();
  selection_.reset();
  const std::size_t top = window_.list.topIndex;
  update_scroll_bar();
  window_.list.topIndex = top;
  show_top_row();
  viewport()->update();
}

/// Rows that hold the text, and those that were selected since: what a command has just made is seen.
void ChunkListView::show_found() {
  shown_.clear();
  if (!hides_ || !search_.active()) return;
  shown_.resize(window_.list.size());
  for (std::size_t i = 0; i < shown_.size(); ++i)
    shown_[i] = search_.found(i) || window_.list.entry(i).selected;
  settle_caret();
}

std::size_t ChunkListView::shown_from(std::size_t row, bool forwards) const {
  while (row < window_.list.size() && !is_shown(row)) row = forwards ? row + 1 : row - 1;
  return row < window_.list.size() ? row : kNoEntry;
}

/// The caret stands on a row that is seen, if there is one.
void ChunkListView::settle_caret() {
  const auto caret = static_cast<std::size_t>(std::max(window_.document.caret, 0));
  std::size_t row = shown_from(caret, true);
  if (row == kNoEntry) row = shown_from(std::min(caret, window_.list.size() - 1), false);
  if (row != kNoEntry) window_.document.caret = static_cast<std::int32_t>(row);
}

void ChunkListView::find_text(const QString& text, bool hide) {
  settle();
  search_.look_for(text);
  hides_ = hide;
  shown_.clear();
  if (hides_ && search_.active())
    for (std::size_t i = 0; window_.list.selected_count() > 0 && i < window_.list.size(); ++i)
      if (!search_.found(i)) window_.list.select(i, false);
  lay_out();
  if (!window_.list.empty())
    show_row(
        std::min(static_cast<std::size_t>(std::max(window_.document.caret, 0)), window_.list.size() - 1));
  emit changed();
}

void ChunkListView::go_to_found(bool forwards) {
  settle();
  const std::size_t row =
      search_.next(static_cast<std::size_t>(std::max(window_.document.caret, 0)), forwards);
  if (row != kNoEntry) apply(row, SelectMode::Only);
}

void ChunkListView::select_shown(bool selected, bool images) {
  settle();
  if (!images && shown_.empty()) return window_.list.select_all(selected);
  for (std::size_t i = 0; i < window_.list.size(); ++i)
    if (is_shown(i) && (!images || is_image_entry(window_.document.kind, window_.list.record(i).tag)))
      window_.list.select(i, selected);
}

/// What all rows are drawn with.
void ChunkListView::look_up_document() {
  canvas_ = document_size(window_.list, window_.document);
  background_ = document_background(window_.list, window_.document);
  const DocumentKind kind = window_.document.kind;
  const bool shared = kind == DocumentKind::PING || kind == DocumentKind::APNG;
  transparency_ = shared ? document_transparency(window_.list) : std::vector<std::uint8_t>();
}

void ChunkListView::update_rows(std::size_t first, std::size_t count) {
  if (layoutPending_ || count == 0 || first + count > geometry_.rows()) return;
  const std::int64_t top = std::max<std::int64_t>(geometry_.top(first) - scrolled(), 0);
  const std::int64_t end =
      std::min<std::int64_t>(geometry_.top(first + count) - scrolled(), viewport()->height());
  if (top < end)
    viewport()->update(0, static_cast<int>(top), viewport()->width(), static_cast<int>(end - top));
}

void ChunkListView::update_scroll_bar() {
  QScrollBar* bar = verticalScrollBar();
  const int page = viewport()->height();
  bar->setRange(0, static_cast<int>(std::clamp<std::int64_t>(geometry_.height() - page, 0, INT_MAX)));
  bar->setPageStep(page);
  bar->setSingleStep(kScrollStep);
}

void ChunkListView::resizeEvent(QResizeEvent*) {
  settle();
  update_scroll_bar();
}

void ChunkListView::changeEvent(QEvent* event) {
  if (event->type() == QEvent::PaletteChange) viewport()->update();
  QAbstractScrollArea::changeEvent(event);
}

void ChunkListView::scrollContentsBy(int, int dy) {
  tip_.dismiss();
  const std::size_t top = geometry_.nearest_row(scrolled());
  if (top != kNoEntry) window_.list.topIndex = top;
  // A part of a device pixel can't be moved, it has to be drawn.
  const double moved = dy * devicePixelRatioF();
  moved == std::round(moved) ? viewport()->scroll(0, dy) : viewport()->update();
}

void ChunkListView::paintEvent(QPaintEvent* event) {
  settle();
  QPainter painter(viewport());
  painter.setLayoutDirection(layoutDirection());
  painter.setFont(font());
  for (const QRect& area : event->region()) paint_rows(painter, area);
  if (window_.document.DropInsertMark >= 0) paint_drop_mark(painter);
}

/// Where what is dragged will stand: a line between two rows.
void ChunkListView::paint_drop_mark(QPainter& painter) {
  const auto position =
      std::min<std::size_t>(static_cast<std::size_t>(window_.document.DropInsertMark), geometry_.rows());
  const auto y = std::max(static_cast<int>(geometry_.top(position) - scrolled()), kDropMark / 2 + 1);
  const int right = viewport()->width();
  painter.setClipRect(viewport()->rect());
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor::fromRgb(style::kAccent));
  painter.drawRect(QRect(0, y - kDropMark / 2 - 1, right, kDropMark));
  painter.drawPolygon(QPolygon({{0, y - kDropArrow}, {kDropArrow, y}, {0, y + kDropArrow}}));
  painter.drawPolygon(QPolygon({{right, y - kDropArrow}, {right - kDropArrow, y}, {right, y + kDropArrow}}));
}

void ChunkListView::paint_rows(QPainter& painter, const QRect& area) {
  const RowPainting painting{painter,
                             window_,
                             thumbnails_,
                             canvas_,
                             background_,
                             style::row_colours(palette(), false),
                             style::row_colours(palette(), true),
                             style::bracket_colour(palette()),
                             is_favorite && is_favorite(),
                             &transparency_,
                             search_.text()};
  painter.setClipRect(area);
  // While a list is being filled it may be shorter than its last layout.
  const std::size_t rows = std::min(geometry_.rows(), window_.list.size());
  int bottom = area.top();
  for (std::size_t row = row_at(area.topLeft()); row < rows && bottom <= area.bottom(); ++row) {
    if (geometry_.height(row) == 0) continue;
    const QRect rect = row_rect(row);
    paint_row(painting, row, rect);
    bottom = rect.bottom() + 1;
    ++rowsPainted_;
  }
  if (bottom > area.bottom()) return;
  painter.fillRect(QRect(QPoint(area.left(), bottom), area.bottomRight()), painting.plain.ground);
  if (geometry_.height() > 0 || !search_.active()) return;
  painter.setPen(painting.plain.text);
  painter.drawText(viewport()->rect(), Qt::AlignCenter, text_of(StringId::FindNoMatch));
}

void ChunkListView::apply(std::size_t row, SelectMode mode) {
  const std::int32_t before = window_.document.caret;
  selection_.apply(row, mode);
  if (before >= 0) update_rows(static_cast<std::size_t>(before), 1);
  update_rows(row, 1);
  show_row(row);
  announce_caret();
  emit changed();
}

void ChunkListView::mousePressEvent(QMouseEvent* event) {
  tip_.dismiss();
  const std::size_t row = row_at(event->position().toPoint());
  if (event->button() != Qt::LeftButton || row == kNoEntry) return;
  const bool shift = event->modifiers() & Qt::ShiftModifier;
  const bool control = event->modifiers() & Qt::ControlModifier;
  if (!shift && !control && window_.list.entry(row).selected) {
    pressedRow_ = row;
    pressedPlace_ = event->position().toPoint();
    return;
  }
  apply(row, shift ? SelectMode::Extend : control ? SelectMode::Toggle : SelectMode::Only);
  dragging_ = !control;
}

void ChunkListView::mouseMoveEvent(QMouseEvent* event) {
  const QPoint moved = event->position().toPoint() - pressedPlace_;
  if (event->buttons() == Qt::NoButton) hover(event->position().toPoint());
  if (pressedRow_ != kNoEntry && (event->buttons() & Qt::LeftButton) &&
      moved.manhattanLength() >= QApplication::startDragDistance()) {
    pressedRow_ = kNoEntry;
    emit drag_wanted();
    return;
  }
  if (!dragging_ || !(event->buttons() & Qt::LeftButton)) return;
  dragPlace_ = event->position().toPoint();
  const bool outside = !viewport()->rect().contains(dragPlace_);
  if (!outside)
    dragTimer_.stop();
  else if (!dragTimer_.isActive())
    dragTimer_.start(kDragScrollInterval, this);
  follow_drag();
}

void ChunkListView::mouseReleaseEvent(QMouseEvent* event) {
  dragging_ = false;
  dragTimer_.stop();
  const std::size_t row = std::exchange(pressedRow_, kNoEntry);
  if (row < window_.list.size() && row == row_at(event->position().toPoint())) apply(row, SelectMode::Only);
}

void ChunkListView::mouseDoubleClickEvent(QMouseEvent* event) {
  tip_.dismiss();
  dragging_ = false;
  pressedRow_ = kNoEntry;
  const std::size_t row = row_at(event->position().toPoint());
  if (event->button() != Qt::LeftButton || row == kNoEntry) return;
  window_.document.caret = static_cast<std::int32_t>(row);
  emit edit_wanted();
}

/// The row's menu leaves caret and selection where they are.
void ChunkListView::contextMenuEvent(QContextMenuEvent* event) {
  tip_.dismiss();
  settle();
  if (geometry_.height() == 0) return;
  const std::size_t last = geometry_.nearest_row(geometry_.height());
  const bool by_mouse = event->reason() == QContextMenuEvent::Mouse;
  const auto caret = static_cast<std::size_t>(std::max(window_.document.caret, 0));
  const std::size_t row = std::min(by_mouse ? row_at(event->pos()) : caret, last);
  if (!by_mouse) show_row(row);
  emit menu_wanted(row, by_mouse ? event->globalPos() : viewport()->mapToGlobal(row_rect(row).center()));
}

void ChunkListView::wheelEvent(QWheelEvent* event) {
  tip_.dismiss();
  QAbstractScrollArea::wheelEvent(event);
}

bool ChunkListView::viewportEvent(QEvent* event) {
  const auto type = event->type();
  if (type == QEvent::Leave || type == QEvent::Hide) tip_.dismiss();
  return QAbstractScrollArea::viewportEvent(event);
}

void ChunkListView::hover(QPoint place) {
  const std::size_t row = row_at(place);
  if (row >= window_.list.size())
    tip_.dismiss();
  else
    tip_.hover(row, place);
}

// -------------------------------------------------------------------------------------------------------
// drops

std::size_t ChunkListView::drop_row(QPoint place) {
  settle();
  const std::size_t row = geometry_.nearest_row(place.y() + scrolled());
  return row == kNoEntry ? window_.list.size() - 1 : row;
}

/// The place between two rows that is nearest to the pointer, as a position in the list.
std::size_t ChunkListView::gap_at(QPoint place) {
  const std::size_t row = drop_row(place);
  return row + (place.y() > row_rect(row).center().y() ? 1 : 0);
}

bool ChunkListView::is_own_drag(const QDropEvent& event) const {
  return is_own && put_here && is_own(*event.mimeData());
}

void ChunkListView::follow_own_drag(QDropEvent& event) {
  const QPoint place = event.position().toPoint();
  const PutRows wanted{gap_at(place), event.modifiers().testFlag(Qt::ControlModifier)};
  auto& [last, may] = lastGap_;
  if (last.position != wanted.position || last.copy != wanted.copy) {
    last = wanted;
    may = may_put_rows(window_, wanted);
  }
  scroll_beside(place);
  mark_drop(may ? static_cast<std::int32_t>(wanted.position) : -1);
  if (!may) return event.ignore();
  event.setDropAction(wanted.copy ? Qt::CopyAction : Qt::MoveAction);
  event.accept();
}

void ChunkListView::mark_drop(std::int32_t position) {
  if (std::exchange(window_.document.DropInsertMark, position) != position) viewport()->update();
}

/// While something is held close to an edge, the list goes on moving.
void ChunkListView::scroll_beside(QPoint place) {
  const int below = place.y() - (viewport()->height() - kDropEdge);
  dropScroll_ = place.y() < kDropEdge ? -kScrollStep / 2 : below > 0 ? kScrollStep / 2 : 0;
  if (dropScroll_ == 0)
    dropTimer_.stop();
  else if (!dropTimer_.isActive())
    dropTimer_.start(kDragScrollInterval, this);
}

void ChunkListView::dragEnterEvent(QDragEnterEvent* event) {
  tip_.dismiss();
  dropShape_ = shape_of(window_.list, window_.document.kind);
  lastGap_.first.position = kNoEntry;
  dragMoveEvent(event);
}

void ChunkListView::dragMoveEvent(QDragMoveEvent* event) {
  if (window_.list.empty() || !may_drop || !may_drop(*event->mimeData())) return event->ignore();
  if (is_own_drag(*event)) return follow_own_drag(*event);
  const QPoint place = event->position().toPoint();
  const auto position = place_for(dropShape_, image_tag(window_.document.kind), drop_row(place) + 1);
  scroll_beside(place);
  mark_drop(position ? static_cast<std::int32_t>(*position) : -1);
  event->setDropAction(Qt::CopyAction);
  event->accept();
}

void ChunkListView::dragLeaveEvent(QDragLeaveEvent*) {
  dropTimer_.stop();
  mark_drop(-1);
}

void ChunkListView::dropEvent(QDropEvent* event) {
  dropTimer_.stop();
  mark_drop(-1);
  if (window_.list.empty() || !may_drop || !may_drop(*event->mimeData())) return event->ignore();
  if (is_own_drag(*event)) {
    follow_own_drag(*event);
    dropTimer_.stop();
    mark_drop(-1);
    if (lastGap_.second) put_here(lastGap_.first.position, lastGap_.first.copy);
    return;
  }
  event->setDropAction(Qt::CopyAction);
  event->accept();
  if (drop) drop(*event->mimeData(), drop_row(event->position().toPoint()));
}

void ChunkListView::timerEvent(QTimerEvent* event) {
  if (event->timerId() == dragTimer_.timerId())
    follow_drag();
  else if (event->timerId() == dropTimer_.timerId())
    verticalScrollBar()->setValue(verticalScrollBar()->value() + dropScroll_);
  else
    QAbstractScrollArea::timerEvent(event);
}

void ChunkListView::follow_drag() {
  const std::size_t row = geometry_.nearest_row(dragPlace_.y() + scrolled());
  if (row < window_.list.size() && static_cast<std::int64_t>(row) != window_.document.caret)
    apply(row, SelectMode::Extend);
}

std::size_t ChunkListView::row_for_key(int key) const {
  const std::size_t first = geometry_.nearest_row(0), last = geometry_.nearest_row(geometry_.height());
  const std::size_t caret =
      std::clamp<std::size_t>(static_cast<std::size_t>(std::max(window_.document.caret, 0)), first, last);
  const std::size_t above = caret == first ? first : shown_from(caret - 1, false);
  const std::size_t below = caret == last ? last : shown_from(caret + 1, true);
  switch (key) {
    case Qt::Key_Up:
      return above;
    case Qt::Key_Down:
      return below;
    case Qt::Key_PageUp:
      return std::min(geometry_.nearest_row(geometry_.top(caret) - viewport()->height()), above);
    case Qt::Key_PageDown:
      return std::max(geometry_.nearest_row(geometry_.top(caret) + viewport()->height()), below);
    case Qt::Key_Home:
      return first;
    case Qt::Key_End:
      return last;
    default:
      return kNoEntry;
  }
}

void ChunkListView::keyPressEvent(QKeyEvent* event) {
  tip_.dismiss();
  settle();
  if (event->key() == Qt::Key_Escape && search_.active()) return emit search_ended();
  if (geometry_.height() == 0 || geometry_.rows() != window_.list.size())
    return QAbstractScrollArea::keyPressEvent(event);
  const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
  if (event->key() == Qt::Key_F10 && modifiers == Qt::ShiftModifier) {
    QContextMenuEvent wanted(QContextMenuEvent::Keyboard, QPoint(), QPoint());
    return contextMenuEvent(&wanted);
  }
  if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && modifiers == Qt::NoModifier)
    return emit edit_wanted();
  if (event->key() == Qt::Key_Space) {
    const auto caret = static_cast<std::size_t>(std::max(window_.document.caret, 0));
    if (caret < window_.list.size())
      apply(caret, modifiers == Qt::ControlModifier ? SelectMode::Toggle : mode_of_key(modifiers));
    return;
  }
  const std::size_t row = row_for_key(event->key());
  if (row == kNoEntry || (modifiers & (Qt::AltModifier | Qt::MetaModifier))) return event->ignore();
  apply(row, mode_of_key(modifiers));
}

/// A screen reader hears the row that the caret has come to.
void ChunkListView::announce_caret() {
  const auto caret = static_cast<std::size_t>(window_.document.caret);
  const RowText text = row_text(caret, window_.list.record(caret).description);
  setAccessibleDescription(to_qt(text.label + text.text));
}

}  // namespace vellum
