// A frame among its neighbours, for who places it on the canvas.
#pragma once

#include "core/model/compose.h"
#include "core/model/frame_values.h"

namespace vellum {

/// What the frame of an image entry lies on, and what comes before and behind it. Composing goes through all
/// frames in front of it, once.
class FrameScene {
 public:
  FrameScene() = default;
  FrameScene(const DocumentWindow& window, std::size_t index);

  Extent canvas() const { return values_.canvas; }
  /// The canvas while the frame before is shown; null for the first frame. 32 bits, straight alpha.
  const Picture& before() const { return before_; }
  /// The canvas while this frame is shown, were it at this place.
  Picture with_frame_at(const DocumentWindow& window, FrameOffset offset) const;
  /// The canvas while the frame behind is shown; null for the last frame.
  Picture after(const DocumentWindow& window, FrameOffset offset) const;

 private:
  CanvasState at(const DocumentWindow& window, FrameOffset offset) const;

  ViewValues values_;
  CanvasState state_;  ///< in front of this frame
  Picture before_;
  std::size_t index_ = 0, next_ = kNoEntry;
};

/// The image entry behind `index`, or in front of it; kNoEntry where there is none.
std::size_t neighbour_image(const DocumentWindow& window, std::size_t index, bool behind);

/// The canvas that the document would have with the frame of an entry at this place.
Extent canvas_with_frame_at(const DocumentWindow& window, std::size_t index, FrameOffset offset);

/// Where the frame of an entry makes the canvas larger than it was, pads the first image of an animated PNG
/// to the canvas that all frames take, unless a default image fills that; others stay as they are. False when
/// memory is exhausted.
bool fill_grown_canvas(DocumentWindow& window, std::size_t index, Extent before);
/// Whether that has something to do on a canvas of this size.
bool pads_first_image(const DocumentWindow& window, Extent canvas);

}  // namespace vellum
