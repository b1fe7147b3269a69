// The comment that tells who made a file.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "core/model/chunk_list.h"

namespace vellum {

/// The payload of a tEXt chunk, keyword "Comment", that names the account (or holds the text of
/// `file`, where a name is given) and the program. Nothing when the list has a tEXt with the very same text.
std::optional<std::vector<std::uint8_t>> identity_comment(const ChunkList& list,
                                                          const std::filesystem::path& file);

}  // namespace vellum
