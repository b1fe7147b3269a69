// How the images of each kind of animation come on the canvas: one table that all who show, compose and
// convert animations ask.
#pragma once

#include "core/model/document.h"

namespace vellum {

/// What becomes of the canvas under an image.
enum class Laying : std::uint8_t {
  Over,       ///< it shows where the image lets it through
  Replaces,   ///< it is gone
  AsBlended,  ///< as the image's own blending says
};

/// What framing modes 3 and 4 of an MNG clear.
enum class Clearing : std::uint8_t {
  Nothing,
  Canvas,    ///< all of it, in front of the image
  OwnPlace,  ///< where the image was, behind it
  Always,    ///< all of it in front of every image, whatever it says
};

struct PlayingRule {
  DocumentKind kind;
  Laying shallow;  ///< images below 32 bits, whose transparency is that of a tRNS
  Laying deep;     ///< images of 32 bits
  Clearing clearing;
  std::uint32_t unframedTicks;  ///< an image of an MNG that no FRAM gives a delay
  bool truncates;               ///< products of alpha lose their fractions, in each channel of 8 bits
};

/// Those of the formats; with `ClassicPlayback` the ones that this program had before.
const PlayingRule& playing_rule(DocumentKind kind);

/// How one image comes on the canvas.
struct FrameManner {
  std::uint32_t dispose = 0;  ///< behind it, its place: 0 None, 1 Background, 2 Previous
  bool over = false;          ///< laid over what is there; otherwise it replaces that
  bool clears = false;        ///< the whole canvas is cleared in front of it
  bool operator==(const FrameManner&) const = default;
};
FrameManner frame_manner(const ChunkRecord& record, const PlayingRule& rule);
FrameManner frame_manner(const ChunkRecord& record, DocumentKind kind);

/// The delay of an image of an MNG in ticks.
std::uint32_t delay_ticks(const ChunkRecord& record);

}  // namespace vellum
