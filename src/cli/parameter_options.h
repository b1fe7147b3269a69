// The parameters of a row as options of a command: one for each field, and the compound ones.
#pragma once

#include "cli/command.h"
#include "operations/parameters.h"

namespace vellum::cli {

/// What the command line says of a row's parameters.
struct GivenParameters {
  bool stored = false;
  /// What was typed for each field, in the order of the row; and for the compound options.
  std::vector<std::optional<std::string>> fields, compounds;
  bool secondIsNamed = false;  ///< the second file has its place among IN and OUT
};

/// What somebody typed for a field: a name of several words may have hyphens between them, a color may lack
/// its
/// "#".
FieldValue option_value(const Field& field, const std::string& text);

/// "lineWidth" as "line-width".
std::string option_name(std::string_view field);

/// The second file of a row that has one, by its place on the command line.
void add_second_file(CLI::App& app, const Parameters& parameters, GivenParameters& given);

/// `given` stays where it is as long as the command.
void add_parameter_options(CLI::App& app, const Parameters& parameters, GivenParameters& given);
/// "--stored", where the settings keep something.
void add_stored_option(CLI::App& app, const Parameters& parameters, GivenParameters& given);

/// The values for this document; nothing after the reason was told.
std::optional<FieldValues> parameter_values(const Parameters& parameters, const GivenParameters& given,
                                            const DocumentWindow& window);

}  // namespace vellum::cli
