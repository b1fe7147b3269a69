// The walk over a document's entries in the order in which they play: the loops of an MNG, the repeats that
// its TERM asks for, the plays of an animated PNG or WebP.
#pragma once

#include <optional>
#include <vector>

#include "core/model/document.h"

namespace vellum {

/// What the walk comes back to.
struct WalkMark {
  enum class Kind : std::uint32_t {
    Loop = 0,  ///< between a LOOP and its ENDL
    Pass = 1,  ///< the whole animation, or what stands behind a TERM
  };
  Kind kind = Kind::Loop;
  std::uint32_t count = 0;   ///< rounds (Loop) or further rounds (Pass) still to come
  std::uint32_t level = 0;   ///< nest level of a LOOP
  std::size_t position = 0;  ///< Loop: the LOOP's own index; Pass: where a round begins
  bool forEver = false;      ///< `count` is not counted down
  std::uint64_t images = 0;  ///< images found when the round began: a round without one would never end
};

struct FrameWalk {
  std::size_t position = 0;  ///< the entry that is read next; one past the frame that was found last
  std::vector<WalkMark> stack;
  bool ended = false;        ///< nothing follows; only a step back or a rewind goes on
  std::uint64_t images = 0;  ///< found so far
  bool repeats = false;      ///< a round began of something that has no end
};

/// A walk in front of the first entry.
FrameWalk begin_walk(const ChunkList& list, const Document& document);

/// The next image's index; empty, with `ended` set, when the animation is over. A loop that holds no image is
/// left after its first round, and ends playing where it has no end.
std::optional<std::size_t> next_image(FrameWalk& walk, const ChunkList& list, DocumentKind kind);

/// Back to the first image: the next step finds it. Loops begin anew.
void rewind_walk(FrameWalk& walk, const ChunkList& list, const Document& document);

/// The next step finds the image in front of the one found last, or the first one again. Loops are not looked
/// at.
void step_walk_back(FrameWalk& walk, const ChunkList& list, DocumentKind kind);

/// A walk that came to the image `entry` along the list, in the first round of every loop around it: the next
/// step finds it. `passed` gets the images that play in front of it.
FrameWalk walk_to(const ChunkList& list, const Document& document, std::size_t entry,
                  std::vector<std::size_t>& passed);

}  // namespace vellum
