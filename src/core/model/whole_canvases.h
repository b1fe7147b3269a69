// Frames of an animation as whole canvases, with alpha.
#pragma once

#include <vector>

#include "core/model/document.h"
#include "core/model/frame_values.h"

namespace vellum {

/// A frame of any kind of animation.
struct FrameLayer {
  Picture picture;  ///< 24 or 32 bits
  FrameOffset offset;
  std::uint32_t delay = 0;    ///< milliseconds
  std::uint32_t dispose = 0;  ///< its place behind it: 0 None, 1 Background (transparent), 2 Previous
  bool over = false;          ///< laid over what is there; otherwise it replaces that
  bool clears = false;        ///< the whole canvas is cleared in front of it
};

/// Whether the frame is as large as the canvas and lies on all of it.
bool covers_canvas(const FrameLayer& frame, Extent canvas);
/// Tells of every frame that begins on an empty canvas, for whatever reason, that it `clears`; what that
/// makes idle (disposals in front of it) is taken away. What plays stays the same.
void settle_clearing(std::vector<FrameLayer>& frames, Extent canvas);
/// Whether each of the settled frames alone makes the whole canvas.
bool are_whole_canvases(const std::vector<FrameLayer>& frames, Extent canvas);

/// Whether a canvas of 32 bits can be one of a document of this kind.
bool canvas_fits(Extent canvas, DocumentKind kind);
/// Whether that many canvases can be kept together.
bool canvases_fit(std::size_t count, Extent canvas);

}  // namespace vellum
