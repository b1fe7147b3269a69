// Whether a chunk may be what it is in its document.
#pragma once

#include <optional>

#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

/// Whether the header and the palette rule what such a chunk may hold: it stands in front of a PNG's images.
bool depends_on_header(ChunkTag tag, DocumentKind kind);

/// Whether the record's bytes are valid in this document. What anybody pastes by the thousand needs no look
/// at the list.
bool is_valid_here(const DocumentWindow& window, const ChunkRecord& record);

/// What is wrong with giving entry `index` this record: its bytes, or that another such chunk stands in the
/// document, which may have one. Nothing where nothing is.
std::optional<StringId> record_fault(const DocumentWindow& window, std::size_t index,
                                     const ChunkRecord& record);

/// Whether the user wants it all the same, who is asked where something is wrong.
bool keeps_anyway(const DocumentWindow& window, std::size_t index, const ChunkRecord& record, Host& host);

}  // namespace vellum
