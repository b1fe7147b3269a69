// The chunk table: what is known of each chunk: the kinds of documents that it belongs to, once or many, its
// place, length and content (PNG standard and its extensions, MNG 1.0). Readers, writers and insertion rules
// take their facts from here.
#pragma once

#include <span>

#include "core/model/chunk_record.h"

namespace vellum {

/// Where a chunk stands (PNG standard, "Chunk ordering"; MNG 1.0).
enum class ChunkPlace {
  Fixed,          ///< headers, ends, acTL and what the writer makes of frames: nobody else puts or moves them
  Image,          ///< an image: behind all that must stand in front of images
  BeforePalette,  ///< before PLTE and IDAT
  AtPalette,      ///< PLTE itself
  BehindPalette,  ///< behind PLTE, before IDAT
  BeforeImage,    ///< before IDAT
  Anywhere,
  Termination,  ///< TERM: directly behind MHDR
  Canvas,       ///< BACK: behind TERM, before the first image or loop
  Loop,         ///< LOOP, ENDL: in front of, and behind, an image
  Folded,       ///< FRAM, DEFI: a part of the image that they stand in front of
};

/// Kinds of documents, as a set.
enum KindSet : std::uint8_t {
  kInPng = 1,
  kInApng = 2,
  kInMng = 4,
  kInWebp = 8,
  kInPngs = kInPng | kInApng,
  kInText = kInPngs | kInMng,
};
std::uint8_t kind_bit(DocumentKind kind);

/// The header that a chunk is judged by: the image as it is written.
struct PngContext {
  std::uint8_t bitDepth = 8, colorType = 2;
  std::uint32_t paletteEntries = 0;  ///< 0 when there is no PLTE
};

struct ChunkRow {
  ChunkTag tag;
  std::uint8_t kinds;  ///< KindSet: where it belongs
  std::uint8_t once;   ///< KindSet: where at most one stands in a file
  ChunkPlace place;
  std::uint32_t shortest, longest;  ///< bounds of the payload's length, in bytes
  /// Whether a payload of a length within the bounds is valid for this image; null: always.
  bool (*check)(std::span<const std::uint8_t> payload, const PngContext& context);
};

/// All rows.
std::span<const ChunkRow> chunk_table();
/// The row of a tag in documents of this kind; null for a tag that is not known there. Unknown chunks may
/// stand anywhere, any number of times.
const ChunkRow* chunk_row(ChunkTag tag, DocumentKind kind);
bool stands_once(ChunkTag tag, DocumentKind kind);
ChunkPlace place_of(ChunkTag tag, DocumentKind kind);

/// Whether an MNG holds this chunk of a PNG for all images behind it; an empty one takes back what it told
/// (MNG 1.0, "gAMA").
bool serves_all_images(ChunkTag tag);

/// Whether a person may put such a chunk into a document of this kind: one that belongs there and is not
/// fixed, or an unknown one that a decoder may pass over (in a WebP every one that is no part of an image).
bool may_be_put(ChunkTag tag, DocumentKind kind);

/// Whether a payload is valid for its tag in this image: length and content. True for unknown tags with a
/// name that is valid in this kind. Still and animated PNG files do not differ here.
bool is_valid_chunk(ChunkTag tag, std::span<const std::uint8_t> payload, const PngContext& context,
                    DocumentKind kind = DocumentKind::APNG);

/// The keyword rules of tEXt, zTXt and iTXt (PNG standard): 1 to 79 Latin-1 printable characters, no blank at
/// either end and no two in a row.
bool is_valid_keyword(std::string_view keyword);

}  // namespace vellum
