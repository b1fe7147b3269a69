// Colors matched to a palette.
#pragma once

#include <cstdint>

#include "image/picture.h"

namespace vellum {

/// The entry among the first `count` (at least 1) that is nearest to the color by 3*dR^2 + 4*dG^2 + 2*dB^2;
/// of equally near ones the lowest.
std::uint32_t NearestPaletteIndex(std::uint32_t r, std::uint32_t g, std::uint32_t b, const Palette& palette,
                                  std::uint32_t count);

}  // namespace vellum
