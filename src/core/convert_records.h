// Documents of one kind as documents of another: each frame's record becomes one of the new kind.
#pragma once

#include "base/host.h"
#include "core/document.h"

namespace vellum {

/// Makes `to`, which is empty, a WEBP document with the images of `from`: pictures in true color with the
/// document's transparency as alpha, canvas, background and plays of the animation, a delay in milliseconds
/// for each frame. Frames that only show on top of others become the whole canvases that they make. False,
/// with the reason given to the host, when `from` has no frames or memory is exhausted.
bool convert_to_webp(const DocumentWindow& from, DocumentWindow& to, Host& host);

}  // namespace vellum
