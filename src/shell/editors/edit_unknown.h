// The editor of chunks that have none of their own: bytes, tag, and what both say.
#pragma once

#include <span>

#include "shell/editors/chunk_editor.h"

namespace vellum {

Edited edit_unknown(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services);

/// The record with another payload.
ChunkRecord with_content(const ChunkRecord& record, std::span<const std::uint8_t> bytes);
/// Makes it the entry's, as the editor's OK does: the user is asked where the bytes are wrong.
Edited put_content(DocumentWindow& window, std::size_t index, const ChunkRecord& record, Services& services);

}  // namespace vellum
