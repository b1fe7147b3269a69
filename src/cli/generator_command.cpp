#include "cli/generator_command.h"

#include "base/translation.h"
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
  std::vector<std::string> overrides;
  GivenParameters parameters;
};

/// "ROW=EFFECT[,PAUSE[,DELAY]]".
std::string override_form(const Generator& generator) {
  std::string form = "ROW=", ends;
  for (const char* field : generator.ownFields) {
    std::string name = option_name(field);
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::toupper(c); });
    form += form.back() == '=' ? name : "[," + name;
    if (field != generator.ownFields.front()) ends += ']';
  }
  return form + ends;
}

/// The values that one picture gets for itself, in the order of the row's fields.
bool take_override(const Generator& generator, const std::string& text, std::vector<FieldValues>& own) {
  const auto no_form = [&] {
    return wrong_usage(translated("--override is not ") + override_form(generator));
  };
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) return no_form();
  const auto row = whole_number(text.substr(0, equals), 1, static_cast<std::int64_t>(own.size()));
  if (!row) return wrong_usage("--override " + text + translated(": there is no such picture"));
  FieldValues& values = own[static_cast<std::size_t>(*row - 1)];
  std::size_t at = equals + 1, field = 0;
  for (; at <= text.size() && field < generator.ownFields.size(); ++field) {
    const std::size_t end = std::min(text.find(',', at), text.size());
    const Field& found = *find_field(generator.parameters.fields, generator.ownFields[field]);
    const FieldValue value = option_value(found, text.substr(at, end - at));
    if (const auto fault = check_field(found, value)) return wrong_usage(fault->text);
    values.set(found.name, value);
    at = end + 1;
  }
  return at > text.size() || no_form();
}

/// Bytes of pictures that are made smaller as they are read; those behind them wait until they are needed.
constexpr std::uint64_t kMostReducedBytes = std::uint64_t{256} << 20;

/// One after the other. Each file is read once where the generator works with less than all of it.
bool read_pictures(const Generator& generator, const Given& given, const FieldValues& values,
                   GeneratorInputs& inputs, Host& host) {
  const std::uint32_t side = generator.useful ? generator.useful(values) : 0;
  std::uint64_t held = 0;
  for (const std::string& file : given.files) {
    inputs.names.push_back(std::filesystem::path(file).stem().string());
    if (host.stopped()) return false;
    if (generator.input == GeneratorInput::Pictures && (side == 0 || held > kMostReducedBytes)) {
      inputs.pictures.push_back(hold_picture_file(file, host));
    } else {
      const Picture picture = read_picture_file(file, host, 2 * side);
      inputs.pictures.push_back(picture && side != 0 ? reduced_to_fit(picture, side) : picture);
      held += inputs.pictures.back().block.size();
    }
    if (!inputs.pictures.back()) return false;
  }
  return true;
}

int run(const Generator& generator, const Given& given, Host& host) {
  const DocumentKind kind = kind_of_result(given.kind, given.out);
  if (!name_fits_kind(given.out, kind)) return kWrongUsage;
  const auto values = parameter_values(generator.parameters, given.parameters, {});
  if (!values) return kWrongUsage;
  GeneratorInputs inputs;
  inputs.own.resize(given.overrides.empty() ? 0 : given.files.size());
  for (const std::string& text : given.overrides)
    if (!take_override(generator, text, inputs.own)) return kWrongUsage;
  if (!read_pictures(generator, given, *values, inputs, host)) return kFailed;
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
  if (!generator.ownFields.empty())
    app.add_option("--override", given->overrides,
                   "Values of its own for the picture of a row, from 1; repeatable")
        ->type_name(override_form(generator))
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  add_stored_option(app, generator.parameters, given->parameters);
  return [given, &generator](Host& host) { return run(generator, *given, host); };
}

}  // namespace vellum::cli
