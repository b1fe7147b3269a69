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
  std::uint32_t dispose = 0;  ///< 0 None, 1 Background (transparent), 2 Previous
  bool over = false;          ///< laid over what is there; otherwise it replaces that
};

/// Whether each frame alone makes the whole canvas: it covers it, and nothing shows through.
bool are_whole_canvases(const std::vector<FrameLayer>& frames, Extent canvas);

/// Whether that many canvases can be kept together.
bool canvases_fit(std::size_t count, Extent canvas);

/// What the frames so far have left on the canvas, 32 bits; null in front of the first.
struct CanvasLeft {
  Picture shown;
};
/// Makes the next frame the whole canvas while it is shown: 32 bits, at the origin, dispose None. False when
/// memory is exhausted.
bool make_whole_canvas(CanvasLeft& left, FrameLayer& frame, Extent canvas);
/// All of them, in order.
bool make_whole_canvases(std::vector<FrameLayer>& frames, Extent canvas);

}  // namespace vellum
