// LOOP and ENDL of an MNG: nesting levels and partners (MNG 1.0).
#pragma once

#include <optional>
#include <vector>

#include "core/model/chunk_list.h"

namespace vellum {

/// A LOOP that is never left, as MNG writes it.
inline constexpr std::uint32_t kLoopForEver = 0x7FFFFFFF;

/// The nesting levels of the loops that are open in front of entry `index`, the innermost last. An ENDL
/// closes the innermost loop of its level.
std::vector<std::uint8_t> open_loops(const ChunkList& list, std::size_t index);
/// What one more entry changes in them.
void follow_loops(std::vector<std::uint8_t>& open, const ChunkRecord& record);

/// Gives a LOOP or an ENDL the level that follows from the loops that are open where it goes: one deeper than
/// they are, or that of the innermost.
void put_loop_level(ChunkRecord& record, const std::vector<std::uint8_t>& open);

/// Whether every loop is closed by an end of its level, and no end stands alone.
bool loops_match(const ChunkList& list);

}  // namespace vellum
