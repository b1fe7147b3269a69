// Every operation as a command of the built tool: what it writes is, byte for byte, what the operation makes
// of the same values.
#include <cstdlib>

#include "base/file.h"
#include "cli/parameter_options.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "operations/operation.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"

namespace vellum {
namespace {

using testing::Recorder;

std::vector<std::string> words_of(const Operation& operation, const FieldValues& values) {
  std::vector<std::string> words;
  for (const Field& field : operation.parameters.fields) {
    if (!field_enabled(operation.parameters.fields, field, values)) continue;
    const FieldValue& value = *values.find(field.name);
    const std::string name = cli::option_name(field.name);
    if (field.type == FieldType::Flag) {
      if (values.number(field.name) != field.initial)
        words.push_back((field.initial ? "--no-" : "--") + name);
    } else {
      words.insert(words.end(), {"--" + name, field_value_text(field, value)});
    }
  }
  return words;
}

TEST(OperationCommands, WriteWhatTheOperationMakes) {
  testing::ScratchFolder folder;
  setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
  for (const Operation* operation : operation_table())
    for (const DocumentKind kind : operation->parameters.kinds) {
      SCOPED_TRACE(std::string(operation->parameters.name) + " " + testing::kFileNames.at(kind));
      const std::string extension = std::filesystem::path(testing::kFileNames.at(kind)).extension();
      const auto in = folder / ("in" + extension), out = folder / ("out" + extension),
                 wanted = folder / ("wanted" + extension);
      Recorder recorder;
      DocumentWindow made = testing::small_document(kind, 3, 2), window;
      ASSERT_TRUE(save_document(made, in, recorder.host));
      ASSERT_TRUE(open_document(window, in, recorder.host));
      FieldValues values = initial_values(fields_for(operation->parameters, window));
      for (const Field& field : fields_for(operation->parameters, window))
        if (field.type == FieldType::Whole && !field.locked)
          values.set(field.name, std::min(field.most, field.initial + 1));
      if (check_values(operation->parameters, values, window))
        values = initial_values(fields_for(operation->parameters, window));
      ASSERT_TRUE(run_operation(*operation, window, values, all_frames(3), recorder.host));
      ASSERT_TRUE(save_document(window, wanted, recorder.host));
      auto words = words_of(*operation, values);
      words.insert(words.begin(),
                   {testing::program_folder() / "vellum", operation->parameters.name, in, out});
      const auto result = testing::run_tool(words);
      ASSERT_EQ(result.status, 0) << result.output;
      EXPECT_EQ(testing::file_bytes(out), testing::file_bytes(wanted));
    }
}

TEST(OperationCommands, ValuesBeyondTheirRangeAreWrongUsage) {
  testing::ScratchFolder folder;
  setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
  Recorder recorder;
  DocumentWindow made = testing::small_document(DocumentKind::APNG, 3, 2);
  const auto in = folder / "in.png", out = folder / "out.png";
  ASSERT_TRUE(save_document(made, in, recorder.host));
  for (const Operation* operation : operation_table())
    for (const Field& field : fields_for(operation->parameters, made)) {
      if (field.type != FieldType::Whole || field.locked ||
          !takes_kind(operation->parameters, DocumentKind::APNG))
        continue;
      for (const std::int64_t value : {field.least - 1, field.most + 1}) {
        const auto result =
            testing::run_tool({testing::program_folder() / "vellum", operation->parameters.name, in, out,
                               "--" + cli::option_name(field.name), std::to_string(value)});
        EXPECT_EQ(result.status, 2) << operation->parameters.name << " --" << field.name << " " << value;
        EXPECT_FALSE(std::filesystem::exists(out));
      }
    }
}

/// The line of the guide's table for a field.
std::string guide_line(const Field& field) {
  std::string values = field.type == FieldType::Flag ? "yes, no" : "";
  for (const FieldChoice& choice : field.choices)
    values.append(values.empty() ? "" : "; ").append(choice.name);
  if (field.type == FieldType::Whole)
    values = std::to_string(field.least) + " to " + std::to_string(field.most);
  if (field.type == FieldType::Real)
    values = field_value_text(field, field.leastReal) + " to " + field_value_text(field, field.mostReal);
  const bool flag = field.type == FieldType::Flag;
  const std::string initial =
      flag ? (field.initial ? "yes" : "no") : field_value_text(field, initial_value(field));
  return "| " + std::string(field.label) + " | " + values + " | " + initial + " | `--" +
         (flag && field.initial ? "no-" : "") + cli::option_name(field.name) + "` |";
}

TEST(OperationCommands, TheGuideHasAPageOfEachWithItsFields) {
  for (const Operation* operation : operation_table()) {
    const auto bytes = testing::file_bytes(testing::source_folder() / "docs/guide" /
                                           (std::string(operation->parameters.name) + ".md"));
    const std::string page(bytes.begin(), bytes.end());
    for (const Field& field : operation->parameters.fields)
      EXPECT_NE(page.find(guide_line(field) + "\n"), std::string::npos)
          << operation->parameters.name << ": " << guide_line(field);
    for (const CompoundOption& option : operation->parameters.options)
      EXPECT_NE(page.find("--" + std::string(option.name)), std::string::npos)
          << operation->parameters.name << ": " << option.name;
  }
}

}  // namespace
}  // namespace vellum
