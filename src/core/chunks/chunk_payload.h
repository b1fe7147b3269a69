// The payload of an entry, as it will be written.
#pragma once

#include <optional>
#include <vector>

#include "core/model/document.h"

namespace vellum {

/// Texts are deflated as the settings say. Nothing for images and frame controls, whose data the writers
/// make, and for the header of a WebP.
std::optional<std::vector<std::uint8_t>> chunk_payload(const ChunkRecord& record, DocumentKind kind);

/// The payload of an entry that no header rules: raw bytes, a text deflated at `level`, the time of now where
/// `update_time` asks for it, acTL from its fields.
std::vector<std::uint8_t> plain_payload(const ChunkRecord& record, int level, bool update_time,
                                        bool as_stored);

/// The 28 bytes of an MHDR.
std::vector<std::uint8_t> mng_header_payload(const ChunkRecord& record);

}  // namespace vellum
