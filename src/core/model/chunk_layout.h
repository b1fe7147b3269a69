// Thumbnail scales and row heights.
#pragma once

#include <array>

#include "core/model/document.h"

namespace vellum {

/// Percent, by index; index 0 means text lines only.
inline constexpr std::array<int, 8> kThumbnailScales = {0, 10, 25, 50, 75, 100, 150, 200};

/// The largest index from `index` downwards at which a picture of this size fits: scaled width + 8 below 321,
/// scaled height + 24 below 201. 0 stays 0, and is the result when not even index 1 fits.
int clamp_scale(int index, Extent size);

/// Clamps `thumbScale` (for good) and recomputes the height of every entry, in pixels: 24 without thumbnails;
/// else an image entry (IDAT, PNGI, WEBI) scaled header height + 44, any other 32.
void chunk_list_layout(ChunkList& list, Document& document);

/// The three calls that close every change of a list's length or content: renumber, extent, layout.
void chunk_list_close_change(ChunkList& list, Document& document);

}  // namespace vellum
