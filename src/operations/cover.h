// A picture that covers a canvas.
#pragma once

#include "core/model/document.h"
#include "image/picture.h"

namespace vellum {

/// The picture scaled until it covers the size, and cut to it. Null when memory is exhausted.
Picture covering(const Picture& picture, const Extent& size);

}  // namespace vellum
