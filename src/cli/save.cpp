#include "cli/command.h"
#include "cli/document_kinds.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/settings.h"

namespace vellum::cli {
namespace {

struct SaveOptions {
  std::string in, out;
  bool recompress = false;
};

int run_save(const SaveOptions& options, Host& host) {
  if (!name_fits_document(options.out)) return kWrongUsage;
  if (options.recompress) settings::KeepStoredImages = 0;
  DocumentWindow window;
  return open_document(window, options.in, host) && save_document(window, options.out, host) ? kDone
                                                                                             : kFailed;
}

}  // namespace

Run prepare_save(CLI::App& app) {
  const auto options = std::make_shared<SaveOptions>();
  app.add_option("IN", options->in, "The file to read")->required();
  app.add_option("OUT", options->out, "The file to write; may be the same")->required();
  app.add_flag("--recompress", options->recompress,
               "Pack every image anew, also those that are as they were stored");
  return [options](Host& host) { return run_save(*options, host); };
}

}  // namespace vellum::cli
