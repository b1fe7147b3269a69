// What the program's own themes differ by. look.cpp draws by it; each theme is one such record.
#pragma once

#include <array>
#include <cstdint>

#include "vellum_theme.h"

struct Look {
  std::array<std::uint32_t, VELLUM_COLOR_COUNT> colors;  ///< 0xRRGGBB, by VELLUM_COLOR_...
  std::uint32_t barTop, barBottom;                       ///< the toolbar's ground, from top to bottom
  double radius;                                         ///< of corners, in pixels of the layout
  double edge;                                           ///< thickness of lines
  double relief;  ///< how much lighter a button is at its top than at its bottom, 0 to 1
  double light;   ///< how far what the pointer is on goes to the accent, 0 to 1
};

extern const Look kLook;
