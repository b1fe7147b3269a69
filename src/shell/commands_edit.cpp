// The commands of the Edit menu.
#include "shell/commands.h"
#include "shell/main_window.h"

namespace vellum {
namespace {

void select_entries(MainWindow& main, DocumentFrame& frame, bool selected) {
  ChunkList& list = frame.entries();
  if (!main.services().shift_held()) return list.select_all(selected);
  for (std::size_t i = 0; i < list.size(); ++i)
    if (is_image_entry(frame.document().kind, list.record(i).tag)) list.select(i, selected);
}

}  // namespace

void select_all_command(MainWindow& main, DocumentFrame& frame) { select_entries(main, frame, true); }

void select_none_command(MainWindow& main, DocumentFrame& frame) { select_entries(main, frame, false); }

}  // namespace vellum
