// What a chunk's payload says, decoded for people: lines of a name and a value.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "core/model/tags.h"

namespace vellum {

/// UTF-8. A line that heads or explains others has no name.
struct ReadingLine {
  std::string name;
  std::string value;
  bool operator==(const ReadingLine&) const = default;
};

/// Whether payloads of this tag are decoded in documents of this kind.
bool has_chunk_reading(ChunkTag tag, DocumentKind kind);

/// The payload decoded; empty for a tag without a reading. Of a payload that ends too early or contradicts
/// itself the lines up to that place are given, and then one that says so.
std::vector<ReadingLine> chunk_reading(ChunkTag tag, std::span<const std::uint8_t> payload,
                                       DocumentKind kind);

/// The four property bits of a tag in words (PNG standard, "Chunk naming conventions").
std::vector<ReadingLine> tag_properties(ChunkTag tag);

/// "name: value" lines.
std::string reading_text(const std::vector<ReadingLine>& lines);

}  // namespace vellum
