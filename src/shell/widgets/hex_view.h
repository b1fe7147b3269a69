// Bytes as offset, sixteen hexadecimal numbers and sixteen characters a row; read-only or for editing.
#pragma once

#include <QAbstractScrollArea>

#include "shell/widgets/hex_buffer.h"

namespace vellum {

/// Keys: the usual ones of an editor; Insert turns insert mode on and off, F6 goes between numbers and
/// characters. Draws the rows that are seen and no others.
class HexView : public QAbstractScrollArea {
  Q_OBJECT
 public:
  explicit HexView(QWidget* parent = nullptr);

  /// Shows other bytes and forgets what was done to the earlier ones.
  void set_bytes(std::vector<std::uint8_t> bytes);
  std::span<const std::uint8_t> bytes() const { return buffer_.bytes(); }
  void set_read_only(bool read_only) { readOnly_ = read_only; }
  /// Rows get half as many bytes where there is no room for all, and half as many again.
  void set_narrow(bool narrow);
  bool inserting() const { return inserting_; }

  std::size_t caret() const { return caret_; }
  std::size_t selection_begin() const { return std::min(anchor_, caret_); }
  std::size_t selection_size() const { return std::max(anchor_, caret_) - selection_begin(); }
  /// Puts the caret there, without a selection.
  void go_to(std::size_t offset);
  void select(std::size_t first, std::size_t count);
  /// Selects the next place behind the caret where these bytes stand. False when they stand nowhere.
  bool find(std::span<const std::uint8_t> wanted);

  /// Puts bytes in the place of a range; undone in one step. False when the result would be too long.
  bool replace(std::size_t at, std::size_t removed, std::span<const std::uint8_t> inserted);
  void undo();
  void redo();
  /// The selection as hexadecimal numbers.
  void copy() const;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
  /// How many rows were drawn since the view was made.
  std::uint64_t rows_painted() const { return rowsPainted_; }

 signals:
  void changed();
  /// Caret, selection or mode are no longer what they were.
  void caret_moved();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  bool event(QEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  std::size_t rows() const { return buffer_.size() / static_cast<std::size_t>(rowBytes_) + 1; }
  static constexpr int kWideRow = 16, kNarrowRow = 4;

  int row_height() const;
  int letter() const;  ///< width of a character
  int hex_left(int column) const;
  int text_left(int column) const;
  int offset_digits() const;
  void update_scroll_bars();
  void paint_row(QPainter& painter, std::size_t row, int top);
  void paint_byte(QPainter& painter, std::size_t at, int top);
  void paint_caret(QPainter& painter, int column, int top);
  std::size_t byte_at(QPoint place, bool& in_text) const;

  void move_caret(std::size_t offset, bool extend);
  void show_caret();
  bool move_by_key(const QKeyEvent& event);
  int row_width(int bytes) const;
  void choose_row();
  bool run_shortcut(const QKeyEvent& event);
  void type(const QString& text);
  void type_digit(int digit);
  void type_letter(char letter);
  void erase(bool backwards);
  void paste();
  void settle_change(std::size_t caret);

  HexBuffer buffer_;
  int rowBytes_ = kWideRow;
  bool narrow_ = false;
  std::size_t caret_ = 0, anchor_ = 0;
  bool lowDigit_ = false;  ///< the caret stands on the second digit of its byte
  bool inText_ = false;    ///< the caret stands among the characters
  bool inserting_ = false;
  bool readOnly_ = false;
  std::uint64_t rowsPainted_ = 0;
};

}  // namespace vellum
