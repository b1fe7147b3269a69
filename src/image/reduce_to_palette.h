// True color in 256 colors or fewer.
#pragma once

#include "image/picture.h"

namespace vellum {

/// A 24-bit picture as an indexed one: exactly, in the smallest depth, when it has at most 256 colors, and
/// otherwise with 256 chosen colors. Null when memory is exhausted.
Picture reduce_to_palette(const Picture& picture);

}  // namespace vellum
