#include "shell/window/editing.h"

#include "core/edit/insert_chunk.h"
#include "core/edit/undo.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

Edited edit_in_dialog(MainWindow& main, DocumentFrame& frame, std::size_t index, OpenEditor open) {
  DocumentWindow& window = frame.content();
  const ChunkTag tag = window.list.record(index).tag;
  window.document.PartialRedraw = false;
  const Edited edited = open(&main, window, index, main.services());
  if (edited != Edited::Changed) return edited;
  close_entry_edit(window, tag);
  frame.size_to_content();
  return edited;
}

}  // namespace

void edit_entry(MainWindow& main, DocumentFrame& frame, std::size_t index) {
  DocumentWindow& window = frame.content();
  Host& host = main.services().host;
  if (index >= window.list.size()) return host.show(StringId::ErrorAccessingChunk);
  const ChunkTag tag = window.list.record(index).tag;
  if (undo_push(window, host, undo_name(StringId::UndoEdit, 1, tag)))
    edit_in_dialog(main, frame, index, find_editor(window, index));
}

void edit_new_entry(MainWindow& main, DocumentFrame& frame) {
  DocumentWindow& window = frame.content();
  const std::size_t index = caret_entry(window);
  if (edit_in_dialog(main, frame, index, find_editor(window, index)) == Edited::Cancelled)
    undo_take_back(window);
}

}  // namespace vellum
