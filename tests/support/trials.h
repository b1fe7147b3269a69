// The values that a row of parameters is tried with.
#pragma once

#include <filesystem>

#include "core/files/save_document.h"
#include "operations/parameters.h"
#include "support/documents.h"

namespace vellum::testing {

/// The initial values, with a name in texts that must have one, another file, and a folder.
inline FieldValues first_values(const Parameters& parameters, const DocumentWindow& window,
                                const std::filesystem::path& folder = {}) {
  const std::vector<Field> fields = fields_for(parameters, window);
  FieldValues values = initial_values(fields);
  // A list of frames is none of these names, nor is an encoder; without one it is all frames, or the usual
  // one.
  for (const Field& field : fields)
    if (field.type == FieldType::Text && field_enabled(fields, field, values) &&
        field.look != FieldLook::Path && field.name != std::string_view("frames") &&
        field.name != std::string_view("codec"))
      values.set(field.name, std::string("name"));
  for (const Field& field : fields)
    if (field.look == FieldLook::Path && !field.enabledBy && !folder.empty()) {
      const auto other = folder / "other.png";
      DocumentWindow made = small_document(DocumentKind::APNG, 2, 6);
      Host host;
      if (!std::filesystem::exists(other)) save_document(made, other, host);
      values.set(field.name, other.string());
    }
  // A destination has a million pixels, which would take long and tell nothing more.
  if (const Field* field = find_field(fields, "destination")) {
    values.set(field->name, field->choices.back().value);
    values.set("width", std::int64_t{60});
    values.set("height", std::int64_t{40});
    values.set("blur", std::int64_t{2});
  }
  // So do movements of many frames.
  if (find_field(fields, "steps")) values.set("steps", std::int64_t{2});
  if (parameters.folder) values.set(parameters.folder, (folder / "files").string());
  return values;
}

/// The defaults, and each field at both ends of its range.
inline std::vector<FieldValues> trials(const Parameters& parameters, const DocumentWindow& window,
                                       const std::filesystem::path& folder = {}) {
  const std::vector<Field> fields = fields_for(parameters, window);
  std::vector<FieldValues> made{first_values(parameters, window, folder)};
  const auto add = [&](const Field& field, FieldValue value) {
    FieldValues values = made.front();
    enable_field(fields, field, values);
    values.set(field.name, std::move(value));
    made.push_back(std::move(values));
  };
  for (const Field& field : fields) {
    if (field.locked || field.type == FieldType::Text || field.name == std::string_view("destination"))
      continue;
    for (const FieldChoice& choice : field.choices) add(field, choice.value);
    if (field.type == FieldType::Real) add(field, field.leastReal), add(field, field.mostReal);
    if (field.type == FieldType::Flag) add(field, std::int64_t{0}), add(field, std::int64_t{1});
    if (field.type == FieldType::Whole) {
      add(field, field.least);
      // Sides of thousands of pixels would take long and tell nothing more.
      add(field, std::min<std::int64_t>(field.most, 60));
    }
  }
  return made;
}

}  // namespace vellum::testing
