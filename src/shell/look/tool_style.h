// How the buttons of the toolbar look: calm until the pointer is on them, and as soft as the user wants them.
#pragma once

#include "shell/look/program_style.h"

namespace vellum {

/// Of a tool button: the number of its command, which a theme is told.
inline constexpr const char* kCommandProperty = "command";

/// Draws the ground of tool buttons by `SoftButtons` and `LiveButtons`, everything else as the desktop does;
/// with a theme as that does.
class ToolStyle : public ProgramStyle {
  Q_OBJECT
 public:
  explicit ToolStyle(QObject* parent);

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
};

}  // namespace vellum
