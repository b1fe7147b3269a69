#include "cli/parameter_options.h"

#include "base/text.h"
#include "base/translation.h"
#include "cli/completion.h"
#include "cli/frame_options.h"
#include "configuration/setting_values.h"

namespace vellum::cli {
namespace {

bool is_color(std::string_view text) {
  return text.size() == 6 && std::ranges::all_of(text, [](unsigned char c) { return std::isxdigit(c) != 0; });
}

/// As it is typed: "flip-horizontally".
std::string word_of(const FieldChoice& choice) {
  std::string word = *choice.word ? choice.word : lower_case(choice.name);
  std::ranges::replace(word, ' ', '-');
  return word;
}

std::vector<std::string> words_of(const Field& field) {
  std::vector<std::string> words;
  for (const FieldChoice& choice : field.choices) words.push_back(word_of(choice));
  return words;
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

FieldValues first_values(const Parameters& parameters, const std::vector<Field>& fields, bool stored) {
  FieldValues values = stored ? setting_values(fields) : initial_values(fields);
  for (const CompoundOption& option : parameters.options)
    for (const char* name : option.fields)
      if (!stored && option.otherwise) values.set(name, *option.otherwise);
  const FieldValues kept = setting_values(fields);
  for (const Field& field : fields)
    if (is_set_for_run(field)) values.set(field.name, *kept.find(field.name));
  return values;
}

/// A flag for each letter; nothing where there are others.
std::optional<std::vector<std::string>> flags_of(const CompoundOption& option, const std::string& text) {
  const std::string_view letters = option.letters;
  std::vector<std::string> flags(letters.size(), "0");
  for (const char c : text) {
    const std::size_t at = letters.find(static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
    if (at == std::string_view::npos) return std::nullopt;
    flags[at] = "1";
  }
  return flags;
}

/// The parts of "X,Y,W,H"; nothing where there are too many or too few.
std::optional<std::vector<std::string>> parts_of(const CompoundOption& option, const std::string& text) {
  if (option.letters) return flags_of(option, text);
  std::vector<std::string> parts;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(option.parting, at), text.size());
    parts.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  if ((option.lastServesRest || option.forAll) && parts.size() < option.fields.size())
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
  if (!parts) return wrong_usage("--" + std::string(option.name) + translated(" is not ") + option.form);
  for (std::size_t i = 0; i < parts->size(); ++i)
    values.set(option.fields[i], option_value(*find_field(fields, option.fields[i]), (*parts)[i]));
  return true;
}

/// The option that chooses a value of this field and can be given in its place: "800x600" beside the words.
const CompoundOption* form_beside_words(const Parameters& parameters, const Field& field,
                                        const std::string& text) {
  if (field.type != FieldType::Choice) return nullptr;
  const auto found = std::ranges::find_if(parameters.options, [&](const CompoundOption& option) {
    return option.form && option.alongside && option.alongside == std::string_view(field.name) &&
           option.fields.size() > 1 && text.find(option.parting) != std::string::npos &&
           text.find_first_not_of(std::string("0123456789") + option.parting) == std::string::npos;
  });
  return found == parameters.options.end() ? nullptr : &*found;
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
  std::string text = translated(field.label);
  if (field.type == FieldType::Choice) {
    std::string names;
    for (const std::string& word : words_of(field)) names.append(names.empty() ? ": " : ", ").append(word);
    text += names;
  } else if (field.type == FieldType::Whole) {
    text += ", " + std::to_string(field.least) + translated(" to ") + std::to_string(field.most);
  } else if (field.type == FieldType::Real) {
    text += ", " + field_value_text(field, field.leastReal) + translated(" to ") +
            field_value_text(field, field.mostReal);
  }
  return text;
}

std::string default_of(const Field& field) {
  for (const FieldChoice& choice : field.choices)
    if (choice.value == field.initial) return word_of(choice);
  return field_value_text(field, initial_value(field));
}

void add_field_option(CLI::App& app, const Field& field, std::optional<std::string>& text) {
  const std::string name = option_name(field.name);
  if (field.type == FieldType::Flag) {
    const bool on = field.initial != 0;
    // The option tells the value that it gives.
    std::string help = translated(field.label);
    if (on && field.choices.empty()) help += std::string(": ") + translated("no");
    for (const FieldChoice& choice : field.choices)
      if (choice.value == !on) help += std::string(": ") + translated(choice.name);
    app.add_flag_callback((on ? "--no-" : "--") + name, [&text, on] { text = on ? "0" : "1"; }, help);
    return;
  }
  auto* option = app.add_option("--" + name, text, help_of(field))->type_name(value_name(field));
  if (field.type == FieldType::Choice) offer_words(*option, words_of(field));
  if (field.type != FieldType::Text) option->default_str(default_of(field));
}

/// Whether an option stands in place of the field's own.
bool is_served(const Parameters& parameters, const Field& field) {
  return std::ranges::any_of(parameters.options, [&](const CompoundOption& option) {
    return option.name == std::string_view(field.name) ||
           (option.forAll && std::ranges::count(option.fields, std::string_view(field.name)) > 0);
  });
}

bool is_folder(const Parameters& parameters, const Field& field) {
  return parameters.folder && field.name == std::string_view(parameters.folder);
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

FieldValue option_value(const Field& field, const std::string& text) {
  if (field.type == FieldType::Color && is_color(text)) return parse_field_value(field, "#" + text);
  for (const FieldChoice& choice : field.choices)
    if (field.type == FieldType::Choice && equal_ignoring_case(text, word_of(choice))) return choice.value;
  return parse_field_value(field, text);
}

std::string option_name(std::string_view field) {
  std::string name;
  for (const char c : field) {
    if (c >= 'A' && c <= 'Z') name += '-';
    name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return name;
}

void add_second_file(CLI::App& app, const Parameters& parameters, GivenParameters& given) {
  if (!parameters.second) return;
  given.fields.resize(parameters.fields.size());
  const Field* field = find_field(parameters.fields, parameters.second);
  app.add_option("FILE", given.fields[static_cast<std::size_t>(field - parameters.fields.data())],
                 "The other file")
      ->required();
  given.secondIsNamed = true;
}

void add_parameter_options(CLI::App& app, const Parameters& parameters, GivenParameters& given) {
  given.fields.resize(parameters.fields.size());
  given.compounds.resize(parameters.options.size());
  for (std::size_t i = 0; i < parameters.options.size(); ++i)
    add_compound_option(app, parameters.options[i], given.compounds[i]);
  for (std::size_t i = 0; i < parameters.fields.size(); ++i)
    if (given.secondIsNamed && parameters.fields[i].name == std::string_view(parameters.second))
      continue;
    else if (is_folder(parameters, parameters.fields[i]))
      app.add_option("DIR", given.fields[i], "The folder for the files; it is made")->required();
    else if (!is_served(parameters, parameters.fields[i]))
      add_field_option(app, parameters.fields[i], given.fields[i]);
}

void add_stored_option(CLI::App& app, const Parameters& parameters, GivenParameters& given) {
  if (std::ranges::any_of(parameters.fields, [](const Field& f) { return f.setting || f.textSetting; }))
    app.add_flag("--stored", given.stored, "Begin with the values that the settings keep");
}

std::optional<FieldValues> parameter_values(const Parameters& parameters, const GivenParameters& given,
                                            const DocumentWindow& window) {
  const std::vector<Field> fields = fields_for(parameters, window);
  FieldValues values = first_values(parameters, fields, given.stored);
  GivenFields names;
  for (std::size_t i = 0; i < given.compounds.size(); ++i)
    if (given.compounds[i] &&
        !take_compound(parameters.options[i], *given.compounds[i], fields, values, names))
      return std::nullopt;
  for (const Field& row : parameters.fields) {
    const auto& text = given.fields[static_cast<std::size_t>(&row - parameters.fields.data())];
    const Field* field = find_field(fields, row.name);
    if (!text || !field) continue;
    // What was said itself isn't overruled by what follows from another option.
    if (!field->enabledBy || !names.contains(field->enabledBy)) enable_field(fields, *field, values);
    if (const CompoundOption* size = form_beside_words(parameters, *field, *text)) {
      if (!take_compound(*size, *text, fields, values, names)) return std::nullopt;
      continue;
    }
    names.insert(field->name);
    values.set(field->name, option_value(*field, *text));
  }
  if (const char* reason = parameters.settle ? parameters.settle(values, window, names) : nullptr) {
    wrong_usage(reason);
    return std::nullopt;
  }
  const auto fault = check_values(parameters, values, window);
  if (!fault) return values;
  wrong_usage(fault->text);
  return std::nullopt;
}

}  // namespace vellum::cli
