// Cutting an animation down to a rectangle of its canvas.
#pragma once

#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

/// Edges in pixels of the canvas; right and bottom are exclusive.
struct CanvasCut {
  std::int64_t left = 0, top = 0, right = 0, bottom = 0;
};

/// Cuts each frame down to the part of it that lies in the rectangle, which is inside the canvas; what lies
/// outside becomes one pixel that changes nothing. The rectangle becomes the canvas, or (`keep_places`) each
/// frame stays where it is, and the canvas is what the frames reach; the first frame of an animated PNG,
/// which fills the canvas, then stays whole. Makes the closing calls. False, with the draft of no use, when a
/// picture is lost, memory is exhausted or the user stopped it.
bool crop_frames(DocumentWindow& draft, const CanvasCut& cut, bool keep_places, Host& host);

}  // namespace vellum
