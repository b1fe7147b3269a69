// The program's own icons, drawn in the colors of the desktop's palette at any size.
#pragma once

#include <QIcon>

namespace vellum {

/// The icon data/icons/<name>.svg. Its ink is drawn in the palette's text color, so it reads on light and
/// dark.
QIcon program_icon(const char* name);

/// Makes the compiled-in icons, and what the start shows, known; called once at start.
void register_icons();

}  // namespace vellum
