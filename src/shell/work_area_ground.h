// What lies behind the document windows.
#pragma once

#include <QPainter>
#include <QPalette>

namespace vellum {

/// Fills the area as `MDIClientBackground`, `MDIClientColor` and `MDIClientImage` say. An image that can't be
/// read leaves the plain color.
void paint_ground(QPainter& painter, const QRect& area, const QPalette& palette);

}  // namespace vellum
