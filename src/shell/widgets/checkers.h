// The ground that shows through where a picture lets it.
#pragma once

#include <QPainter>
#include <optional>

namespace vellum {

/// Squares of `side` pixels in two weak greys, counted from the corner of `area`; without `dark` of the
/// palette's brightness.
void paint_checkers(QPainter& painter, const QRect& area, int side = 8, std::optional<bool> dark = {});

}  // namespace vellum
