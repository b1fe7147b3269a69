// A hex view with fields to search and to go to an offset, and a line that tells where one is.
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

#include "shell/widgets/hex_view.h"

namespace vellum {

class HexPanel : public QWidget {
  Q_OBJECT
 public:
  explicit HexPanel(QWidget* parent = nullptr);
  HexView& view() { return *view_; }

  /// Searches on for what stands in the field.
  void find_next();
  void go_to_field();

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void show_place();

  HexView* view_;
  QLineEdit* wanted_;
  QComboBox* form_;
  QLineEdit* offset_;
  QLabel* place_;
};

}  // namespace vellum
