// Where a chunk goes in a list, so that the list stays a file that can be written. All of it follows from the
// places in the chunk table.
#pragma once

#include <optional>

#include "core/chunks/chunk_table.h"
#include "core/model/document.h"

namespace vellum {

/// The landmarks of a list. Positions are those of an insertion: an entry put at i stands in front of the
/// present entry i. `kNoEntry` where there is no such entry; `behind...` is 0 then.
struct ListShape {
  DocumentKind kind = DocumentKind::None;
  std::size_t size = 0;
  std::size_t head = 0;            ///< behind the header (IHDR and acTL, MHDR and TERM, WEBH); 0 without one
  std::size_t end = kNoEntry;      ///< the end entry, or the size
  std::size_t palette = kNoEntry;  ///< PLTE
  std::size_t behindPalette = kNoEntry;  ///< the first that must follow a PLTE
  std::size_t firstImage = kNoEntry;     ///< the first image, or stream of an image that is not understood
  std::size_t firstLoop = kNoEntry;
  std::size_t behindEarly = 0;   ///< behind what must stand before a PLTE
  std::size_t behindCanvas = 0;  ///< behind a BACK, which no loop may enclose
  std::size_t behindFront = 0;   ///< behind all that images must follow
};

ListShape shape_of(const ChunkList& list, DocumentKind kind);
/// The shape once an entry with this tag was put at `index`.
void shape_insert(ListShape& shape, std::size_t index, ChunkTag tag);

/// Positions that an entry may be put at, both ends included.
struct PlaceRange {
  std::size_t first = 0, last = 0;
};
/// Nothing for a tag that has no place of its own, and in a list without a header.
std::optional<PlaceRange> place_range(const ListShape& shape, ChunkTag tag);

/// The position nearest to `wanted` where an entry with this tag may stand; nothing when there is none.
std::optional<std::size_t> place_for(const ListShape& shape, ChunkTag tag, std::size_t wanted);

/// Whether an entry of the list stands where its tag may stand.
bool is_in_place(const ListShape& shape, ChunkTag tag, std::size_t index);

/// MNG: the chunks of an image that is not understood (JNG, delta) stay together, up to their IEND. The
/// streams of the list, first and last entry of each, in order.
std::vector<PlaceRange> opaque_streams(const ChunkList& list, DocumentKind kind);
/// The stream that the entry is a part of; null for none.
const PlaceRange* stream_of(const std::vector<PlaceRange>& streams, std::size_t entry);
/// `position`, or the one behind the stream that it lies inside of.
std::size_t outside_streams(const ChunkList& list, DocumentKind kind, std::size_t position);

/// Whether the entry is the end of its document (IEND, MEND).
bool is_end_entry(DocumentKind kind, ChunkTag tag);

}  // namespace vellum
