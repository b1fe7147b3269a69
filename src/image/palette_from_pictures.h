// A palette that is computed from pictures which somebody holds.
#pragma once

#include <span>

#include "image/superpalette.h"

namespace vellum {

/// The superpalette of those that are no null pictures. A count of 0 when there is none, the user stopped it
/// or memory is exhausted.
PaletteColors palette_from_pictures(std::span<const Picture> pictures, std::uint32_t colors,
                                    Host* host = nullptr, const PaletteMethod& method = {});

/// The colors of one picture: its own table where it has one, else at most 256 that stand for its colors.
PaletteColors palette_of_picture(const Picture& picture);

}  // namespace vellum
