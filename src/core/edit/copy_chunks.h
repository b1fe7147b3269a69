// Copying chunks, and cutting them out.
#pragma once

#include <optional>
#include <string>

#include "base/host.h"
#include "core/edit/clipboard_block.h"

namespace vellum {

/// What goes to the clipboard.
struct CopiedChunks {
  std::vector<std::uint8_t> block;   ///< see clipboard_block.h
  Picture picture;                   ///< of one single image, with its transparency as alpha
  std::string text;                  ///< UTF-8, of one single text chunk
  std::vector<std::size_t> entries;  ///< which were copied
};

/// The selected entries, or the caret's where none is selected, in the order of the list. Headers, ends, and
/// what belongs to them are passed over; when nothing is left, the message about the first of them goes to
/// the host.
std::optional<CopiedChunks> copy_selected(const DocumentWindow& window, Host& host);

/// Copies and deletes what was copied (an undo level first, without the question about several). Where
/// nothing can be copied, a second message says that it can't be cut.
std::optional<CopiedChunks> cut_selected(DocumentWindow& window, Host& host);

/// The text of a tEXt or zTXt record as UTF-8, without its keyword.
std::string text_of(const ChunkRecord& record);

}  // namespace vellum
