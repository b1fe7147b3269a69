// The frames of an animation one at a time: what builds, previews and exports read, so that nobody holds all
// of them.
#pragma once

#include <functional>

#include "base/host.h"
#include "core/model/whole_canvases.h"

namespace vellum {

/// A frame whose picture may have any depth.
struct StreamedFrame : FrameLayer {
  /// Of a picture below 32 bits, as `PictureWithTransparency` takes it; empty where all of it is opaque.
  std::vector<std::uint8_t> transparency;
};

/// What gives the frames outlives the stream.
struct FrameStream {
  Extent canvas;
  std::size_t count = 0;
  std::uint32_t plays = 0;  ///< 0 for ever
  /// A null picture where it is lost. Delays are those that playback works with.
  std::function<StreamedFrame(std::size_t frame)> frame;
};

/// The frames of a document as they are stored. May be asked by several threads.
FrameStream stored_frames(const DocumentWindow& window);

/// Its frames as the canvases that they show, 32 bits with straight alpha, each in place of the one before.
/// Asked by one thread; in their order each costs one frame, a step back costs all in front of it.
FrameStream canvas_frames(const DocumentWindow& window);

/// Makes an empty window an animation of this kind. An animated PNG takes frames of one form: of one depth
/// and, below 24 bits, of one palette and one transparent index, the first one as large as the canvas.
/// Partial transparency of indexed frames makes true color of them, but in an MNG. False when a frame is lost
/// or too large for the kind, memory is exhausted or the user stopped it; nothing is then left of it.
bool build_from_stream(DocumentWindow& window, const FrameStream& stream, DocumentKind kind, Host& host,
                       StringId caption = StringId::BuildingCaption);

}  // namespace vellum
