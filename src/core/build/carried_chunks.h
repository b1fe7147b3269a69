// What a document tells beside its pixels, taken to a document of another kind: texts, times, color profiles,
// camera data and XMP have other chunks, or none, in the other kind.
#pragma once

#include <optional>

#include "core/model/document.h"

namespace vellum {

/// Whether a chunk is one of these.
bool tells_of_document(ChunkTag tag);

/// The chunk as a document of this kind holds it: a PNG's iCCP, eXIf and iTXt of the keyword
/// "XML:com.adobe.xmp" are a WebP's ICCP, EXIF and XMP. Nothing where it has no place there, or is damaged. A
/// profile goes along where it is one for RGB, which converted pictures are.
std::optional<ChunkRecord> carried_chunk(const ChunkRecord& record, DocumentKind kind);

}  // namespace vellum
