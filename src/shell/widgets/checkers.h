// The ground that shows through where a picture lets it.
#pragma once

#include <QPainter>

namespace vellum {

/// Squares of `side` pixels in two weak greys of the palette's brightness, counted from the corner of `area`.
void paint_checkers(QPainter& painter, const QRect& area, int side = 8);

}  // namespace vellum
