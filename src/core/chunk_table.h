// The chunk table: what the PNG standard and its extensions say of each known chunk of a PNG or animated PNG.
// Readers, writers and insertion rules take their facts from here.
#pragma once

#include <span>

#include "core/chunk_record.h"

namespace vellum {

/// Where a chunk stands in a PNG (PNG standard, "Chunk ordering").
enum class ChunkPlace {
  Fixed,          ///< IHDR, IDAT, IEND, acTL and the frames: the writer puts them
  BeforePalette,  ///< before PLTE and IDAT
  AtPalette,      ///< PLTE itself
  BehindPalette,  ///< behind PLTE, before IDAT
  BeforeImage,    ///< before IDAT
  Anywhere,
};

/// The header that a chunk is judged by: the image as it is written.
struct PngContext {
  std::uint8_t bitDepth = 8, colorType = 2;
  std::uint32_t paletteEntries = 0;  ///< 0 when there is no PLTE
};

struct ChunkRow {
  ChunkTag tag;
  ChunkPlace place;
  bool once;                        ///< at most one in a file
  std::uint32_t shortest, longest;  ///< bounds of the payload's length, in bytes
  /// Whether a payload of a length within the bounds is valid for this image; null: always.
  bool (*check)(std::span<const std::uint8_t> payload, const PngContext& context);
};

/// The row of a tag; null for a tag that is not known. Unknown chunks may stand anywhere, any number of
/// times.
const ChunkRow* chunk_row(ChunkTag tag);

/// Whether a payload is valid for its tag in this image: length and content. True for unknown tags with a
/// valid name.
bool is_valid_chunk(ChunkTag tag, std::span<const std::uint8_t> payload, const PngContext& context);

/// The keyword rules of tEXt, zTXt and iTXt (PNG standard): 1 to 79 Latin-1 printable characters, no blank at
/// either end and no two in a row.
bool is_valid_keyword(std::string_view keyword);

}  // namespace vellum
