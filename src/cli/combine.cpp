#include "operations/combine.h"

#include "cli/command.h"
#include "cli/document_kinds.h"
#include "cli/frame_options.h"
#include "cli/parameter_options.h"
#include "cli/words.h"
#include "core/build/build_animation.h"
#include "core/files/save_document.h"
#include "core/model/kind_table.h"

namespace vellum::cli {
namespace {

struct Given {
  std::string out;
  std::vector<std::string> files;
  DocumentKind kind = DocumentKind::None;
  GivenParameters parameters;
};

int run(const Given& given, Host& host) {
  const DocumentKind kind = kind_of_result(given.kind, given.out);
  if (!name_fits_kind(given.out, kind)) return kWrongUsage;
  const auto values = parameter_values(kCombine, given.parameters, {});
  if (!values) return kWrongUsage;
  DocumentWindow window;
  if (!combine_files(window, given.files, *values, kind, host)) return kFailed;
  return save_document(window, given.out, host) ? kDone : kFailed;
}

}  // namespace

Run prepare_combine(CLI::App& app) {
  const auto given = std::make_shared<Given>();
  app.add_option("-o,--out", given->out, "The file to write")->required()->type_name("OUT");
  app.add_option("FILE", given->files, "Animations and pictures, in their order")->required();
  app.add_option("--kind", given->kind, "The kind of file; without it the name decides")
      ->transform(one_of(animation_kinds(), "apng|mng|webp"));
  add_parameter_options(app, kCombine, given->parameters);
  add_stored_option(app, kCombine, given->parameters);
  return [given](Host& host) { return run(*given, host); };
}

}  // namespace vellum::cli
