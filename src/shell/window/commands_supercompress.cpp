// Supercompress: a dialog that works on a copy, which becomes a window of its own.
#include "shell/dialogs/supercompress_dialog.h"
#include "shell/window/commands.h"
#include "shell/window/result_window.h"

namespace vellum {

void supercompress_command(MainWindow& main, DocumentFrame& frame) {
  const DocumentWindow& source = frame.content();
  show_result(main, frame, StringId::SupercompressedPrefix, [&](DocumentWindow& copy, Host& host) {
    SupercompressDialog dialog(source, copy, main.services(), &main);
    if (!dialog.lost()) return dialog.exec() == QDialog::Accepted;
    host.show(StringId::ErrorAccessingChunk);
    return false;
  });
}

}  // namespace vellum
