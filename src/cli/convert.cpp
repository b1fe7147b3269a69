#include "cli/command.h"
#include "cli/document_kinds.h"
#include "cli/exchange_command.h"
#include "cli/frame_options.h"
#include "cli/parameter_options.h"
#include "cli/words.h"
#include "core/files/save_document.h"
#include "operations/convert_kind.h"
#include "operations/dither.h"
#include "operations/operation.h"

namespace vellum::cli {
namespace {

struct ConvertOptions {
  std::string in, out;
  DocumentKind kind = DocumentKind::None;  ///< None: as it is
  std::string colors;                      ///< the row's name; empty: as they are
  GivenParameters given;
};

bool is_color_type(const Operation& row) {
  return row.convertOption && row.convertOption == std::string_view("color");
}

std::vector<std::string> color_types() {
  std::vector<std::string> names;
  for (const Operation* row : operation_table())
    if (is_color_type(*row)) names.emplace_back(row->parameters.name);
  return names;
}

/// What `convert` offers of the parameters that the color types have, each once.
const Parameters& color_parameters() {
  static const std::vector<Field> fields = [] {
    std::vector<Field> found;
    for (const Operation* row : operation_table())
      for (const Field& field : row->parameters.fields)
        for (const std::string_view offered : {"threshold", "colors", "dither"})
          if (is_color_type(*row) && field.name == offered && !find_field(found, offered)) {
            found.push_back(field);
            found.back().enabledBy = nullptr;
          }
    return found;
  }();
  static const Parameters parameters{
      .name = "convert", .title = "", .help = "", .fields = fields, .options = {&kDitherOption, 1}};
  return parameters;
}

bool convert_colors(DocumentWindow& window, const ConvertOptions& options, const FieldValues& given,
                    Host& host) {
  const Operation& row = *find_operation(options.colors);
  FieldValues values = initial_values(row.parameters.fields);
  for (const Field& field : color_parameters().fields) values.set(field.name, *given.find(field.name));
  values.set("sorted", std::int64_t{0});
  return run_operation(row, window, values, all_frames(frame_entries(window).size()), host);
}

int run_convert(const ConvertOptions& options, Host& host) {
  const auto values = parameter_values(color_parameters(), options.given, {});
  if (!values) return kWrongUsage;
  DocumentWindow window;
  if (!open_input(window, options.in, options.out, options.kind, host)) return kFailed;
  const DocumentKind kind = options.kind == DocumentKind::None ? window.document.kind : options.kind;
  if (!name_fits_kind(options.out, kind)) return kWrongUsage;
  DocumentWindow converted;
  const bool same = window.document.kind == kind;
  if (!same && !convert_kind(window, converted, {kind, values->number("dither") != 0}, host))
    return tell_of_failure(host);
  DocumentWindow& result = same ? window : converted;
  if (!options.colors.empty() && !convert_colors(result, options, *values, host)) return kFailed;
  return save_document(result, options.out, host) ? kDone : kFailed;
}

}  // namespace

Run prepare_convert(CLI::App& app) {
  const auto options = std::make_shared<ConvertOptions>();
  app.add_option("IN", options->in, "The file to read")->required();
  app.add_option("OUT", options->out, "The file to write")->required();
  app.add_option("--kind", options->kind, "The kind of the new file; without it, that of IN")
      ->transform(one_of(kKinds, "png|apng|mng|webp"));
  app.add_option("--color", options->colors, "What the images hold")
      ->transform(CLI::IsMember(color_types(), CLI::ignore_case).description("mono|grey|palette|true|alpha"));
  add_parameter_options(app, color_parameters(), options->given);
  return [options](Host& host) { return run_convert(*options, host); };
}

}  // namespace vellum::cli
