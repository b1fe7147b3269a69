#include "generators/wizard.h"

#include "cli/command.h"
#include "cli/document_kinds.h"
#include "cli/frame_options.h"
#include "cli/parameter_options.h"
#include "core/files/save_document.h"

namespace vellum::cli {
namespace {

struct WizardOptions {
  std::string out;
  std::vector<std::string> files;
  DocumentKind kind = DocumentKind::None;
  bool strict = false;
  GivenParameters parameters;
};

/// Nobody can be asked about a file that can't be read: it is told, and left out or the end.
Host telling_host(const Host& host, bool strict) {
  Host telling = host;
  telling.ask = [tell = host.message, strict](const Message& message, bool) {
    const auto id = strict ? StringId::ErrorReadingFile : StringId::PictureLeftOut;
    if (tell && strict) tell({id, {}, std::string(string_text(id)), message.more, nullptr});
    if (tell && !strict) tell({id, {}, filled(id, {message.more}), {}, nullptr});
    return strict ? Answer::No : Answer::Yes;
  };
  return telling;
}

int run_wizard(const WizardOptions& options, Host& host) {
  const DocumentKind kind = kind_of_result(options.kind, options.out);
  if (!name_fits_kind(options.out, kind)) return kWrongUsage;
  if (options.files.size() < 2) {
    wrong_usage(std::string(string_text(StringId::NeedsTwoPictures)));
    return kWrongUsage;
  }
  const auto values = parameter_values(kWizard, options.parameters, {});
  if (!values) return kWrongUsage;
  Host telling = telling_host(host, options.strict);
  DocumentWindow window;
  if (!build_wizard({options.files.begin(), options.files.end()}, *values, kind, window, telling))
    return kFailed;
  return save_document(window, options.out, host) ? kDone : kFailed;
}

}  // namespace

Run prepare_wizard(CLI::App& app) {
  const auto options = std::make_shared<WizardOptions>();
  app.add_option("-o,--out", options->out, "The file to write")->required()->type_name("OUT");
  app.add_option("FILE", options->files, "Pictures, in their order")->required();
  add_kind_option(app, options->kind);
  app.add_flag("--strict", options->strict, "A file that can't be read is a failure");
  add_parameter_options(app, kWizard, options->parameters);
  add_stored_option(app, kWizard, options->parameters);
  return [options](Host& host) { return run_wizard(*options, host); };
}

}  // namespace vellum::cli
