// A button that shows a color and asks for another one.
#pragma once

#include <QPushButton>
#include <functional>
#include <optional>

#include "image/picture.h"

namespace vellum {

/// Asks for a color, 0xAABBGGRR; alpha only where it is wanted. Nothing when the user cancelled. A test
/// puts its answer here; a dialog is shown while this is empty.
using ChooseColor = std::function<std::optional<Colour>(QWidget* parent, Colour color, bool alpha)>;
inline ChooseColor chooseColor;

class ColorButton : public QPushButton {
  Q_OBJECT
 public:
  explicit ColorButton(bool alpha, QWidget* parent = nullptr);

  Colour color() const { return color_; }
  void set_color(Colour color);
  /// A picture that colors can be picked from, and the colors of its palette.
  void set_picture(const Picture& picture);

 signals:
  /// The user chose one.
  void chosen();

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void choose();
  void show_color();

  Colour color_ = 0;
  Picture picture_;
  bool alpha_;
};

}  // namespace vellum
