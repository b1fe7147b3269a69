// The commands of generators.
#include "configuration/shell_settings.h"
#include "core/build/build_animation.h"
#include "core/model/kind_table.h"
#include "shell/dialogs/generator_dialog.h"
#include "shell/viewer/view_document.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

/// A document of the default kind in the folder for exports.
bool build(const Generator& generator, const FieldValues& values, const GeneratorInputs& inputs,
           const std::string& name, DocumentWindow& window, Host& host) {
  const DocumentKind kind = build_kind(kDefaultKind);
  window.document.fileName = std::filesystem::path(settings::OpenExportPath) / name;
  window.document.fileName += kind_row(kind).extensions.front();
  return generate(generator, values, inputs, kind, window, host);
}

}  // namespace

void run_generator_command(MainWindow& main, int number) {
  const Generator& generator = *find_generator(number);
  Services& services = main.services();
  GeneratorDialog dialog(generator, services, &main);
  // With Shift a generator begins with its defaults.
  if (services.shift_held && services.shift_held()) dialog.buttons().button(QDialogButtonBox::Reset)->click();
  dialog.test = [&](const FieldValues& values) {
    DocumentWindow temporary;
    if (build(generator, values, dialog.inputs(), "Temporary_", temporary, services.host))
      view_document(temporary, false, services, &dialog);
  };
  if (dialog.exec() != QDialog::Accepted) return;
  // How many documents of this name there were in this run of the program.
  static std::map<const Generator*, unsigned> counts;
  DocumentWindow made;
  const std::string name = generator.document + std::to_string(++counts[&generator]);
  if (!build(generator, dialog.values(), dialog.inputs(), name, made, services.host)) return;
  if (DocumentFrame* frame = main.add_document(std::move(made))) frame->size_to_content();
}

}  // namespace vellum
