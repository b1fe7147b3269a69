// The eight orientations of EXIF 2.3, tag 0x0112: where the first row and the first column of a picture
// belong.
#pragma once

#include "image/picture.h"

namespace vellum {

/// Orientations 5 to 8 lay rows as columns.
constexpr bool swaps_sides(int orientation) { return orientation >= 5 && orientation <= 8; }

/// The picture as it is meant to be seen, in its depth and colors. Orientations outside 1..8 leave it as it
/// is; null when memory is exhausted.
Picture oriented(const Picture& picture, int orientation);

}  // namespace vellum
