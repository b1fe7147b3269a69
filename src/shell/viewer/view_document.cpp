#include "shell/viewer/view_document.h"

#include "operations/reconstruct.h"
#include "shell/viewer/viewer_window.h"

namespace vellum {

bool view_document(const DocumentWindow& window, bool whole_frames, Services& services, QWidget* parent) {
  if (window.document.kind == DocumentKind::None || window.list.empty()) {
    services.host.show(StringId::ErrorAccessingChunk);
    return false;
  }
  if (!whole_frames || !is_animation(window.document.kind)) {
    ViewerWindow(window, services, parent).run();
    return true;
  }
  DocumentWindow temporary = duplicate_document(window, string_text(StringId::TemporaryPrefix));
  if (!reconstruct_frames(temporary, CanvasDepth::AsNeeded, services.host)) {
    services.host.show(StringId::ErrorAccessingChunk, {}, services.host.take_fault());
    return false;
  }
  ViewerWindow(temporary, services, parent).run();
  return true;
}

}  // namespace vellum
