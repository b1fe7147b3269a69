// The commands of the Window menu, and the thumbnail scale.
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

constexpr int kIconGap = 4;

}  // namespace

void cascade_command(MainWindow& main) { main.area().cascadeSubWindows(); }

void tile_command(MainWindow& main) { main.area().tileSubWindows(); }

void arrange_icons_command(MainWindow& main) {
  const QSize client = main.area().viewport()->size();
  int x = 0, y = client.height();
  for (DocumentFrame* frame : main.area().documents()) {
    if (!frame->isMinimized()) continue;
    if (x > 0 && x + frame->width() > client.width()) x = 0, y -= frame->height() + kIconGap;
    frame->move(x, y - frame->height());
    x += frame->width() + kIconGap;
  }
}

void next_window_command(MainWindow& main) { main.tabs().step(1); }

void previous_window_command(MainWindow& main) { main.tabs().step(-1); }

void next_pane_command(MainWindow& main) { main.docks().focus_next(main.area().active()); }

void toggle_dock(MainWindow& main, int number) { main.docks().toggle(number); }

void duplicate_command(MainWindow& main, DocumentFrame& frame) {
  DocumentFrame* copy =
      main.add_document(duplicate_document(frame.content(), string_text(StringId::DuplicatePrefix)));
  if (copy)
    copy->size_to_content();
  else
    main.services().host.show(StringId::DuplicateError);
}

void scale_command(MainWindow& main, DocumentFrame& frame) { frame.set_scale(main.commands().scale()); }

}  // namespace vellum
