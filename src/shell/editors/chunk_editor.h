// The editors of chunks: one row for each tag that has one.
#pragma once

#include <QWidget>

#include "core/document.h"
#include "shell/services.h"

namespace vellum {

enum class Edited {
  Cancelled,  ///< nothing was touched; it also failed to open, after a message
  Same,       ///< OK, with nothing to change
  Changed,    ///< the entry changed (others may have, too)
};

/// Opens the editor of an entry and waits. The caller has taken the undo level before, and makes the calls
/// that close a change after.
using OpenEditor = Edited (*)(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services);

/// The editor of a tag in a kind of document; null where there is none.
OpenEditor find_editor(DocumentKind kind, ChunkTag tag);

/// The page "Raw" of every editor: payload, CRC and bytes. Empty while nobody makes one.
inline QWidget* (*makeRawPage)(QWidget* parent, const DocumentWindow& window, std::size_t index) = nullptr;

}  // namespace vellum
