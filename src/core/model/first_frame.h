// The first frame of an animated PNG fills the canvas.
#pragma once

#include "core/model/document.h"

namespace vellum {

/// What stands around a frame that does not fill the canvas: transparency, or the background color or index.
Colour frame_surroundings(const ChunkList& list, const Picture& frame);

/// Pads the first image of an animated PNG to the canvas where it is smaller. False when memory is exhausted.
bool pad_first_frame(DocumentWindow& window);

}  // namespace vellum
