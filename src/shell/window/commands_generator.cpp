// The commands of generators.
#include "configuration/shell_settings.h"
#include "core/build/build_animation.h"
#include "core/model/kind_table.h"
#include "shell/dialogs/generator_dialog.h"
#include "shell/dialogs/transition_dialog.h"
#include "shell/viewer/view_document.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

/// A document of the default kind in the folder for exports.
bool build(const Generator& generator, const FieldValues& values, const GeneratorInputs& inputs,
           const std::string& name, DocumentWindow& window, Host& host) {
  const bool still = generator.still && generator.still(values);
  const DocumentKind kind = still ? DocumentKind::PING : build_kind(kDefaultKind);
  window.document.fileName = std::filesystem::path(settings::OpenExportPath) / name;
  window.document.fileName += kind_row(kind).extensions.front();
  return generate(generator, values, inputs, kind, window, host);
}

/// Builds what Test shows, and lets go of it again.
void show_test(const Generator& generator, const FieldValues& values, const GeneratorInputs& inputs,
               Services& services, QWidget& dialog) {
  DocumentWindow temporary;
  if (build(generator, values, inputs, "Temporary_", temporary, services.host))
    view_document(temporary, false, services, &dialog);
}

/// A window with the document, whose name counts those of its generator in this run of the program. False
/// after a message, or a stop.
bool show_document(MainWindow& main, const Generator& generator, const FieldValues& values,
                   const GeneratorInputs& inputs) {
  static std::map<const Generator*, unsigned> counts;
  DocumentWindow made;
  const std::string name = generator.document + std::to_string(++counts[&generator]);
  if (!build(generator, values, inputs, name, made, main.services().host)) return false;
  if (DocumentFrame* frame = main.add_document(std::move(made))) frame->size_to_content();
  return true;
}

bool shift_held(const Services& services) { return services.shift_held && services.shift_held(); }

}  // namespace

void run_generator_command(MainWindow& main, int number) {
  const Generator& generator = *find_generator(number);
  Services& services = main.services();
  // With Shift a generator begins with its defaults.
  GeneratorDialog dialog(generator, build_kind(kDefaultKind), shift_held(services), services, &main);
  dialog.test = [&](const FieldValues& values) {
    show_test(generator, values, dialog.inputs(), services, dialog);
  };
  if (dialog.exec() == QDialog::Accepted) show_document(main, generator, dialog.settled(), dialog.inputs());
}

void transition_command(MainWindow& main) {
  const Generator& generator = *find_generator("transition");
  Services& services = main.services();
  TransitionDialog dialog(generator, build_kind(kDefaultKind), shift_held(services), services, &main);
  dialog.test = [&] { show_test(generator, dialog.all_values(), dialog.inputs(), services, dialog); };
  // A build that was given up leaves the dialog as it was.
  dialog.build = [&] { return show_document(main, generator, dialog.all_values(), dialog.inputs()); };
  dialog.exec();
}

}  // namespace vellum
