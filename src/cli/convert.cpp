#include "cli/command.h"
#include "cli/document_kinds.h"
#include "cli/exchange_command.h"
#include "cli/frame_options.h"
#include "core/files/save_document.h"
#include "operations/convert_kind.h"
#include "operations/operation.h"

namespace vellum::cli {
namespace {

struct ConvertOptions {
  std::string in, out;
  DocumentKind kind = DocumentKind::None;  ///< None: as it is
  std::string colors;                      ///< the row's name; empty: as they are
  std::int64_t threshold = 128, most = 256;
  bool dither = false;
};

std::vector<std::string> color_types() {
  std::vector<std::string> names;
  for (const Operation* row : operation_table())
    if (row->convertOption && row->convertOption == std::string_view("color"))
      names.emplace_back(row->parameters.name);
  return names;
}

bool convert_colors(DocumentWindow& window, const ConvertOptions& options, Host& host) {
  const Operation& row = *find_operation(options.colors);
  FieldValues values = initial_values(row.parameters.fields);
  values.set("threshold", options.threshold);
  values.set("colors", options.most);
  values.set("dither", std::int64_t{options.dither});
  values.set("sorted", std::int64_t{0});
  return run_operation(row, window, values, all_frames(frame_entries(window).size()), host);
}

int run_convert(const ConvertOptions& options, Host& host) {
  DocumentWindow window;
  if (!open_input(window, options.in, options.out, options.kind, host)) return kFailed;
  const DocumentKind kind = options.kind == DocumentKind::None ? window.document.kind : options.kind;
  if (!name_fits_kind(options.out, kind)) return kWrongUsage;
  DocumentWindow converted;
  const bool same = window.document.kind == kind;
  if (!same && !convert_kind(window, converted, {kind, options.dither}, host)) return tell_of_failure(host);
  DocumentWindow& result = same ? window : converted;
  if (!options.colors.empty() && !convert_colors(result, options, host)) return kFailed;
  return save_document(result, options.out, host) ? kDone : kFailed;
}

}  // namespace

Run prepare_convert(CLI::App& app) {
  const auto options = std::make_shared<ConvertOptions>();
  app.add_option("IN", options->in, "The file to read")->required();
  app.add_option("OUT", options->out, "The file to write")->required();
  app.add_option("--kind", options->kind, "The kind of the new file; without it, that of IN")
      ->transform(CLI::CheckedTransformer(kKinds, CLI::ignore_case).description("png|apng|mng|webp"));
  app.add_option("--color", options->colors, "What the images hold")
      ->transform(CLI::IsMember(color_types(), CLI::ignore_case).description("mono|grey|palette|true|alpha"));
  app.add_option("--threshold", options->threshold, "mono: grey from here on is white")
      ->check(CLI::Range(1, 254))
      ->capture_default_str();
  app.add_option("--colors", options->most, "palette: the most colors")
      ->check(CLI::Range(2, 256))
      ->capture_default_str();
  app.add_flag("--dither", options->dither, "Where colors go into a palette: spread the error of each pixel");
  return [options](Host& host) { return run_convert(*options, host); };
}

}  // namespace vellum::cli
