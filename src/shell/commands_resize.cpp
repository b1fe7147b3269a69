// Commands that make a document of another size.
#include <QApplication>

#include "core/undo.h"
#include "operations/frames.h"
#include "shell/commands.h"
#include "shell/dialogs/resize_dialog.h"
#include "shell/main_window.h"

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
  if (!may_promote(frame.content(), resize, host) || !undo_push(frame.content(), host)) return;
  DocumentWindow copy = duplicate_document(frame.content(), string_text(StringId::ResizedPrefix));
  if (!resize_animation(copy, resize, host)) {
    // Who stopped it needs no message.
    host.stopped() ? QApplication::beep() : host.show(StringId::NotResized, {}, host.take_fault());
    return;
  }
  if (DocumentFrame* made = main.add_document(std::move(copy))) made->size_to_content();
}

}  // namespace vellum
