// The comment that tells who made a file.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "core/chunks/text_chunk.h"
#include "core/model/chunk_list.h"

namespace vellum {

/// A tEXt chunk, keyword "Comment", or an iTXt where Latin-1 has not all of its characters, that names the
/// account (or holds the text of `file`, where a name is given) and the program. Nothing when the list has
/// one with the very same text. The file's first 16,383 bytes are read, as UTF-8 or, where they are none, as
/// Latin-1.
std::optional<TextPayload> identity_comment(const ChunkList& list, const std::filesystem::path& file);

}  // namespace vellum
