// The look of the program in one place: distances, fonts, colors.
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

namespace vellum::style {

// Distances in device-independent pixels.
inline constexpr int kGap = 8;
inline constexpr int kWideGap = 16;
inline constexpr int kMargin = 32;
inline constexpr int kToolIcon = 24, kBoxIcon = 48;
inline constexpr int kCornerRadius = 10;
inline constexpr int kProgressWidth = 180;
inline constexpr int kLeastWindowWidth = 620, kLeastWindowHeight = 460;

/// What makes something stand out without being selected: links, drop targets, drawn icons.
inline constexpr QRgb kAccent = 0xFF2F80D8;

QFont list_font();     ///< rows of chunk lists; always fits a row of 24 pixels
QFont heading_font();  ///< one line that heads a page or a box

/// Contrast of two colors after WCAG 2, 1 to 21.
double contrast(const QColor& a, const QColor& b);
/// `wanted`, moved towards black or white (whichever stands out more) until it can be read on `ground`.
QColor readable_on(const QColor& wanted, const QColor& ground, double least = 4.5);
/// A color `share` (0 to 1) of the way from `from` to `to`.
QColor between(const QColor& from, const QColor& to, double share);

/// The colors of one row of a chunk list. The ground is white whatever the desktop's palette, since pictures
/// need a known one.
struct RowColours {
  QColor ground, label, text, facts;
};
RowColours row_colours(const QPalette& palette, bool selected);

/// Pure red, or pure blue where the highlight is more red than blue.
QColor bracket_colour(const QPalette& palette);

/// Behind the document windows: the desktop's window color, set back a little.
QColor work_area_colour(const QPalette& palette);

}  // namespace vellum::style
