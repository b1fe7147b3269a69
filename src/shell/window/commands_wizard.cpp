// The command of the animation wizard.
#include <QApplication>

#include "base/text.h"
#include "configuration/shell_settings.h"
#include "core/build/build_animation.h"
#include "shell/dialogs/wizard_dialog.h"
#include "shell/look/text.h"
#include "shell/viewer/view_document.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

/// The name of the next document of the wizard's, in the folder that files were opened from. Nothing is
/// written there.
std::filesystem::path next_name() {
  static unsigned long count = 0;
  const std::string name = format_text(string_text(StringId::WizardDocument).data(), count++);
  return std::filesystem::path(settings::OpenPath) / name;
}

}  // namespace

/// Shift alone leads to the batch processor; with Ctrl the wizard opens, with other values.
void wizard_command(MainWindow& main) {
  Services& services = main.services();
  const auto held = [](const std::function<bool()>& key) { return key && key(); };
  if (held(services.shift_held) && !held(services.control_held)) return batch_command(main);
  services.host.warn(StringId::WizardWelcome, settings::NewAnimationWizardWelcome);
  WizardDialog dialog(services, &main);
  dialog.build = [](const WizardChoice& choice, DocumentWindow& window, Host& host) {
    window.document.fileName = next_name();
    const bool built = build_wizard(choice.files, choice.values, build_kind(kDefaultKind), window, host);
    if (!built && host.stopped()) QApplication::beep();
    return built;
  };
  dialog.view = [&](const DocumentWindow& made) { view_document(made, false, services, &dialog); };
  if (dialog.exec() != QDialog::Accepted) return;
  if (DocumentFrame* frame = main.add_document(std::move(dialog.made()))) frame->size_to_content();
}

}  // namespace vellum
