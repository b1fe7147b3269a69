// The bar below a list that looks for a text in its rows.
#pragma once

#include <QCheckBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>

namespace vellum {

class ChunkListView;

/// Hidden until it is opened; closing it shows all rows again. Enter and Shift+Enter go to the next row and
/// to the one before, Escape closes.
class FindBar : public QFrame {
  Q_OBJECT
 public:
  explicit FindBar(ChunkListView& list, QWidget* parent = nullptr);

  /// Shows it, with what was looked for last selected.
  void open();
  void dismiss();
  /// The caret goes to the next found row, or to the one before; opens the bar where nothing is looked for.
  void step(bool forwards);
  /// How many rows have the text, or that none has.
  QString told() const { return count_->text(); }

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void search();
  void show_count();

  ChunkListView& list_;
  QLineEdit* text_;
  QCheckBox* hides_;
  QLabel* count_;
  QTimer pause_;  ///< while one goes on typing, a long list is not looked through for each letter
};

}  // namespace vellum
