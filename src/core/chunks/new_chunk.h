// Records with the default content of their tag.
#pragma once

#include "core/model/document.h"

namespace vellum {

/// What the content of some tags is made from.
struct NewChunkArgument {
  ChunkHandle picture;       ///< IDAT, fcTL, PNGI, WEBI: the picture, taken over
  std::uint32_t number = 0;  ///< LOOP: repeat count; FRAM: delay; DEFI: X in the low and Y in the high 16
                             ///< bits; tRNS: most entries of a palette
};

/// Fills `out` with the default content of `tag`. False, with `out` zeroed, for a tag that has none, where a
/// header is needed and missing, or without the picture that the tag needs.
bool new_chunk(const DocumentWindow& window, ChunkRecord& out, ChunkTag tag,
               const NewChunkArgument& argument = {});

/// Whether `new_chunk` knows the tag.
bool has_default_content(ChunkTag tag);

/// A tEXt record. The keyword is Latin-1, the text UTF-8; characters that Latin-1 does not have become "?",
/// line ends LF, and a NUL ends it.
ChunkRecord text_record(std::string_view keyword, std::string_view text);

}  // namespace vellum
