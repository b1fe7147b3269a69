#include "cli/operation_command.h"

#include "cli/document_kinds.h"
#include "cli/frame_options.h"
#include "configuration/setting_values.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "operations/convert_kind.h"

namespace vellum::cli {
namespace {

/// What the command line says of one operation.
struct Given {
  std::string in, out, frames;
  DocumentKind kind = DocumentKind::None;
  bool stored = false;
  /// What was typed for each field, in the order of the row; and for the compound options.
  std::vector<std::optional<std::string>> fields, compounds;
};

bool is_color(std::string_view text) {
  return text.size() == 6 && std::ranges::all_of(text, [](unsigned char c) { return std::isxdigit(c) != 0; });
}

/// "flip-horizontally" and "Flip horizontally" are one name; a color is six hexadecimal digits.
FieldValue parse_option(const Field& field, const std::string& text) {
  if (field.type == FieldType::Color && is_color(text)) return parse_field_value(field, "#" + text);
  FieldValue value = parse_field_value(field, text);
  if (field.type != FieldType::Choice || std::holds_alternative<std::int64_t>(value)) return value;
  std::string spaced = text;
  std::ranges::replace(spaced, '-', ' ');
  return parse_field_value(field, spaced);
}

/// Whether `--set` gave the field's setting a value for this run.
bool is_set_for_run(const Field& field) {
  for (const SettingRow& row : setting_table()) {
    if (!(field.setting && row.number == field.setting) &&
        !(field.textSetting && row.text == field.textSetting))
      continue;
    return stored_value(row) != setting_value(row);
  }
  return false;
}

FieldValues first_values(const std::vector<Field>& fields, bool stored) {
  FieldValues values = stored ? setting_values(fields) : initial_values(fields);
  const FieldValues kept = setting_values(fields);
  for (const Field& field : fields)
    if (is_set_for_run(field)) values.set(field.name, *kept.find(field.name));
  return values;
}

/// The parts of "X,Y,W,H"; nothing where there are too many or too few.
std::optional<std::vector<std::string>> parts_of(const CompoundOption& option, const std::string& text) {
  std::vector<std::string> parts;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(option.parting, at), text.size());
    parts.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  if (option.lastServesRest && parts.size() < option.fields.size())
    parts.resize(option.fields.size(), parts.back());
  return parts.size() == option.fields.size() ? std::optional(parts) : std::nullopt;
}

bool take_compound(const CompoundOption& option, const std::string& text, const std::vector<Field>& fields,
                   FieldValues& values, GivenFields& given) {
  given.insert(option.fields.begin(), option.fields.end());
  if (option.alongside) values.set(option.alongside, option.alongsideValue);
  if (!option.form) {
    for (const char* name : option.fields) values.set(name, option.value);
    return true;
  }
  const auto parts = parts_of(option, text);
  if (!parts) return wrong_usage("--" + std::string(option.name) + " is not " + option.form);
  for (std::size_t i = 0; i < parts->size(); ++i)
    values.set(option.fields[i], parse_option(*find_field(fields, option.fields[i]), (*parts)[i]));
  return true;
}

/// The values for this document; nothing after the reason was told.
std::optional<FieldValues> values_of(const Operation& operation, const Given& given,
                                     const DocumentWindow& window) {
  const std::vector<Field> fields = operation_fields(operation, window);
  FieldValues values = first_values(fields, given.stored);
  GivenFields names;
  for (std::size_t i = 0; i < given.compounds.size(); ++i)
    if (given.compounds[i] &&
        !take_compound(operation.options[i], *given.compounds[i], fields, values, names))
      return std::nullopt;
  for (const Field& row : operation.fields) {
    const auto& text = given.fields[static_cast<std::size_t>(&row - operation.fields.data())];
    const Field* field = find_field(fields, row.name);
    if (!text || !field) continue;
    // What was said itself isn't overruled by what follows from another option.
    if (!field->enabledBy || !names.contains(field->enabledBy)) enable_field(fields, *field, values);
    names.insert(field->name);
    values.set(field->name, parse_option(*field, *text));
  }
  if (const char* reason = operation.settle ? operation.settle(values, window, names) : nullptr) {
    wrong_usage(reason);
    return std::nullopt;
  }
  const auto fault = check_operation(operation, values, window);
  if (!fault) return values;
  wrong_usage(fault->text);
  return std::nullopt;
}

int tell_of_failure(Host& host) {
  host.show(StringId::FileNotWritten, StringId::ErrorWritingFile, host.take_fault());
  return kFailed;
}

/// As another kind where one was asked for, and written.
int write_result(DocumentWindow& window, const Given& given, Host& host) {
  if (given.kind == DocumentKind::None || given.kind == window.document.kind)
    return save_document(window, given.out, host) ? kDone : kFailed;
  DocumentWindow converted;
  if (!convert_kind(window, converted, {given.kind, false}, host)) return tell_of_failure(host);
  return save_document(converted, given.out, host) ? kDone : kFailed;
}

int run(const Operation& operation, const Given& given, Host& host) {
  DocumentWindow window;
  if (!open_document(window, given.in, host)) return kFailed;
  const DocumentKind kind = given.kind == DocumentKind::None ? window.document.kind : given.kind;
  if (!name_fits_kind(given.out, kind)) return kWrongUsage;
  const std::size_t count = frame_entries(window).size();
  if (count == 0) {
    host.show(StringId::NoImagesHere);
    return kFailed;
  }
  const auto values = values_of(operation, given, window);
  if (!values) return kWrongUsage;
  const auto frames = given.frames.empty() ? all_frames(count) : parse_frame_list(given.frames, count);
  if (!frames) {
    wrong_usage("--frames is not a list of images as in 1,3-5");
    return kWrongUsage;
  }
  return run_operation(operation, window, *values, *frames, host) ? write_result(window, given, host)
                                                                  : kFailed;
}

const char* value_name(const Field& field) {
  switch (field.type) {
    case FieldType::Color:
      return "RRGGBB";
    case FieldType::Text:
      return field.look == FieldLook::Path ? "FILE" : "TEXT";
    case FieldType::Choice:
      return "NAME";
    default:
      return "N";
  }
}

std::string help_of(const Field& field) {
  std::string text = field.label;
  if (field.type == FieldType::Choice) {
    std::string names;
    for (const FieldChoice& choice : field.choices)
      names.append(names.empty() ? ": " : ", ").append(*choice.word ? choice.word : choice.name);
    text += names;
  } else if (field.type == FieldType::Whole) {
    text += ", " + std::to_string(field.least) + " to " + std::to_string(field.most);
  } else if (field.type == FieldType::Real) {
    text +=
        ", " + field_value_text(field, field.leastReal) + " to " + field_value_text(field, field.mostReal);
  }
  return text;
}

void add_field_option(CLI::App& app, const Field& field, std::optional<std::string>& text) {
  const std::string name = option_name(field.name);
  if (field.type == FieldType::Flag) {
    const bool on = field.initial != 0;
    app.add_flag_callback((on ? "--no-" : "--") + name, [&text, on] { text = on ? "0" : "1"; }, field.label);
    return;
  }
  auto* option = app.add_option("--" + name, text, help_of(field))->type_name(value_name(field));
  if (field.type != FieldType::Text) option->default_str(field_value_text(field, initial_value(field)));
}

void add_compound_option(CLI::App& app, const CompoundOption& option, std::optional<std::string>& text) {
  const std::string name = "--" + std::string(option.name);
  if (option.form)
    app.add_option(name, text, option.help)->type_name(option.form);
  else
    app.add_flag_callback(
        name, [&text] { text = ""; }, option.help);
}

}  // namespace

std::string option_name(std::string_view field) {
  std::string name;
  for (const char c : field) {
    if (c >= 'A' && c <= 'Z') name += '-';
    name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return name;
}

Run prepare_operation(CLI::App& app, const Operation& operation) {
  const auto given = std::make_shared<Given>();
  given->fields.resize(operation.fields.size());
  given->compounds.resize(operation.options.size());
  app.add_option("IN", given->in, "The file to read")->required();
  app.add_option("OUT", given->out, "The file to write")->required();
  for (std::size_t i = 0; i < operation.options.size(); ++i)
    add_compound_option(app, operation.options[i], given->compounds[i]);
  for (std::size_t i = 0; i < operation.fields.size(); ++i)
    add_field_option(app, operation.fields[i], given->fields[i]);
  if (operation.scoped)
    app.add_option("--frames", given->frames, "The images that it is applied to, from 1, as in 1,3-5")
        ->type_name("LIST");
  app.add_option("--kind", given->kind, "Another kind of file")
      ->transform(CLI::CheckedTransformer(animation_kinds(), CLI::ignore_case).description("apng|mng|webp"));
  if (std::ranges::any_of(operation.fields, [](const Field& f) { return f.setting || f.textSetting; }))
    app.add_flag("--stored", given->stored, "Begin with the values that the settings keep");
  return [given, &operation](Host& host) { return run(operation, *given, host); };
}

}  // namespace vellum::cli
