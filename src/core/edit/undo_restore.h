// Undo levels that come from somewhere else than from changes of this run.
#pragma once

#include <deque>

#include "core/model/document.h"

namespace vellum {

/// Makes them the levels of the window, the oldest first, as far as the limits of undo.h allow.
void undo_restore(DocumentWindow& window, std::deque<UndoLevel> levels);

}  // namespace vellum
