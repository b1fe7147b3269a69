// How the buttons of toolbars look.
#pragma once

#include <QMainWindow>

namespace vellum {

/// Gives the window's toolbars the look that `SoftButtons` and `LiveButtons` ask for.
void apply_toolbar_look(QMainWindow& window);

}  // namespace vellum
