// The payload of an entry, as it will be written.
#pragma once

#include <optional>
#include <vector>

#include "core/document.h"

namespace vellum {

/// Nothing for images, whose data is made when the file is saved, and for entries that only a WebP has.
std::optional<std::vector<std::uint8_t>> chunk_payload(const ChunkRecord& record, DocumentKind kind);

}  // namespace vellum
