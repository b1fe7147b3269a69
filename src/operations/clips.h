// The rectangles to which images of an MNG are cut (MNG 1.0, "DEFI" and "FRAM").
#pragma once

#include <functional>

#include "core/model/chunk_record.h"

namespace vellum {

/// Edges in pixels of the canvas; right and bottom are exclusive.
struct ClipBox {
  std::int64_t left = 0, right = 0, top = 0, bottom = 0;
};

/// Moves the clips that the image brings along. Edges are held to 32 bits.
void change_clips(ChunkRecord& record, const std::function<ClipBox(ClipBox)>& change);

}  // namespace vellum
