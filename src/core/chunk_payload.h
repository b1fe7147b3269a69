// The payload of an entry, as it will be written.
#pragma once

#include <optional>
#include <vector>

#include "core/document.h"

namespace vellum {

/// Texts are deflated as the settings say. Nothing for images and frame controls, whose data the writers
/// make, and for the header of a WebP.
std::optional<std::vector<std::uint8_t>> chunk_payload(const ChunkRecord& record, DocumentKind kind);

}  // namespace vellum
