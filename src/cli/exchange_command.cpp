#include "cli/exchange_command.h"

#include "base/file.h"
#include "base/limits.h"
#include "base/translation.h"
#include "cli/document_kinds.h"
#include "cli/frame_options.h"
#include "cli/parameter_options.h"
#include "core/build/build_animation.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/kind_table.h"
#include "image/graphic_file.h"
#include "operations/convert_kind.h"

namespace vellum::cli {
namespace {

struct Given {
  std::string in, out;
  GivenParameters parameters;
};

/// A file of another format lies about its content under the name of a third.
bool name_fits_export(const std::string& path, const Exporter& exporter) {
  const std::string extension = std::filesystem::path(path).extension().string();
  if (extension.empty() || format_of_name(exporter, path)) return true;
  if (!has_document_extension(path) && GraphicFileType(path) == kNoGraphicFile) return true;
  return wrong_usage(translated("the name of this file ends in ") + std::string(exporter.extension));
}

/// The name tells the format where no option does.
void take_format_of_name(const Exporter& exporter, const Given& given, FieldValues& values) {
  if (!exporter.formatField) return;
  const Field* field = find_field(exporter.parameters.fields, exporter.formatField);
  const auto place = static_cast<std::size_t>(field - exporter.parameters.fields.data());
  const auto format = format_of_name(exporter, given.out);
  if (format && !given.parameters.fields[place]) values.set(field->name, static_cast<std::int64_t>(*format));
}

int run_export(const Exporter& exporter, const Given& given, Host& host) {
  if (!name_fits_export(given.out, exporter)) return kWrongUsage;
  DocumentWindow window;
  if (!open_document(window, given.in, host)) return kFailed;
  auto values = parameter_values(exporter.parameters, given.parameters, window);
  if (!values) return kWrongUsage;
  take_format_of_name(exporter, given, *values);
  return export_document(exporter, window, *values, given.out, host) ? kDone : kFailed;
}

/// The kind that files of this name have, where it says one: `.png` is an animation here.
std::optional<DocumentKind> kind_of_name(const std::string& path) {
  for (const DocumentKind kind : kAnimatedKinds)
    if (has_extension_of(path, kind)) return kind;
  return std::nullopt;
}

void put_kind(FieldValues& values, DocumentKind kind) {
  if (const auto number = build_number(kind)) values.set(kKindField, std::int64_t{*number});
}

/// A still that was imported under the name of another kind.
bool as_named(DocumentWindow& window, DocumentKind kind, Host& host) {
  if (window.document.kind != DocumentKind::PING || kind == DocumentKind::PING || kind == DocumentKind::APNG)
    return true;
  DocumentWindow converted;
  if (!convert_kind(window, converted, {kind, false}, host)) {
    host.show(StringId::FileNotWritten, StringId::ErrorWritingFile, host.take_fault());
    return false;
  }
  window.document = converted.document;
  window.list = converted.list;
  return true;
}

int run_import(const Importer& importer, const Given& given, Host& host) {
  auto values = parameter_values(importer.parameters, given.parameters, {});
  if (!values) return kWrongUsage;
  const auto named = kind_of_name(given.out);
  const Field* field = find_field(importer.parameters.fields, kKindField);
  const bool told =
      field && given.parameters.fields[static_cast<std::size_t>(field - importer.parameters.fields.data())];
  if (field && !told && named) put_kind(*values, *named);
  const DocumentKind kind = build_kind(static_cast<std::uint32_t>(values->number(kKindField)));
  if (!name_fits_kind(given.out, field ? kind : DocumentKind::PING)) return kWrongUsage;
  DocumentWindow window;
  if (!import_file(importer, window, given.in, *values, host)) return kFailed;
  if (field && (told || named == DocumentKind::WEBP) && !as_named(window, kind, host)) return kFailed;
  return save_document(window, given.out, host) ? kDone : kFailed;
}

void add_files(CLI::App& app, Given& given) {
  app.add_option("IN", given.in, "The file to read")->required();
  app.add_option("OUT", given.out, "The file to write")->required();
}

}  // namespace

Run prepare_export_command(CLI::App& app, const Exporter& exporter) {
  const auto given = std::make_shared<Given>();
  add_files(app, *given);
  add_parameter_options(app, exporter.parameters, given->parameters);
  add_stored_option(app, exporter.parameters, given->parameters);
  return [given, &exporter](Host& host) { return run_export(exporter, *given, host); };
}

Run prepare_import_command(CLI::App& app, const Importer& importer) {
  const auto given = std::make_shared<Given>();
  add_files(app, *given);
  add_parameter_options(app, importer.parameters, given->parameters);
  add_stored_option(app, importer.parameters, given->parameters);
  return [given, &importer](Host& host) { return run_import(importer, *given, host); };
}

bool open_input(DocumentWindow& window, const std::string& in, const std::string& out, DocumentKind kind,
                Host& host) {
  std::string reason;
  const auto bytes = read_file(in, reason, kMaximumFileBytes);
  const Importer* importer = bytes ? importer_of(*bytes) : nullptr;
  if (!importer) return open_document(window, in, host);
  const DocumentKind wanted = kind == DocumentKind::None ? kind_of_name(out).value_or(kind) : kind;
  FieldValues values = setting_values(fields_for(importer->parameters, {}));
  put_kind(values, wanted);
  return import_bytes(*importer, window, in, *bytes, values, host) &&
         (wanted == DocumentKind::None || as_named(window, wanted, host));
}

}  // namespace vellum::cli
