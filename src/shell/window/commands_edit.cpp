// The commands of the Edit menu.
#include "core/edit/delete_chunks.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/move_chunks.h"
#include "core/edit/undo.h"
#include "shell/services/clipboard.h"
#include "shell/window/commands.h"
#include "shell/window/editing.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

void select_entries(MainWindow& main, DocumentFrame& frame, bool selected) {
  const bool images = main.services().shift_held();
  if (images && !undo_push(frame.content(), main.services().host, string_text(StringId::UndoSelect))) return;
  frame.list().select_shown(selected, images);
}

/// Whether the caret stands on a row that is seen; it does unless no row has the text that is looked for.
bool caret_is_shown(DocumentFrame& frame) { return frame.list().is_shown(caret_entry(frame.content())); }

void move_command(MainWindow& main, DocumentFrame& frame, bool down) {
  if (!caret_is_shown(frame)) return;
  if (move_rows(frame.content(), down, main.services().host)) frame.show_caret();
}

}  // namespace

void undo_command(MainWindow&, DocumentFrame& frame) {
  if (undo_pop(frame.content())) frame.size_to_content();
}

void redo_command(MainWindow&, DocumentFrame& frame) {
  if (redo_pop(frame.content())) frame.size_to_content();
}

void dismiss_notes_command(MainWindow&, DocumentFrame& frame) { frame.document().notes.clear(); }

void cut_command(MainWindow& main, DocumentFrame& frame) {
  if (const auto copied = cut_selected(frame.content(), main.services().host)) put_on_clipboard(*copied);
}

void copy_command(MainWindow& main, DocumentFrame& frame) {
  if (const auto copied = copy_selected(frame.content(), main.services().host)) put_on_clipboard(*copied);
}

void paste_command(MainWindow& main, DocumentFrame& frame) {
  if (paste_from_clipboard(frame.content(), main.services().host)) frame.show_caret();
}

void delete_command(MainWindow& main, DocumentFrame& frame) {
  if (delete_selected(frame.content(), main.services().host)) frame.show_caret();
}

void edit_command(MainWindow& main, DocumentFrame& frame) {
  if (caret_is_shown(frame)) edit_entry(main, frame, caret_entry(frame.content()));
}

void move_up_command(MainWindow& main, DocumentFrame& frame) { move_command(main, frame, false); }

void move_down_command(MainWindow& main, DocumentFrame& frame) { move_command(main, frame, true); }

void find_text_command(MainWindow&, DocumentFrame& frame) { frame.find_bar().open(); }

void find_next_command(MainWindow&, DocumentFrame& frame) { frame.find_bar().step(true); }

void find_backwards_command(MainWindow&, DocumentFrame& frame) { frame.find_bar().step(false); }

void select_all_command(MainWindow& main, DocumentFrame& frame) { select_entries(main, frame, true); }

void select_none_command(MainWindow& main, DocumentFrame& frame) { select_entries(main, frame, false); }

}  // namespace vellum
