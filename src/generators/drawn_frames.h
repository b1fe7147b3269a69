// Frames that are drawn, each as a whole canvas, as a stream whose frames hold what changes.
#pragma once

#include <optional>

#include "core/build/frame_stream.h"
#include "image/to_colors.h"

namespace vellum {

/// What a generator says of its frames. The functions may be called by several threads.
struct DrawnFrames {
  Extent canvas;
  std::size_t count = 0;
  bool clear = false;  ///< pictures have 32 bits, and what they leave out is transparent; else 24
  std::function<Picture(std::size_t frame)> picture;
  std::function<std::uint32_t(std::size_t frame)> delay;  ///< milliseconds
};

/// Whether a document may hold so many frames of this size and depth.
bool can_be_held(Extent canvas, std::uint64_t frames, std::uint32_t bits);

/// One palette for all of them: at most `most` colors, one of which is the transparent one where they are
/// clear. A sketch looks at some of the frames alone. A count of 0 when the user stopped it.
GivenColors gathered_colors(const DrawnFrames& drawn, std::uint32_t most, bool sketch, Host& host);

/// The frames for a document of this kind. The first one is the whole canvas, later ones are the rectangle
/// that differs from the one in front; clear ones stand each alone, cut to what is drawn. A WebP, which is
/// cut when it is written, has whole canvases. With colors frames are indexed. Nothing, with the reason kept
/// in the host, where a document can't hold them.
std::optional<FrameStream> stream_of(DrawnFrames drawn, DocumentKind kind, Host& host,
                                     const GivenColors& colors = {});

}  // namespace vellum
