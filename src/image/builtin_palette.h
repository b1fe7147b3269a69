// The built-in palettes, by id.
#pragma once

#include <cstdint>

#include "image/picture.h"

namespace vellum {

/// Fills `palette` (cleared first; may be null) and `bits`, the depth that goes with it (may be null).
/// Returns the number of colors, 0 for an id that does not exist.
///
/// 0: black, white. 1: the 16 colors of old displays. 2, 3, 4: 32, 64, 128 colors, evenly spaced. 5: 216
/// colors, a cube of six levels. 6: 256 colors, 8 x 8 x 4 levels. 7: 256 colors with 32 greys. 8: 256 greys.
/// 9: true color (returns 16777216; the palette of 6). 10: 16 greys. 11: 8 greys (returns 16). 12: 4 greys.
std::uint32_t BuiltInPalette(Palette* palette, std::uint32_t* bits, int id);

}  // namespace vellum
