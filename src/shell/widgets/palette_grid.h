// The cells of a palette: chosen, moved and opened by mouse and keyboard.
#pragma once

#include <QColor>
#include <QWidget>
#include <vector>

namespace vellum {

struct PaletteCell {
  QColor color;         ///< with its alpha
  bool marked = false;  ///< crossed out
  bool operator==(const PaletteCell&) const = default;
};

/// How much one can do with the cells.
struct PaletteGridForm {
  int columns = 16;
  int rows = 16;        ///< that there is room for, whatever is shown
  int cell = 22;        ///< side of a cell in device-independent pixels
  bool many = false;    ///< several can be selected
  bool places = false;  ///< places without a cell are drawn too
  bool frames = true;   ///< the selected cells have a frame
  bool swaps = true;    ///< and then dragging one onto another swaps them
};

class PaletteGrid : public QWidget {
  Q_OBJECT
 public:
  explicit PaletteGrid(const PaletteGridForm& form = {}, QWidget* parent = nullptr);

  void set_cells(std::vector<PaletteCell> cells);
  const std::vector<PaletteCell>& cells() const { return cells_; }
  /// -1 while there is none.
  int current() const { return current_; }
  void set_current(int cell);
  std::vector<std::size_t> selected() const;
  void select(const std::vector<std::size_t>& cells);
  QRect cell_rect(int cell) const;
  /// -1 where none is.
  int cell_at(QPoint place) const;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

 signals:
  void current_changed(int cell);
  /// By mouse or key, not by set_current; also when it was the current one already.
  void chosen(int cell);
  void selection_changed();
  /// Double click or Enter.
  void activated(int cell);
  void swap_wanted(int a, int b);

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void choose(int cell, Qt::KeyboardModifiers modifiers, bool toggle_with_control);
  void paint_cell(QPainter& painter, int cell) const;
  QString text_of_cell(int cell) const;

  PaletteGridForm form_;
  std::vector<PaletteCell> cells_;
  std::vector<bool> selected_;
  int current_ = -1, anchor_ = -1;
  int pressed_ = -1, dropTarget_ = -1;
};

}  // namespace vellum
