// Commands that make a document of another size.
#include "operations/frames.h"
#include "shell/dialogs/resize_dialog.h"
#include "shell/window/commands.h"
#include "shell/window/result_window.h"

namespace vellum {
namespace {

bool may_promote(const DocumentWindow& window, const ResizeAnimation& resize, const Host& host) {
  if (!resizing_needs_true_color(window, resize) || !host.ask) return true;
  const StringId id = StringId::NeedsTrueColor;
  return host.ask({id, {}, std::string(string_text(id)), {}, nullptr}, false) == Answer::Yes;
}

}  // namespace

void resize_command(MainWindow& main, DocumentFrame& frame) {
  Host& host = main.services().host;
  if (frame_entries(frame.content()).empty()) return host.show(StringId::NoImagesHere);
  ResizeDialog dialog(frame.content(), main.services(), &main);
  if (dialog.exec() != QDialog::Accepted) return;
  const ResizeAnimation resize = dialog.resize();
  if (!may_promote(frame.content(), resize, host)) return;
  show_result(main, frame, {StringId::ResizedPrefix, StringId::NotResized},
              [&](DocumentWindow& copy, Host& listener) { return resize_animation(copy, resize, listener); });
}

}  // namespace vellum
