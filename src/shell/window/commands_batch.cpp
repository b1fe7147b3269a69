// The command of the batch processor.
#include "shell/dialogs/batch_dialog.h"
#include "shell/viewer/view_document.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {

void batch_command(MainWindow& main) {
  Services& services = main.services();
  BatchDialog dialog(services, &main);
  dialog.view = [&](const DocumentWindow& window) { view_document(window, false, services, &dialog); };
  dialog.exec();
}

}  // namespace vellum
