// Chunks as a block of bytes: what lies on the clipboard and travels between programs.
//
// "VCHK", version, kind of document, ticks to a second, transparency of the document's pictures (length and
// bytes), number of records; then each record: tag, size, its fields, the group of an embedded image where it
// has one, and its data with a length of its own. Numbers are little-endian, 32 bits where nothing else is
// said.
#pragma once

#include <functional>
#include <optional>
#include <span>

#include "core/edit/frame_layer.h"

namespace vellum {

/// Records of one document.
struct ChunkBlock {
  FrameSource source;
  std::vector<ChunkRecord> records;
};

std::vector<std::uint8_t> write_chunk_block(const ChunkBlock& block);

/// Takes bytes as they come; false ends the writing.
using ByteSink = std::function<bool(std::span<const std::uint8_t>)>;
/// The same of all records of a list, piece by piece: data is in memory once. False when the sink ended it.
bool write_chunk_block(DocumentKind kind, const ChunkList& list, const ByteSink& sink);

/// Reads a block that anybody may have made. Nothing on any fault: a length that does not fit, a tag or a
/// value that cannot be, an image without a picture or with another size than its picture's.
/// `whole`: headers may be among them, as in a block of a whole list.
std::optional<ChunkBlock> read_chunk_block(std::span<const std::uint8_t> bytes, bool whole = false);

}  // namespace vellum
