// The program's own icons, drawn in the colors of the desktop's palette at any size; what the desktop's icon
// theme has is taken from there.
#pragma once

#include <QIcon>

namespace vellum {

/// The icon of that name of the desktop's theme, where it has one for the same thing, else
/// data/icons/<name>.svg. Its ink is drawn in the palette's text color, so it reads on light and dark.
QIcon program_icon(const char* name);

/// The same drawing at `side` device pixels in an ink and an accent of its own, for a ground that is not the
/// desktop's. Kept once it was made.
QPixmap drawn_icon(const char* name, int side, const QColor& ink, const QColor& accent);

/// Makes the compiled-in icons, and what the start shows, known; called once at start.
void register_icons();

}  // namespace vellum
