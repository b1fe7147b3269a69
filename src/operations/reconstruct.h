// Frames that build on each other, made into the whole canvases that they show.
#pragma once

#include "base/host.h"
#include "core/document.h"

namespace vellum {

enum class CanvasDepth {
  AsNeeded,   ///< 32 bits where the document has transparency, else 24
  TrueColor,  ///< composed over the document's background
  TrueColorAlpha,
};

/// Whether each frame shows what it shows by itself: it covers the canvas, and nothing of an earlier frame
/// shows through.
bool is_independent(const DocumentWindow& window);

/// Whether a picture of the document has a pixel that isn't opaque.
bool has_transparency(const DocumentWindow& window);

/// Makes each image the canvas that plays while it is shown: at the origin, in place of what was there,
/// delays kept. Makes the closing calls. False, with the document as it was, when it is no animation with
/// images, a picture is lost, memory is exhausted or the user stopped it.
bool reconstruct_frames(DocumentWindow& window, CanvasDepth depth, Host& host);

}  // namespace vellum
