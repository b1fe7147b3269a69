#include "cli/man_text.h"

#include "base/roff.h"

namespace vellum::cli {
namespace {

bool every(const CLI::App*) { return true; }

/// What stands for the value: its name, and "..." where there may be several.
std::string value_of(const CLI::Option& option) {
  if (option.get_type_size() == 0) return {};
  std::string value = option.get_type_name();
  if (option.get_expected_max() > 1) value += " ...";
  return value;
}

std::string items_of(const CLI::App& app) {
  std::string text;
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_group().empty()) continue;
    const bool positional = option->nonpositional() ? false : option->get_positional();
    std::string names = option->get_name(positional, !positional);
    for (std::size_t at = 0; (at = names.find(',', at)) != std::string::npos; at += 2)
      names.insert(at + 1, " ");
    text += roff_item(names, positional ? "" : value_of(*option), option->get_description());
  }
  return text;
}

std::string synopsis_of(const CLI::App& command) {
  std::string text = ".B vellum " + roff_text(command.get_name()) + "\n";
  bool options = false;
  std::string arguments;
  for (const CLI::Option* option : command.get_options()) {
    if (option->nonpositional()) {
      options = options || option->get_name() != "--help";
      continue;
    }
    const std::string name = roff_text(option->get_name(true));
    arguments += option->get_required() ? ".I " + name + "\n" : ".RI [ " + name + " ]\n";
  }
  const bool parts = !command.get_subcommands(every).empty();
  return text + (parts ? ".I OPERATION\n" : "") + arguments + (options ? ".RI [ option ...]\n" : "");
}

/// The commands below a command, whose options are those that they have by themselves.
std::string parts_of(const CLI::App& command) {
  std::string names;
  for (const CLI::App* part : command.get_subcommands(every))
    names.append(names.empty() ? "" : ", ").append(part->get_name());
  return names.empty() ? names : ".PP\n" + roff_lines("OPERATION is one of " + names + ".") + "\n";
}

}  // namespace

std::string man_text(const CLI::App& app) {
  std::string text = ".SH OPTIONS\n" + items_of(app) + ".SH COMMANDS\n";
  for (const CLI::App* command : app.get_subcommands(every))
    text += ".SS " + roff_text(command->get_name()) + "\n" + roff_lines(command->get_description() + ".") +
            "\n.PP\n" + synopsis_of(*command) + items_of(*command) + parts_of(*command);
  return text;
}

}  // namespace vellum::cli
