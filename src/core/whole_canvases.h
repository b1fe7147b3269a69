// Frames of an animation as whole canvases, with alpha.
#pragma once

#include <vector>

#include "core/document.h"
#include "core/frame_values.h"

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

/// Makes each frame the whole canvas while it is shown: 32 bits, at the origin, dispose None. False when
/// memory is exhausted.
bool make_whole_canvases(std::vector<FrameLayer>& frames, Extent canvas);

}  // namespace vellum
