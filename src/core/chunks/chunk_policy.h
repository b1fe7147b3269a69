// What every writer does with a known chunk that is wrong: repaired where no meaning is lost, else kept as it
// is where no reader is harmed by it, else left out. Each with a note.
#pragma once

#include <string>
#include <vector>

#include "core/chunks/chunk_table.h"

namespace vellum {

enum class Mending { Good, Repaired, Kept, LeftOut };

/// Judges a payload by the chunk table, for an image of this form in a file of this kind, and repairs it
/// where that can be done: keywords are trimmed, NULs behind a text dropped, payloads cut to the length that
/// their format has. Chunks that are not known are good. `payload` is as it was unless the answer is
/// Repaired.
Mending mend_chunk(ChunkTag tag, std::vector<std::uint8_t>& payload, const PngContext& context,
                   DocumentKind kind);

/// "tEXt (entry 3) was set right": what a person is told; empty for Good. `entry` is a list index.
std::string mending_note(Mending mending, ChunkTag tag, std::size_t entry);

}  // namespace vellum
