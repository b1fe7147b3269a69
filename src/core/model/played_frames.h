// The frames of an animation as they play once.
#pragma once

#include <vector>

#include "core/model/document.h"

namespace vellum {

struct PlayedFrames {
  std::vector<std::size_t> entries;  ///< image entries, in order
  std::uint32_t plays = 0;           ///< of the whole, 0 for ever
  bool loopsLost = false;            ///< loops inside were left out: too many frames, or no end
};

/// The LOOP of an MNG that encloses all of its images; `kNoEntry` without such.
std::size_t whole_loop(const ChunkList& list);
/// How often all of it plays, 0 for ever: of an MNG the loop around all images, not one around some of them.
std::uint32_t whole_plays(const DocumentWindow& window);

/// The loop of an MNG around all of its images gives the plays; loops inside are written out.
PlayedFrames played_frames(const DocumentWindow& window);

}  // namespace vellum
