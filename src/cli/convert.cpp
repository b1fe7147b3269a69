#include "cli/command.h"
#include "cli/document_kinds.h"
#include "core/convert_records.h"
#include "core/open_document.h"
#include "core/save_document.h"

namespace vellum::cli {
namespace {

struct ConvertOptions {
  std::string in, out;
  DocumentKind kind = DocumentKind::None;
};

int run_convert(const ConvertOptions& options, Host& host) {
  if (!name_fits_kind(options.out, options.kind)) return kWrongUsage;
  DocumentWindow window, converted;
  if (!open_document(window, options.in, host)) return kFailed;
  if (window.document.kind == options.kind) return save_document(window, options.out, host) ? kDone : kFailed;
  if (!convert_document(window, converted, options.kind, host)) {
    host.show(StringId::FileNotWritten, StringId::ErrorWritingFile, host.take_fault());
    return kFailed;
  }
  return save_document(converted, options.out, host) ? kDone : kFailed;
}

}  // namespace

Run prepare_convert(CLI::App& app) {
  const auto options = std::make_shared<ConvertOptions>();
  app.add_option("IN", options->in, "The file to read")->required();
  app.add_option("OUT", options->out, "The file to write")->required();
  app.add_option("--kind", options->kind, "The kind of the new file")
      ->required()
      ->transform(CLI::CheckedTransformer(kKinds, CLI::ignore_case).description("png|apng|mng|webp"));
  return [options](Host& host) { return run_convert(*options, host); };
}

}  // namespace vellum::cli
