// Composing: one frame after another is drawn on a canvas, each kind of animation by its own rules.
#pragma once

#include <optional>
#include <vector>

#include "core/model/document.h"
#include "core/model/playing_rules.h"
#include "image/fine_canvas.h"

namespace vellum {

/// What an animation lies on.
struct Ground {
  enum class Kind {
    Document,  ///< the color that the document says, as it is played
    Solid,     ///< `colour` in its place
    Clear,     ///< nothing: canvases keep their alpha
  };
  Kind kind = Kind::Document;
  Colour colour = 0;
  bool operator==(const Ground&) const = default;
};

/// What a document says once for all its frames, and the rules by which they are laid on each other.
struct ViewValues {
  DocumentKind kind = DocumentKind::None;
  Extent canvas;
  std::uint32_t ticks = 1000;  ///< of a second, in MING
  Colour background = 0xFFFFFF;
  bool clear = false;  ///< canvases of 32 bits whose colors are multiplied by their alpha
  PlayingRule rule{};
  /// PING, APNG: the document's tRNS, in the form that PictureWithTransparency takes.
  std::vector<std::uint8_t> transparency;
};

ViewValues view_values(const ChunkList& list, const Document& document, Ground ground = {});

/// What one frame leaves for the next. Copies share their pictures until one of them is drawn on.
struct CanvasState {
  FineCanvas canvas;  ///< 24 bits, or 32 on no ground; null before the first frame
  FineCanvas previousRegion;
  PictureRect lastRect;  ///< of the last frame, not clipped; empty at the start
  std::uint32_t lastDispose = 0;
};

/// Disposes of the last frame and draws the image of `record` on the canvas, which is the result. Null when
/// the picture is lost, which leaves the state as it was, or memory is exhausted, behind which the last frame
/// may have been disposed of.
Picture compose_frame(CanvasState& state, const ViewValues& values, const ChunkRecord& record);

/// Whether every frame is composed alike under both: all but the time is the same.
bool compose_alike(const ViewValues& a, const ViewValues& b);
/// Whether both images draw the same on the same state. False is no proof that they don't.
bool draw_alike(const ViewValues& values, const ChunkRecord& a, const ChunkRecord& b);

/// The canvases of a document's frames with straight alpha, 32 bits, for who builds other documents of them.
/// A frame that replaces its canvas is that canvas; it is drawn when another one is laid over it.
class StraightCanvases {
 public:
  explicit StraightCanvases(const DocumentWindow& window);
  /// The canvas while the next frame is shown; null as above.
  Picture next(const ChunkRecord& record);

 private:
  ViewValues values_;
  CanvasState state_;
  std::optional<ChunkRecord> undrawn_;  ///< the last frame, while the state is without it
  Picture last_;                        ///< the last canvas, where it was made of the state
};

}  // namespace vellum
