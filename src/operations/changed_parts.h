// What changes from one whole frame to the next.
#pragma once

#include "core/model/whole_canvases.h"

namespace vellum {

/// The frame that makes `before` into `after`, pictures of one size and depth: the rectangle around all that
/// differs, which replaces what is there or, where all that differs is opaque in 32 bits, lies over it with
/// everything else transparent. At least one pixel. A null picture when memory is exhausted.
FrameLayer changed_part(const Picture& before, const Picture& after);

}  // namespace vellum
