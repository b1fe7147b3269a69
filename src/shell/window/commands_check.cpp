// The dock that checks the document.
#include "shell/docks/check_panel.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {

void check_command(MainWindow& main, DocumentFrame& frame) {
  constexpr int kCheckDock = 824;
  main.docks().show(kCheckDock, true);
  auto* panel = static_cast<CheckPanel*>(main.docks().panel(kCheckDock));
  if (!panel) return;
  panel->show_document(&frame);
  panel->check();
}

}  // namespace vellum
