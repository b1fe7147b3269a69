#include "shell/widgets/palette_grid.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QToolTip>

#include "shell/look/style.h"
#include "shell/widgets/checkers.h"

namespace vellum {

PaletteGrid::PaletteGrid(const PaletteGridForm& form, QWidget* parent) : QWidget(parent), form_(form) {
  setFocusPolicy(Qt::StrongFocus);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  setAccessibleName(tr("Palette"));
}

void PaletteGrid::set_cells(std::vector<PaletteCell> cells) {
  cells_ = std::move(cells);
  selected_.resize(cells_.size());
  const int last = static_cast<int>(cells_.size()) - 1;
  anchor_ = std::min(anchor_, last);
  if (current_ > last || (current_ < 0 && last >= 0))
    set_current(std::max(std::min(current_, last), std::min(0, last)));
  update();
}

void PaletteGrid::set_current(int cell) { choose(cell, Qt::NoModifier, false); }

std::vector<std::size_t> PaletteGrid::selected() const {
  std::vector<std::size_t> cells;
  for (std::size_t i = 0; i < selected_.size(); ++i)
    if (selected_[i]) cells.push_back(i);
  return cells;
}

void PaletteGrid::select(const std::vector<std::size_t>& cells) {
  selected_.assign(cells_.size(), false);
  for (const std::size_t cell : cells)
    if (cell < selected_.size()) selected_[cell] = true;
  update();
  emit selection_changed();
}

QRect PaletteGrid::cell_rect(int cell) const {
  return {1 + cell % form_.columns * form_.cell, 1 + cell / form_.columns * form_.cell, form_.cell,
          form_.cell};
}

int PaletteGrid::cell_at(QPoint place) const {
  const int x = place.x() - 1, y = place.y() - 1;
  if (x < 0 || y < 0 || x >= form_.columns * form_.cell) return -1;
  const int cell = y / form_.cell * form_.columns + x / form_.cell;
  return cell < static_cast<int>(cells_.size()) ? cell : -1;
}

QSize PaletteGrid::sizeHint() const { return {form_.columns * form_.cell + 3, form_.rows * form_.cell + 3}; }

QString PaletteGrid::text_of_cell(int cell) const {
  const QColor& color = cells_[static_cast<std::size_t>(cell)].color;
  QString text = tr("Color %1: %2, %3, %4").arg(cell).arg(color.red()).arg(color.green()).arg(color.blue());
  if (color.alpha() < 255) text += tr(", alpha %1").arg(color.alpha());
  return text;
}

void PaletteGrid::choose(int cell, Qt::KeyboardModifiers modifiers, bool toggle_with_control) {
  if (cell >= static_cast<int>(cells_.size())) return;
  const bool extend = form_.many && (modifiers & Qt::ShiftModifier) && anchor_ >= 0;
  const bool control = form_.many && (modifiers & Qt::ControlModifier);
  if (!extend && !control) selected_.assign(cells_.size(), false);
  if (extend) {
    selected_.assign(cells_.size(), false);
    for (int i = std::min(anchor_, cell); i <= std::max(anchor_, cell); ++i)
      selected_[static_cast<std::size_t>(i)] = true;
  } else if (cell >= 0) {
    const auto at = static_cast<std::size_t>(cell);
    if (!control)
      selected_[at] = true;
    else if (toggle_with_control)
      selected_[at] = !selected_[at];
    anchor_ = cell;
  }
  const bool moved = current_ != cell;
  current_ = cell;
  update();
  if (cell >= 0) setAccessibleDescription(text_of_cell(cell));
  if (moved) emit current_changed(cell);
  emit selection_changed();
}

bool PaletteGrid::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QWidget::event(event);
  const auto* help = static_cast<QHelpEvent*>(event);
  const int cell = cell_at(help->pos());
  cell < 0 ? QToolTip::hideText() : QToolTip::showText(help->globalPos(), text_of_cell(cell), this);
  return true;
}

void PaletteGrid::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setPen(
      style::between(palette().color(QPalette::Window), palette().color(QPalette::WindowText), 0.2));
  for (int i = static_cast<int>(cells_.size()); form_.places && i < form_.columns * form_.rows; ++i)
    painter.drawRect(cell_rect(i).adjusted(1, 1, -2, -2));
  for (int i = 0; i < static_cast<int>(cells_.size()); ++i) paint_cell(painter, i);
  // Frames reach into the neighbors, so they come on top.
  const QColor highlight = palette().color(QPalette::Highlight);
  const auto frame = [&](int cell, const QColor& outer, const QColor& inner) {
    const QRect rect = cell_rect(cell).adjusted(-1, -1, 0, 0);
    painter.setPen(QPen(outer, 2, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(rect.adjusted(1, 1, 0, 0));
    painter.setPen(inner);
    painter.drawRect(rect.adjusted(2, 2, -2, -2));
  };
  for (std::size_t i = 0; form_.frames && i < selected_.size(); ++i)
    if (selected_[i]) frame(static_cast<int>(i), highlight, Qt::white);
  if (dropTarget_ >= 0) frame(dropTarget_, QColor::fromRgb(style::kAccent), Qt::white);
  if (current_ >= 0 && hasFocus()) {
    QPen dots(palette().color(QPalette::Text), 1, Qt::DotLine);
    painter.setPen(dots);
    painter.drawRect(cell_rect(current_).adjusted(-1, -1, 0, 0));
  }
}

/// A color that lets something through lies over checkers in the lower right half of its cell.
void PaletteGrid::paint_cell(QPainter& painter, int cell) const {
  const PaletteCell& shown = cells_[static_cast<std::size_t>(cell)];
  const QRect rect = cell_rect(cell).adjusted(1, 1, -1, -1);
  QColor opaque = shown.color;
  opaque.setAlpha(255);
  painter.fillRect(rect,
                   isEnabled() ? opaque : style::between(opaque, palette().color(QPalette::Window), 0.6));
  if (shown.color.alpha() < 255) {
    painter.save();
    QPolygon half;
    half << rect.topRight() + QPoint(1, 0) << rect.bottomRight() + QPoint(1, 1)
         << rect.bottomLeft() + QPoint(0, 1);
    painter.setClipRegion(QRegion(half));
    paint_checkers(painter, rect, 4);
    painter.fillRect(rect, shown.color);
    painter.restore();
  }
  if (!shown.marked) return;
  painter.setPen(style::readable_on(palette().color(QPalette::Text), opaque));
  painter.drawLine(rect.topLeft() + QPoint(4, 4), rect.bottomRight() - QPoint(4, 4));
  painter.drawLine(rect.topRight() + QPoint(-4, 4), rect.bottomLeft() + QPoint(4, -4));
}

void PaletteGrid::mousePressEvent(QMouseEvent* event) {
  const int cell = cell_at(event->position().toPoint());
  if (event->button() != Qt::LeftButton || cell < 0) return;
  choose(cell, event->modifiers(), true);
  emit chosen(cell);
  pressed_ = event->modifiers() == Qt::NoModifier ? cell : -1;
}

void PaletteGrid::mouseMoveEvent(QMouseEvent* event) {
  if (pressed_ < 0 || !form_.many || !form_.swaps || !(event->buttons() & Qt::LeftButton)) return;
  const int cell = cell_at(event->position().toPoint());
  const int target = cell == pressed_ ? -1 : cell;
  if (target == dropTarget_) return;
  dropTarget_ = target;
  setCursor(target >= 0 ? Qt::DragMoveCursor : Qt::ArrowCursor);
  update();
}

void PaletteGrid::mouseReleaseEvent(QMouseEvent*) {
  const int from = std::exchange(pressed_, -1), to = std::exchange(dropTarget_, -1);
  unsetCursor();
  update();
  if (from < 0 || to < 0) return;
  emit swap_wanted(from, to);
  set_current(to);
}

void PaletteGrid::mouseDoubleClickEvent(QMouseEvent* event) {
  const int cell = cell_at(event->position().toPoint());
  pressed_ = -1;
  if (event->button() == Qt::LeftButton && cell >= 0) emit activated(cell);
}

void PaletteGrid::keyPressEvent(QKeyEvent* event) {
  if (cells_.empty()) return QWidget::keyPressEvent(event);
  const int last = static_cast<int>(cells_.size()) - 1, now = std::max(current_, 0);
  const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
  int to = now;
  switch (event->key()) {
    case Qt::Key_Left:
      to = std::max(now - 1, 0);
      break;
    case Qt::Key_Right:
      to = std::min(now + 1, last);
      break;
    case Qt::Key_Up:
      to = now < form_.columns ? now : now - form_.columns;
      break;
    case Qt::Key_Down:
      to = now + form_.columns > last ? now : now + form_.columns;
      break;
    case Qt::Key_Home:
      to = 0;
      break;
    case Qt::Key_End:
      to = last;
      break;
    case Qt::Key_Space:
      choose(now, modifiers, true);
      emit chosen(now);
      return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      emit activated(now);
      return;
    case Qt::Key_A:
      if (!form_.many || modifiers != Qt::ControlModifier) return QWidget::keyPressEvent(event);
      selected_.assign(cells_.size(), true);
      update();
      emit selection_changed();
      return;
    default:
      return QWidget::keyPressEvent(event);
  }
  choose(to, modifiers, false);
  emit chosen(to);
}

void PaletteGrid::focusInEvent(QFocusEvent*) { update(); }
void PaletteGrid::focusOutEvent(QFocusEvent*) { update(); }

}  // namespace vellum
