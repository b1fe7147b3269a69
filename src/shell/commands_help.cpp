// The commands of the Help menu.
#include "shell/about_box.h"
#include "shell/commands.h"
#include "shell/main_window.h"

namespace vellum {

void about_command(MainWindow& main) { show_about_box(&main); }

}  // namespace vellum
