#include "shell/widgets/hex_view.h"

#include <QClipboard>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kRowsWanted = 16, kLeastRows = 6;
constexpr double kQuiet = 0.5;  // how far bytes of 0 and dots fade into the ground
constexpr std::size_t kMostCopied = std::size_t{16} << 20;  // bytes that go to the clipboard at once

char shown_letter(std::uint8_t byte) { return byte >= 32 && byte < 127 ? static_cast<char>(byte) : '.'; }

}  // namespace

HexView::HexView(QWidget* parent) : QAbstractScrollArea(parent) {
  QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  fixed.setStyleHint(QFont::Monospace);
  setFont(fixed);
  setFocusPolicy(Qt::StrongFocus);
  setLayoutDirection(Qt::LeftToRight);  // bytes stand in the order of the file
  setAccessibleName(tr("Bytes"));
  viewport()->setCursor(Qt::IBeamCursor);
  update_scroll_bars();
}

void HexView::set_bytes(std::vector<std::uint8_t> bytes) {
  buffer_ = HexBuffer(std::move(bytes));
  caret_ = anchor_ = 0;
  lowDigit_ = false;
  update_scroll_bars();
  verticalScrollBar()->setValue(0);
  viewport()->update();
  emit changed();
  emit caret_moved();
}

int HexView::row_height() const { return fontMetrics().height() + 2; }
int HexView::letter() const { return fontMetrics().horizontalAdvance(u'0'); }
int HexView::offset_digits() const { return buffer_.size() > 0xFFFFFF ? 8 : 6; }

int HexView::hex_left(int column) const {
  const int gap = column >= rowBytes_ / 2 ? letter() : 0;
  return style::kGap + (offset_digits() + 2 + 3 * column) * letter() + gap;
}
int HexView::text_left(int column) const { return hex_left(rowBytes_) + letter() + column * letter(); }

QSize HexView::sizeHint() const {
  const int frame = 2 * frameWidth();
  return {text_left(rowBytes_) + style::kGap + frame + verticalScrollBar()->sizeHint().width(),
          kRowsWanted * row_height() + frame};
}

/// As wide as a row, so that characters are never out of sight, and a few rows high.
QSize HexView::minimumSizeHint() const {
  const int frame = 2 * frameWidth() + verticalScrollBar()->sizeHint().width();
  return {narrow_ ? row_width(kNarrowRow) + frame : sizeHint().width(),
          kLeastRows * row_height() + 2 * frameWidth()};
}

void HexView::set_narrow(bool narrow) {
  narrow_ = narrow;
  choose_row();
  updateGeometry();
}

int HexView::row_width(int bytes) const {
  const int numbers = style::kGap + (offset_digits() + 2 + 3 * bytes + 2 + bytes) * letter();
  return numbers + style::kGap;
}

void HexView::choose_row() {
  int bytes = kWideRow;
  while (narrow_ && bytes > kNarrowRow && row_width(bytes) > viewport()->width()) bytes /= 2;
  if (std::exchange(rowBytes_, bytes) != bytes) viewport()->update();
}

void HexView::update_scroll_bars() {
  choose_row();
  const int page = std::max(viewport()->height() / row_height(), 1);
  verticalScrollBar()->setRange(0, std::max(static_cast<int>(rows()) - page, 0));
  verticalScrollBar()->setPageStep(page);
  const int width = text_left(rowBytes_) + style::kGap;
  horizontalScrollBar()->setRange(0, std::max(width - viewport()->width(), 0));
  horizontalScrollBar()->setPageStep(viewport()->width());
  horizontalScrollBar()->setSingleStep(letter());
}

void HexView::resizeEvent(QResizeEvent*) { update_scroll_bars(); }

void HexView::changeEvent(QEvent* event) {
  QAbstractScrollArea::changeEvent(event);
  if (event->type() == QEvent::FontChange) update_scroll_bars();
  viewport()->update();
}

void HexView::focusInEvent(QFocusEvent*) { viewport()->update(); }
void HexView::focusOutEvent(QFocusEvent*) { viewport()->update(); }

void HexView::paintEvent(QPaintEvent* event) {
  QPainter painter(viewport());
  painter.setLayoutDirection(layoutDirection());
  painter.fillRect(event->rect(), palette().color(QPalette::Base));
  painter.translate(-horizontalScrollBar()->value(), 0);
  const auto first = static_cast<std::size_t>(verticalScrollBar()->value());
  const int height = row_height();
  for (int i = event->rect().top() / height; i * height <= event->rect().bottom(); ++i) {
    if (first + static_cast<std::size_t>(i) >= rows()) break;
    paint_row(painter, first + static_cast<std::size_t>(i), i * height);
    ++rowsPainted_;
  }
}

void HexView::paint_row(QPainter& painter, std::size_t row, int top) {
  const std::size_t begin = row * rowBytes_;
  painter.setPen(palette().color(QPalette::PlaceholderText));
  painter.drawText(style::kGap, top + 1 + fontMetrics().ascent(),
                   QStringLiteral("%1").arg(begin, offset_digits(), 16, QLatin1Char('0')).toUpper());
  const std::size_t end = std::min(begin + rowBytes_, buffer_.size());
  for (std::size_t at = begin; at < end; ++at) paint_byte(painter, at, top);
  if (caret_ >= begin && caret_ < begin + rowBytes_)
    paint_caret(painter, static_cast<int>(caret_ - begin), top);
}

void HexView::paint_byte(QPainter& painter, std::size_t at, int top) {
  const int column = static_cast<int>(at % rowBytes_);
  const std::uint8_t byte = buffer_.bytes()[at];
  const bool selected = at >= selection_begin() && at < selection_begin() + selection_size();
  const QColor ground = palette().color(selected ? QPalette::Highlight : QPalette::Base);
  const QColor ink = palette().color(selected ? QPalette::HighlightedText : QPalette::Text);
  if (selected) {
    const bool last = column == rowBytes_ - 1 || at + 1 == selection_begin() + selection_size();
    painter.fillRect(hex_left(column), top, (last ? 2 : 3) * letter(), row_height(), ground);
    painter.fillRect(text_left(column), top, letter(), row_height(), ground);
  }
  const QColor quiet = style::between(ink, ground, kQuiet);
  const int baseline = top + 1 + fontMetrics().ascent();
  painter.setPen(byte == 0 ? quiet : ink);
  painter.drawText(hex_left(column), baseline, to_qt(hex_text({&byte, 1})));
  painter.setPen(shown_letter(byte) == '.' && byte != '.' ? quiet : ink);
  painter.drawText(text_left(column), baseline, QString(QLatin1Char(shown_letter(byte))));
}

/// A frame around what the next key changes, and a weaker one around the same byte in the other form. In
/// insert mode a bar in front of it.
void HexView::paint_caret(QPainter& painter, int column, int top) {
  const int low = lowDigit_ ? letter() : 0;
  const QRect hex(hex_left(column) + (inText_ ? 0 : low), top, (inText_ ? 2 : 1) * letter(),
                  row_height() - 1);
  const QRect text(text_left(column), top, letter(), row_height() - 1);
  const QColor ink = palette().color(hasFocus() ? QPalette::Text : QPalette::PlaceholderText);
  const QRect own = inText_ ? text : hex;
  painter.setPen(style::between(ink, palette().color(QPalette::Base), kQuiet));
  painter.drawRect(inText_ ? hex : text);
  painter.setPen(ink);
  if (inserting_ && hasFocus())
    painter.fillRect(own.left() - 1, own.top(), 2, own.height(), ink);
  else
    painter.drawRect(own);
}

std::size_t HexView::byte_at(QPoint place, bool& in_text) const {
  const int x = place.x() + horizontalScrollBar()->value();
  in_text = x >= text_left(0) - letter() / 2;
  int column = 0;
  while (column + 1 < rowBytes_ &&
         x >= (in_text ? text_left(column + 1) : hex_left(column + 1) - letter() / 2))
    ++column;
  const int row = std::max(verticalScrollBar()->value() + (place.y() < 0 ? -1 : place.y() / row_height()), 0);
  return std::min(static_cast<std::size_t>(row) * rowBytes_ + static_cast<std::size_t>(column),
                  buffer_.size());
}

void HexView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  const std::size_t at = byte_at(event->position().toPoint(), inText_);
  move_caret(at, event->modifiers() & Qt::ShiftModifier);
}

void HexView::mouseMoveEvent(QMouseEvent* event) {
  if (!(event->buttons() & Qt::LeftButton)) return;
  bool in_text = false;
  move_caret(byte_at(event->position().toPoint(), in_text), true);
}

void HexView::move_caret(std::size_t offset, bool extend) {
  caret_ = std::min(offset, buffer_.size());
  if (!extend) anchor_ = caret_;
  lowDigit_ = false;
  show_caret();
  emit caret_moved();
}

void HexView::show_caret() {
  const int row = static_cast<int>(caret_ / rowBytes_), page = verticalScrollBar()->pageStep();
  if (row < verticalScrollBar()->value()) verticalScrollBar()->setValue(row);
  if (row >= verticalScrollBar()->value() + page) verticalScrollBar()->setValue(row - page + 1);
  viewport()->update();
}

void HexView::go_to(std::size_t offset) { move_caret(offset, false); }

void HexView::select(std::size_t first, std::size_t count) {
  move_caret(first, false);
  move_caret(first + count, true);
}

bool HexView::find(std::span<const std::uint8_t> wanted) {
  const auto at = buffer_.find(wanted, selection_begin() + (selection_size() > 0 ? 1 : 0));
  if (at) select(*at, wanted.size());
  return at.has_value();
}

bool HexView::move_by_key(const QKeyEvent& event) {
  const bool control = event.modifiers() & Qt::ControlModifier;
  const auto page = static_cast<std::size_t>(verticalScrollBar()->pageStep()) * rowBytes_;
  const std::size_t line = caret_ / rowBytes_ * rowBytes_;
  const auto back = [&](std::size_t step) { return caret_ < step ? caret_ % rowBytes_ : caret_ - step; };
  std::size_t to = caret_;
  switch (event.key()) {
    case Qt::Key_Left:
      to = caret_ == 0 ? 0 : caret_ - 1;
      break;
    case Qt::Key_Right:
      to = caret_ + 1;
      break;
    case Qt::Key_Up:
      to = back(rowBytes_);
      break;
    case Qt::Key_Down:
      to = caret_ + rowBytes_;
      break;
    case Qt::Key_PageUp:
      to = back(page);
      break;
    case Qt::Key_PageDown:
      to = caret_ + page;
      break;
    case Qt::Key_Home:
      to = control ? 0 : line;
      break;
    case Qt::Key_End:
      to = control ? buffer_.size() : line + rowBytes_ - 1;
      break;
    default:
      return false;
  }
  move_caret(to, event.modifiers() & Qt::ShiftModifier);
  return true;
}

bool HexView::run_shortcut(const QKeyEvent& event) {
  if (event.matches(QKeySequence::Copy)) return copy(), true;
  if (event.matches(QKeySequence::SelectAll)) return select(0, buffer_.size()), true;
  if (event.key() == Qt::Key_F6) {
    inText_ = !inText_;
    move_caret(caret_, true);
    return true;
  }
  if (readOnly_) return false;
  if (event.matches(QKeySequence::Undo)) return undo(), true;
  if (event.matches(QKeySequence::Redo) ||
      (event.key() == Qt::Key_Y && event.modifiers() == Qt::ControlModifier))
    return redo(), true;
  if (event.matches(QKeySequence::Paste)) return paste(), true;
  if (event.matches(QKeySequence::Cut)) return copy(), erase(false), true;
  if (event.key() == Qt::Key_Delete) return erase(false), true;
  if (event.key() == Qt::Key_Backspace) return erase(true), true;
  if (event.key() == Qt::Key_Insert && event.modifiers() == Qt::NoModifier) {
    inserting_ = !inserting_;
    move_caret(caret_, true);
    return true;
  }
  return false;
}

/// In a window whose commands have keys, those of an editor mean the bytes.
bool HexView::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride) {
    const auto* key = static_cast<QKeyEvent*>(event);
    static constexpr QKeySequence::StandardKey own[] = {QKeySequence::Copy,  QKeySequence::SelectAll,
                                                        QKeySequence::Undo,  QKeySequence::Redo,
                                                        QKeySequence::Paste, QKeySequence::Cut};
    const bool edits = key->key() == Qt::Key_Delete || key->key() == Qt::Key_Insert;
    if (edits || std::ranges::any_of(own, [key](auto sequence) { return key->matches(sequence); }))
      event->accept();
  }
  return QAbstractScrollArea::event(event);
}

void HexView::keyPressEvent(QKeyEvent* event) {
  if (run_shortcut(*event) || move_by_key(*event)) return;
  const bool typed = !readOnly_ && !event->text().isEmpty() && event->text()[0] >= u' ' &&
                     !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
  typed ? type(event->text()) : event->ignore();
}

void HexView::type(const QString& text) {
  for (const char letter : text.toLatin1()) {
    const auto digit = QString(QLatin1Char(letter)).toInt(nullptr, 16);
    if (inText_)
      type_letter(letter);
    else if (QByteArray("0123456789abcdefABCDEF").contains(letter))
      type_digit(digit);
  }
}

/// The high digit makes a byte or changes one; the low one then finishes the same step.
void HexView::type_digit(int digit) {
  const std::size_t at = selection_begin(), removed = selection_size();
  const bool low = lowDigit_ && removed == 0 && at < buffer_.size();
  const std::uint8_t old = at < buffer_.size() ? buffer_.bytes()[at] : std::uint8_t{0};
  const bool fresh = !low && (inserting_ || removed > 0 || at >= buffer_.size());
  const auto byte = static_cast<std::uint8_t>(low     ? (old & 0xF0) | digit
                                              : fresh ? digit << 4
                                                      : (old & 0x0F) | digit << 4);
  if (!buffer_.replace(at, fresh ? removed : 1, {&byte, 1}, low)) return;
  settle_change(low ? at + 1 : at);
  lowDigit_ = !low;
}

void HexView::type_letter(char letter) {
  const auto byte = static_cast<std::uint8_t>(letter);
  const std::size_t removed = selection_size() > 0 ? selection_size() : inserting_ ? 0 : 1;
  const std::size_t at = selection_begin();
  if (buffer_.replace(at, removed, {&byte, 1})) settle_change(at + 1);
}

void HexView::erase(bool backwards) {
  std::size_t at = selection_begin(), count = selection_size();
  if (count == 0) {
    if (backwards ? at == 0 : at >= buffer_.size()) return;
    count = 1;
    at -= backwards ? 1 : 0;
  }
  buffer_.replace(at, count, {});
  settle_change(at);
}

/// Hexadecimal numbers as their bytes; any other text, and all text among the characters, as it is in UTF-8.
void HexView::paste() {
  const QByteArray text = QGuiApplication::clipboard()->text().toUtf8();
  std::vector<std::uint8_t> bytes(text.begin(), text.end());
  if (!inText_)
    if (auto numbers = parse_hex({text.data(), static_cast<std::size_t>(text.size())}))
      bytes = std::move(*numbers);
  if (bytes.empty()) return;
  const std::size_t at = selection_begin();
  const std::size_t removed = selection_size() > 0 || inserting_ ? selection_size() : bytes.size();
  if (buffer_.replace(at, removed, bytes)) settle_change(at + bytes.size());
}

void HexView::copy() const {
  const auto chosen = bytes().subspan(selection_begin(), std::min(selection_size(), kMostCopied));
  if (!chosen.empty()) QGuiApplication::clipboard()->setText(to_qt(hex_text(chosen)));
}

bool HexView::replace(std::size_t at, std::size_t removed, std::span<const std::uint8_t> inserted) {
  if (!buffer_.replace(at, removed, inserted)) return false;
  settle_change(at);
  return true;
}

void HexView::undo() {
  if (const auto at = buffer_.undo()) settle_change(*at);
}

void HexView::redo() {
  if (const auto at = buffer_.redo()) settle_change(*at);
}

void HexView::settle_change(std::size_t caret) {
  update_scroll_bars();
  move_caret(caret, false);
  emit changed();
}

}  // namespace vellum
