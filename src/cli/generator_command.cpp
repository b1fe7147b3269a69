#include "cli/generator_command.h"

#include "cli/document_kinds.h"
#include "cli/frame_options.h"
#include "cli/parameter_options.h"
#include "core/files/save_document.h"
#include "image/graphic_file.h"

namespace vellum::cli {
namespace {

struct Given {
  std::string out;
  std::vector<std::string> files;
  DocumentKind kind = DocumentKind::None;
  GivenParameters parameters;
};

int run(const Generator& generator, const Given& given, Host& host) {
  const DocumentKind kind = kind_of_result(given.kind, given.out);
  if (!name_fits_kind(given.out, kind)) return kWrongUsage;
  const auto values = parameter_values(generator.parameters, given.parameters, {});
  if (!values) return kWrongUsage;
  GeneratorInputs inputs;
  for (const std::string& file : given.files) {
    Picture picture = read_picture_file(file, host);
    if (!picture) return kFailed;
    inputs.pictures.push_back(std::move(picture));
  }
  DocumentWindow window;
  if (!generate(generator, *values, inputs, kind, window, host)) return kFailed;
  return save_document(window, given.out, host) ? kDone : kFailed;
}

}  // namespace

Run prepare_generator(CLI::App& app, const Generator& generator) {
  const auto given = std::make_shared<Given>();
  app.add_option("-o,--out", given->out, "The file to write")->required()->type_name("OUT");
  if (generator.input == GeneratorInput::Picture)
    app.add_option("FILE", given->files, "A picture")->required()->expected(1);
  if (generator.input == GeneratorInput::Pictures)
    app.add_option("FILE", given->files, "Pictures, in their order")->required();
  add_kind_option(app, given->kind);
  add_parameter_options(app, generator.parameters, given->parameters);
  add_stored_option(app, generator.parameters, given->parameters);
  return [given, &generator](Host& host) { return run(generator, *given, host); };
}

}  // namespace vellum::cli
