// Any bytes at all as what is typed behind the name of an operation, a generator, an export or an import: a
// byte for the row, then words, each ended by a zero. What is taken is within the ranges that the row states.
#include "cli/frame_options.h"
#include "cli/parameter_options.h"
#include "exchange/exporter.h"
#include "exchange/importer.h"
#include "fuzz_support.h"
#include "generators/generator.h"
#include "operations/frames.h"
#include "operations/operation.h"

using namespace vellum;
using namespace vellum::fuzz;

namespace {

std::vector<const Parameters*> all_parameters() {
  std::vector<const Parameters*> rows;
  for (const Operation* row : operation_table()) rows.push_back(&row->parameters);
  for (const Generator* row : generator_table()) rows.push_back(&row->parameters);
  for (const Exporter* row : exporter_table()) rows.push_back(&row->parameters);
  for (const Importer* row : importer_table()) rows.push_back(&row->parameters);
  return rows;
}

/// Backwards, as the library takes them.
std::vector<std::string> words_of(std::string_view bytes) {
  std::vector<std::string> words;
  while (!bytes.empty() && words.size() < 40) {
    const std::size_t end = std::min(bytes.find('\0'), bytes.size());
    words.insert(words.begin(), std::string(bytes.substr(0, end)));
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
  }
  return words;
}

void check_values_stand(const Parameters& row, const FieldValues& values, const DocumentWindow& window) {
  const auto fields = fields_for(row, window);
  check(!check_fields(fields, values));
  for (const Field& field : fields) {
    const FieldValue* value = values.find(field.name);
    if (!value || check_field(field, *value)) continue;  // not in use
    const FieldValue again = parse_field_value(field, field_value_text(field, *value));
    check(field.type == FieldType::Real || again == *value);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return -1;
  static const std::vector<const Parameters*> rows = all_parameters();
  const Parameters& row = *rows[data[0] % rows.size()];
  const std::string_view typed(reinterpret_cast<const char*>(data + 1), size - 1);
  if (const auto frames = parse_frame_list(typed, 100))
    for (const std::size_t frame : *frames) check(frame < 100);
  cli::number_pair(typed, 'x', 1, 1000);
  CLI::App app("", "vellum");
  cli::GivenParameters given;
  cli::add_second_file(app, row, given);
  cli::add_parameter_options(app, row, given);
  cli::add_stored_option(app, row, given);
  try {
    app.parse(words_of(typed));
  } catch (const CLI::Error&) {
    return 0;
  }
  const DocumentWindow window;
  if (const auto values = cli::parameter_values(row, given, window)) check_values_stand(row, *values, window);
  return 0;
}
