// The comment that tells who made a file.
#pragma once

#include <optional>
#include <vector>

#include "core/model/chunk_list.h"

namespace vellum {

/// The payload of a tEXt chunk, keyword "Comment", that names the account (or holds the file named by
/// `IdentificationFile`) and the program. Nothing while `IdentifyFiles` is off, or when the list has a tEXt
/// with the very same text.
std::optional<std::vector<std::uint8_t>> identity_comment(const ChunkList& list);

}  // namespace vellum
