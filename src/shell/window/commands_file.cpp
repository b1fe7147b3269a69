// The commands of the File menu.
#include "shell/dialogs/new_dialog.h"
#include "shell/services/saving.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {

void new_document_command(MainWindow& main, DocumentKind kind) {
  Host& host = main.services().host;
  const auto parameters = ask_for_new_document(&main, kind, host);
  if (!parameters) return;
  DocumentWindow content;
  if (!new_document(content, *parameters)) return host.show(StringId::ErrorAccessingChunk);
  if (DocumentFrame* frame = main.add_document(std::move(content))) frame->size_to_content();
}

void open_command(MainWindow& main) {
  if (const auto path = main.services().choose_open()) main.open(*path);
}

void save_command(MainWindow& main, DocumentFrame& frame) { save(frame.content(), main.services()); }

void save_as_command(MainWindow& main, DocumentFrame& frame) { save_as(frame.content(), main.services()); }

void close_command(MainWindow&, DocumentFrame& frame) { frame.close(); }

void close_all_command(MainWindow& main) {
  const bool lose_changes = main.services().shift_held();
  for (DocumentFrame* frame : main.area().documents()) {
    if (lose_changes)
      frame->close_without_question();
    else if (!frame->close())
      return;
  }
}

void exit_command(MainWindow& main) { main.close(); }

}  // namespace vellum
