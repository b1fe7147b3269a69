// Editing an entry in its dialog: the level before it, what closes the change after it.
#pragma once

#include "shell/editors/chunk_editor.h"

namespace vellum {

class MainWindow;
class DocumentFrame;

/// Opens the editor of an entry, as a double click does. An undo level first.
void edit_entry(MainWindow& main, DocumentFrame& frame, std::size_t index);

/// Opens the editor of the entry that was just inserted (with an undo level) at the caret. Cancel takes the
/// entry away again, with the level.
void edit_new_entry(MainWindow& main, DocumentFrame& frame);

}  // namespace vellum
