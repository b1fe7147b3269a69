// Pictures turned by any angle.
#pragma once

#include <utility>

#include "image/picture.h"

namespace vellum {

/// The picture, of 24 or 32 bits, turned counterclockwise by whole degrees: quarter turns without loss to
/// within 45 degrees of it, then three shears, each of which moves rows or columns by parts of a pixel. The
/// result is as large as the turned rectangle, which lies in its middle, and `background` lies around it, and
/// nothing around a picture of 32 bits. Null for another depth, beyond the limits of pictures, or when memory
/// is exhausted.
Picture rotated(const Picture& picture, int degrees, Colour background);

/// The same with one shear by -60 to 60 degrees: of its rows, whose top goes to the right, or of its columns,
/// whose left side goes up.
Picture sheared(const Picture& picture, int degrees, bool columns, Colour background);

/// Width and height of a picture that is turned.
std::pair<std::uint32_t, std::uint32_t> rotated_size(std::uint32_t width, std::uint32_t height, int degrees);

}  // namespace vellum
