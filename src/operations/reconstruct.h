// Frames that build on each other, made into the whole canvases that they show.
#pragma once

#include <functional>

#include "base/host.h"
#include "core/model/document.h"

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

/// Hands the canvas of each frame over, in order, until `take` gives false: 24 bits over the document's
/// background, or 32 on a transparent ground; as needed, the latter where the document has transparency.
/// False when a picture is lost, memory is exhausted or the user stopped it.
bool for_each_canvas(const DocumentWindow& window, CanvasDepth depth, Host& host,
                     const std::function<bool(std::size_t frame, const Picture& canvas)>& take);

/// Makes each image the canvas that plays while it is shown: at the origin, in place of what was there,
/// delays kept. As needed, frames that share a palette keep it where their canvases have no other color.
/// `merge_equal`: a canvas that equals the one in front of it goes, and its delay is added there; not across
/// the ends of loops. Makes the closing calls. False, with the document as it was, when it is no animation
/// with images, a picture is lost, memory is exhausted or the user stopped it.
bool reconstruct_frames(DocumentWindow& window, CanvasDepth depth, Host& host, bool merge_equal = false);

/// Makes `to`, which is empty, a still PNG of what one frame shows, with the texts of the document; on a
/// transparent ground where the document has transparency, unless it is to be `opaque`.
bool still_of_frame(const DocumentWindow& from, DocumentWindow& to, std::size_t frame, bool opaque,
                    Host& host);

}  // namespace vellum
