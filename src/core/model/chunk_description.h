// The line that the list shows for a chunk.
#pragma once

#include <string>

#include "core/model/chunk_record.h"

namespace vellum {

/// The description: label and text parted by the first "?". UTF-8, at most 260 bytes. Never fails: a tag that
/// is not known is "UNKNOWN? %4.4s".
std::string chunk_description(const ChunkRecord& record);

/// Entry `index` (from 0) as the list draws it: "%5u: %s" with entries counted from 1, parted at the first
/// "?".
struct RowText {
  std::string label;
  std::string text;
};
RowText row_text(std::size_t index, const std::string& description);

}  // namespace vellum
