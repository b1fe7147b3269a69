// A new animation, built frame by frame: begin, add each frame, end. Whoever builds keeps the list quiet
// meanwhile (`QuietList`), and gives an animation up that has no frame.
#pragma once

#include <optional>

#include "core/model/document.h"

namespace vellum {

/// Iterations for no loop in an MNG, and the kind that `DefaultAnimationType` says.
inline constexpr std::int32_t kNoLoop = -1;
inline constexpr std::uint32_t kDefaultKind = 0xFFFFFFFF;

/// What the three calls take for an animation that goes on for ever, or is played once.
std::int32_t iterations_for(DocumentKind kind, bool loop);
/// The number of a kind: 0 animated PNG, 1 MNG, 2 WebP. Nothing for a still.
std::optional<std::uint32_t> build_number(DocumentKind kind);
/// The kind of such a number, or of `kDefaultKind`; None for another one.
DocumentKind build_kind(std::uint32_t number);

/// Inserts the header at the caret, which moves behind it, and gives the name the kind's extension. Animated
/// PNG and WebP are played `iterations` times, for ever for 0 and below; an MNG gets a LOOP without an end
/// unless they are `kNoLoop`. False, with the document as it was, on failure.
bool BeginAnimation(DocumentWindow& window, std::int32_t iterations, std::uint32_t reserved,
                    std::uint32_t kind);

enum AddFrameFlag : std::uint32_t {
  kFrameDispose = 1,       ///< `dispose` is told
  kFrameBlend = 2,         ///< `blend` is told
  kFrameAtIndex = 4,       ///< goes to `index` and not to the caret
  kFrameTransparency = 8,  ///< `transparency` is told
};

struct AddFrameOptions {
  std::uint32_t flags = 0;
  std::uint32_t dispose = 0;  ///< 0 None, 1 Background, 2 Previous; animated PNG and WebP
  std::uint32_t blend = 0;    ///< 0 Source, 1 Over; animated PNG
  std::size_t index = 0;
  bool transparency = false;  ///< MNG: the canvas is cleared for the frame
};

/// Adds a frame of this picture at the caret, which moves behind it. `transparent`: the index, or for 24 bits
/// the color 0x00BBGGRR, that is transparent (animated PNG: of the first frame if that is indexed; MNG), -1
/// for none. `palette`: the colors of an indexed picture, null for its own. `delay` in milliseconds. `index`
/// counts frames from 0: the first one of an animated PNG or WebP settles what the header says. An animated
/// PNG gets an indexed frame in the colors of its PLTE where that loses nothing; a WebP gets true color;
/// parts left and above of the canvas are cut off in both. Returns the list position plus 1; 0, with the
/// document as it was, when the picture is lost or too large for the kind, or memory is exhausted.
std::size_t AddFrame(DocumentWindow& window, const Picture& picture, std::int32_t transparent,
                     const Palette* palette, std::uint32_t delay, std::int32_t x, std::int32_t y,
                     std::uint32_t index, const AddFrameOptions* options);

/// Inserts the end (in an MNG the end of the loop too, unless `iterations` are `kNoLoop`) and closes the
/// change: caret 0, numbers, the header's size, rows. The document counts as changed.
bool EndAnimation(DocumentWindow& window, std::int32_t iterations);

/// Gives the LOOP of an MNG that was built a count of plays, from 1. Nothing happens where there is none.
void put_loop_plays(DocumentWindow& window, std::uint32_t plays);

}  // namespace vellum
