// The choice of the program that pictures are painted with.
#pragma once

#include <QWidget>
#include <optional>
#include <string>

namespace vellum {

struct PaintChoice {
  std::string name, path;  ///< empty: the desktop's own program for the file type
  bool keepsAlpha = true;  ///< whether the program is given transparency
  bool operator==(const PaintChoice&) const = default;
};

/// What the settings say now.
PaintChoice stored_paint_choice();
void store_paint_choice(const PaintChoice& choice);

/// Lists the programs that can be found; others can be looked for. Nothing when the user cancelled.
std::optional<PaintChoice> ask_for_paint_program(QWidget* parent, const PaintChoice& now);

}  // namespace vellum
