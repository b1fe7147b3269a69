#include "core/model/whole_canvases.h"

#include <algorithm>

#include "base/limits.h"
#include "core/model/kind_table.h"

namespace vellum {

bool covers_canvas(const FrameLayer& frame, Extent canvas) {
  return frame.offset.x == 0 && frame.offset.y == 0 && frame.picture.width() == canvas.width &&
         frame.picture.height() == canvas.height;
}

void settle_clearing(std::vector<FrameLayer>& frames, Extent canvas) {
  for (std::size_t i = 0; i < frames.size(); ++i) {
    FrameLayer& frame = frames[i];
    const bool replaces = !frame.over || frame.picture.bits() == 24;
    frame.clears = frame.clears || i == 0 || (replaces && covers_canvas(frame, canvas));
    if (i == 0) continue;
    FrameLayer& before = frames[i - 1];
    const bool all_gone = before.dispose == 1 && (before.clears || covers_canvas(before, canvas));
    if (all_gone || (before.dispose == 2 && before.clears)) frame.clears = true;
    if (frame.clears) before.dispose = 0;
  }
}

bool are_whole_canvases(const std::vector<FrameLayer>& frames, Extent canvas) {
  return std::ranges::all_of(
      frames, [&](const FrameLayer& frame) { return frame.clears && covers_canvas(frame, canvas); });
}

bool canvas_fits(Extent canvas, DocumentKind kind) {
  const std::int64_t most = kind_row(kind).mostPixels;
  return canvas.width <= most && canvas.height <= most && canvases_fit(1, canvas);
}

bool canvases_fit(std::size_t count, Extent canvas) {
  const std::uint64_t bytes = picture_stride(canvas.width, 32) * std::uint64_t{canvas.height};
  return bytes <= kMaximumPictureBytes && !memory_fault(bytes * count);
}

}  // namespace vellum
