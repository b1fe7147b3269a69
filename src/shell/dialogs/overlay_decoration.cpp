// Overlay and underlay: what hides all that lies under it is told.
#include "operations/reconstruct.h"
#include "operations/second_file.h"
#include "operations/settings.h"
#include "shell/dialogs/operation_decorations.h"
#include "shell/dialogs/operation_dialog.h"

namespace vellum {
namespace {

bool may_hide(Services& services) {
  Host& host = services.host;
  if (settings::WarnOverlayNoTransparent == 0 || !host.ask) return true;
  const StringId id = StringId::OverlayIsOpaque;
  return host.ask({id, {}, std::string(string_text(id)), {}, &settings::WarnOverlayNoTransparent}, false) ==
         Answer::Yes;
}

}  // namespace

bool warn_of_opaque_overlay(OperationChoice& choice, const DocumentWindow&, Services& services) {
  const auto file = kept_pictures_of_file(choice.values.text("with"));
  return !file || !file->opaque || choice.values.number("opacity") < 100 || may_hide(services);
}

bool warn_of_opaque_animation(OperationChoice&, const DocumentWindow& window, Services& services) {
  return has_transparency(window) || may_hide(services);
}

}  // namespace vellum
