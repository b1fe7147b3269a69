// Undo: whole states of the list, taken before every change. Entries share their records, so a level costs a
// pointer an entry and no pixels. There is no redo.
#pragma once

#include "base/host.h"
#include "base/limits.h"
#include "core/model/document.h"

namespace vellum {

/// Stores the list (entries, order, selection, top index), `dirty`, the caret and the default image. Beyond
/// `UndoLevels` levels, or where undo levels alone hold more than `most` bytes, the oldest ones go. False,
/// with the message given to the host and nothing changed, when memory is exhausted.
bool undo_push(DocumentWindow& window, Host& host, std::uint64_t most = kMaximumUndoBytes);

/// Brings the newest level back, and drops it. A level without entries is dropped alone. False when nothing
/// was brought back.
bool undo_pop(DocumentWindow& window);

/// Drops all levels.
void undo_clear(DocumentWindow& window);

}  // namespace vellum
