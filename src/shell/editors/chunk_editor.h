// The editors of chunks: one row for each tag that has one.
#pragma once

#include <QWidget>

#include "core/model/document.h"
#include "shell/services/services.h"

namespace vellum {

enum class Edited {
  Cancelled,  ///< nothing was touched; it also failed to open, after a message
  Same,       ///< OK, with nothing to change
  Changed,    ///< the entry changed (others may have, too)
};

/// Opens the editor of an entry and waits. The caller has taken the undo level before, and makes the calls
/// that close a change after.
using OpenEditor = Edited (*)(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services);

/// The editor of a tag in a kind of document; its bytes are edited where it has none of its own.
OpenEditor find_editor(DocumentKind kind, ChunkTag tag);
/// The editor of an entry: of its tag, or of its bytes where the content is laid out as its tag does not
/// know.
OpenEditor find_editor(const DocumentWindow& window, std::size_t index);
/// The calls that close a change of an entry that had this tag.
void close_entry_edit(DocumentWindow& window, ChunkTag tag);
/// Whether a tag has an editor of its own, so that no other chunk may take its name.
bool has_own_editor(ChunkTag tag);

}  // namespace vellum
