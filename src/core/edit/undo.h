// Undo and Redo: whole states of the list, taken before every change. Entries share their records, so a level
// costs a pointer an entry and no pixels.
#pragma once

#include "base/host.h"
#include "base/limits.h"
#include "core/model/document.h"

namespace vellum {

/// Stores the list (entries, order, selection, top index), `dirty`, the caret and the default image, before a
/// change of this name ("delete 3 chunks"; empty for none). What was undone before can't be done again once
/// the list is another. Beyond `UndoLevels` levels, or where undo levels alone hold more than `most` bytes,
/// the oldest ones go. False, with the message given to the host and nothing changed, when memory is
/// exhausted.
bool undo_push(DocumentWindow& window, Host& host, std::string_view name = {},
               std::uint64_t most = kMaximumUndoBytes);

/// Drops newest levels that are what the window holds, selection included: a command that changed nothing
/// leaves none. The other functions do so first; `undoAvailable` is true to it behind this call.
void undo_settle(DocumentWindow& window);

/// Brings the newest level back, and keeps the present state for Redo. A level without entries is dropped
/// alone. False when nothing was brought back.
bool undo_pop(DocumentWindow& window);
/// The reverse of the last `undo_pop`. False when there is nothing to do again.
bool redo_pop(DocumentWindow& window);

/// Gives up the change that the newest level was taken for: the state before it, with what could be done
/// again then.
void undo_take_back(DocumentWindow& window);

/// Drops all levels.
void undo_clear(DocumentWindow& window);

/// A name for a level: `what` is a text with one "%s", for the tag of a single chunk or how many they are.
std::string undo_name(StringId what, std::size_t chunks, ChunkTag single);
/// The same for the selected entries, or the caret's where none is selected.
std::string undo_name(StringId what, const DocumentWindow& window);

}  // namespace vellum
