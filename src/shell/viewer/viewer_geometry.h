// The arithmetic of a viewer: how large its window opens and at which zoom, where the frame lies in it, and
// what a place on the progress strip means. Pixels of the screen, and zooms in percent.
#pragma once

#include <QRect>
#include <cstdint>

namespace vellum {

inline constexpr int kStripHeight = 16;
inline constexpr int kLeastZoom = 1, kMostZoom = 3200;

struct ViewerRoom {
  QSize canvas;
  QSize least;         ///< of the part that shows the canvas
  QSize frame{0, 0};   ///< what the desktop draws around the window, both sides together
  QSize bar{0, 0};     ///< least width and height of the buttons; empty without them
  int strip = 0;       ///< height of the progress strip below; 0 without one
  QSize screen;        ///< what of it is free
  bool adjust = true;  ///< what is too large is shown smaller
};

struct ViewerOpening {
  int zoom = 100;
  QSize inside;  ///< of the window without the desktop's frame
};

/// A window takes at most 98 percent of the screen. What would need more is zoomed so that its need, with
/// frame and strip, comes to the limit.
ViewerOpening viewer_opening(const ViewerRoom& room);

/// A picture of this size at a zoom; at least one pixel a side.
QSize zoomed_size(QSize picture, int zoom);

/// Where it lies: centered across and at the top (or in the middle); what is larger than the room begins
/// `scrolled` pixels before it.
QRect frame_rect(QSize zoomed, QSize room, QPoint scrolled, bool middle);

/// The largest zoom at which all of a picture is seen: whole multiples where it fits more than once.
int fitting_zoom(QSize picture, QSize room);

/// The frame at a place of a strip, and how far the strip is filled while it is shown.
std::uint32_t strip_ordinal(int x, int width, std::size_t frames);
int strip_filled(std::uint32_t ordinal, std::size_t frames, int width);

}  // namespace vellum
