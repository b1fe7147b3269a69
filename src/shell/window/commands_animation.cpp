// Commands that look at, or change, all frames of an animation.
#include "core/edit/undo.h"
#include "shell/dialogs/manage_dialog.h"
#include "shell/dialogs/properties_dialog.h"
#include "shell/viewer/view_document.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

constexpr int kStripDock = 822;

}  // namespace

void properties_command(MainWindow& main, DocumentFrame& frame) {
  PropertiesDialog(frame.content(), main.services(), &main).exec();
}

void manage_command(MainWindow& main, DocumentFrame& frame) {
  if (frame_entries(frame.content()).empty()) {
    main.services().host.show(StringId::NoImagesHere);
    return;
  }
  if (!undo_push(frame.content(), main.services().host, string_text(StringId::UndoManage))) return;
  ManageDialog(frame.content(), main.thumbnails(), main.services(), &main).exec();
}

void image_strip_command(MainWindow& main, DocumentFrame&) { main.docks().show(kStripDock, true); }

void view_command(MainWindow& main, DocumentFrame& frame) {
  const Services& services = main.services();
  const auto& held = main.commands().by_key() ? services.shift_held : services.control_held;
  view_document(frame.content(), held && held(), main.services(), &main);
}

}  // namespace vellum
