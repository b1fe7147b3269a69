// Pictures turned by any angle.
#pragma once

#include <utility>

#include "image/picture.h"

namespace vellum {

/// The picture, of 24 bits, turned counterclockwise by whole degrees: quarter turns without loss to within 45
/// degrees of it, then three shears, each of which moves rows or columns by parts of a pixel. The result is
/// as large as the turned rectangle, which lies in its middle, and `background` lies around it. Null for
/// another depth, beyond the limits of pictures, or when memory is exhausted.
Picture rotated(const Picture& picture, int degrees, Colour background);

/// Width and height of that result.
std::pair<std::uint32_t, std::uint32_t> rotated_size(std::uint32_t width, std::uint32_t height, int degrees);

}  // namespace vellum
