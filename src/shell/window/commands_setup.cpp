// Setup, and what takes effect as soon as it closes.
#include <QTimer>

#include "shell/setup/setup_dialog.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

constexpr int kExitCommand = 55;

}  // namespace

void setup_command(MainWindow& main) {
  const bool restart = edit_settings(&main, main.services().shift_held(), main.services().host);
  main.settings_changed();
  // A window may still refuse to close.
  if (restart) QTimer::singleShot(0, &main, [&main] { main.run(kExitCommand); });
}

}  // namespace vellum
