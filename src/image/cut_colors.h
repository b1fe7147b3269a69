// A palette by cutting the cube of colors where that takes most of the error away.
#pragma once

#include <span>

#include "image/refine_palette.h"

namespace vellum {

/// At most `most` (1 to 256) colors: the means of boxes that hold all of `colors`, which are whole cells of
/// the five high bits of each channel. The box whose cut lessens the sum of squared distances most is cut
/// next. Gives how many colors there are; fewer only where there are no more cells. Throws std::bad_alloc.
std::uint32_t cut_colors(std::span<const ColorSum> colors, std::uint32_t most, Palette& palette);

}  // namespace vellum
