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
  ChunkList& list = frame.entries();
  if (!main.services().shift_held()) return list.select_all(selected);
  if (!undo_push(frame.content(), main.services().host, string_text(StringId::UndoSelect))) return;
  for (std::size_t i = 0; i < list.size(); ++i)
    if (is_image_entry(frame.document().kind, list.record(i).tag)) list.select(i, selected);
}

void move_command(MainWindow& main, DocumentFrame& frame, bool down) {
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
  edit_entry(main, frame, caret_entry(frame.content()));
}

void move_up_command(MainWindow& main, DocumentFrame& frame) { move_command(main, frame, false); }

void move_down_command(MainWindow& main, DocumentFrame& frame) { move_command(main, frame, true); }

void select_all_command(MainWindow& main, DocumentFrame& frame) { select_entries(main, frame, true); }

void select_none_command(MainWindow& main, DocumentFrame& frame) { select_entries(main, frame, false); }

}  // namespace vellum
