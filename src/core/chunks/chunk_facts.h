// What a row of the list tells of its chunk behind the description: a few facts, and what the chunk is about.
#pragma once

#include <string>
#include <vector>

#include "core/model/document.h"

namespace vellum {

/// What a chunk is about.
enum class ChunkFamily {
  Header,
  Frame,       ///< a picture and what goes with it
  Colors,      ///< colors by number, transparency, ground
  ColorSpace,  ///< what colors mean
  Text,
  Time,
  Control,  ///< plays, loops, how frames are laid
  Measure,  ///< sizes, places, what a camera told
  End,
  Unknown,
};
inline constexpr std::size_t kChunkFamilies = 10;

ChunkFamily chunk_family(ChunkTag tag);

/// What a chunk is called, for tags whose description does not say it; null for the others.
const char* chunk_name(ChunkTag tag);

struct ChunkFacts {
  std::string text;            ///< one line of UTF-8, at most 240 bytes, nothing that the description says
  std::vector<Colour> colors;  ///< at most 16 that the chunk holds
};

/// Costs the same however long the document and the chunk are: rows ask for it while they are drawn.
ChunkFacts chunk_facts(const DocumentWindow& window, std::size_t index);

/// What a search looks through: number, label, text and facts of a row, and all of a text chunk.
std::string searched_text(const DocumentWindow& window, std::size_t index);

/// The value of a chunk's field as its form would show it.
std::string shown_value(const DocumentWindow& window, std::size_t index, const char* name,
                        bool inside = false);

}  // namespace vellum
