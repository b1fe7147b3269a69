// The commands of exports and imports.
#include "core/settings.h"
#include "exchange/exporter.h"
#include "exchange/importer.h"
#include "shell/look/text.h"
#include "shell/services/file_dialogs.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

/// The name that the user gave, with the extension where he gave none.
std::filesystem::path with_extension(std::filesystem::path path, std::string_view extension) {
  if (!path.has_extension()) path += extension;
  return path;
}

}  // namespace

void run_export_command(MainWindow& main, DocumentFrame& frame, int number) {
  const Exporter& exporter = *find_exporter(number);
  const Parameters& parameters = exporter.parameters;
  Services& services = main.services();
  auto run = prepare_export(exporter, frame.content(), services.host);
  if (!run || !services.choose_file) return;
  FieldValues values = setting_values(fields_for(parameters, frame.content()));
  const std::filesystem::path title = document_title(frame.document());
  FileChoice choice{parameters.title, file_filter(exporter.filter, {&exporter.extension, 1}).toStdString(),
                    title.stem().string() + std::string(exporter.extension), true};
  choice.parameters = &parameters;
  choice.window = &frame.content();
  choice.values = &values;
  const auto path = services.choose_file(choice);
  if (!path) return;
  keep_in_settings(parameters.fields, values);
  write_export(exporter, *run, values, with_extension(*path, exporter.extension));
}

void run_import_command(MainWindow& main, int number) {
  const Importer& importer = *find_importer(number);
  Services& services = main.services();
  if (!services.choose_file) return;
  FieldValues values = setting_values(fields_for(importer.parameters, {}));
  const DocumentWindow nothing;
  FileChoice choice{
      importer.parameters.title, file_filter(importer.filter, importer.extensions).toStdString(), {}};
  choice.parameters = &importer.parameters;
  choice.window = &nothing;
  choice.values = &values;
  const auto path = services.choose_file(choice);
  if (!path) return;
  keep_in_settings(importer.parameters.fields, values);
  DocumentWindow content;
  if (!import_file(importer, content, *path, values, services.host)) return;
  if (DocumentFrame* frame = main.add_document(std::move(content))) frame->size_to_content();
}

}  // namespace vellum
