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

std::string_view extension_of(const Exporter& exporter, std::size_t format) {
  return format < exporter.formats.size() ? exporter.formats[format].extension : exporter.extension;
}

/// One for each format, with ";;" between.
std::string filters_of(const Exporter& exporter) {
  std::string filters;
  for (const ExportFormat& format : exporter.formats)
    filters +=
        (filters.empty() ? "" : ";;") + file_filter(format.filter, {&format.extension, 1}).toStdString();
  return filters.empty() ? file_filter(exporter.filter, {&exporter.extension, 1}).toStdString() : filters;
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
  const std::size_t first =
      exporter.formatField ? static_cast<std::size_t>(values.number(exporter.formatField)) : 0;
  FileChoice choice{parameters.title, filters_of(exporter),
                    title.stem().string() + std::string(extension_of(exporter, first)), true};
  choice.filterField = exporter.formatField;
  choice.parameters = &parameters;
  choice.window = &frame.content();
  choice.values = &values;
  const auto path = services.choose_file(choice);
  if (!path) return;
  keep_in_settings(parameters.fields, values);
  const std::size_t format =
      exporter.formatField ? static_cast<std::size_t>(values.number(exporter.formatField)) : 0;
  write_export(exporter, *run, values, with_extension(*path, extension_of(exporter, format)));
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
