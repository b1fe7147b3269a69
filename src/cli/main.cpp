// vellum: the command-line tool.
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "base/string_table.h"
#include "base/translation.h"
#include "cli/command.h"
#include "cli/completion.h"
#include "cli/exchange_command.h"
#include "cli/generator_command.h"
#include "cli/man_text.h"
#include "cli/operation_command.h"
#include "cli/terminal_host.h"
#include "configuration/config_file.h"
#include "configuration/setting_values.h"
#include "core/chunks/chunk_fields.h"
#include "core/files/open_document.h"
#include "operations/convert_colors.h"

#ifndef VELLUM_VERSION
#error "the build gives the version"
#endif

namespace vellum::cli {
namespace {

struct GlobalOptions {
  std::string config;
  std::vector<std::string> settings;
  bool quiet = false;
};

void add_global_options(CLI::App& app, GlobalOptions& options) {
  app.add_option("--config", options.config, "The configuration file of this run")->type_name("FILE");
  app.add_option("--set", options.settings, "A setting for this run, never written")
      ->type_name("Key=Value")
      ->take_all()
      ->expected(1);
  app.add_flag("--quiet", options.quiet, "No warnings, notes or progress");
  app.set_version_flag("--version", "vellum " VELLUM_VERSION);
  // For the build, which makes the manual page and what shells complete with; without a group they aren't in
  // the help.
  app.add_flag_callback("--man", [&app] { throw CLI::CallForVersion(man_text(app), 0); })->group("");
  const auto completion = [&app](const std::string& shell) {
    throw CLI::CallForVersion(completion_text(app, shell), 0);
  };
  app.add_option_function<std::string>("--completion", completion)->group("");
  app.require_subcommand(1);
  app.fallthrough();
}

bool apply_settings(const std::vector<std::string>& assignments) {
  for (const std::string& assignment : assignments) {
    std::string reason;
    if (set_setting_for_run(assignment, reason)) continue;
    std::fprintf(stderr, translated("vellum: --set %s: %s\n"), assignment.c_str(), reason.c_str());
    return false;
  }
  return true;
}

bool tells_of_all(std::string_view argument) {
  return argument == "--man" || argument.starts_with("--completion");
}

/// What other programs read is English, whoever runs them.
bool for_programs(std::span<char*> arguments) {
  return std::ranges::any_of(
      arguments, [](std::string_view argument) { return argument == "--json" || tells_of_all(argument); });
}

/// Descriptions are rows and literals all over the commands; here they meet a person.
void translate_help(CLI::App& app) {
  for (const char* label : {"Usage", "OPTIONS", "SUBCOMMAND", "Positionals", "REQUIRED"})
    app.get_formatter()->label(label, translated(label));
  app.description(translated(app.get_description().c_str()));
  for (CLI::Option* option : app.get_options()) {
    option->description(translated(option->get_description().c_str()));
    if (!option->get_group().empty()) option->group(translated("Options"));
  }
  for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (!command->get_group().empty()) command->group(translated("Subcommands"));
    translate_help(*command);
  }
}

/// All commands, of which `chosen` gets what is run. Most of the time of a start would be spent on the
/// options of commands that nobody asks for, so those that the arguments don't name stay without.
void add_commands(CLI::App& app, std::span<char*> arguments, Run& chosen) {
  const bool all = std::ranges::any_of(arguments, tells_of_all);
  const auto add = [&](const char* name, const char* help, const auto& prepare) {
    CLI::App* command = app.add_subcommand(name, help);
    if (!all && std::ranges::find(arguments, std::string_view(name)) == arguments.end()) return;
    Run work = prepare(*command);
    command->callback([&chosen, work] { chosen = work; });
  };
  const auto add_rows = [&](const auto& rows, const auto& prepare) {
    for (const auto* row : rows)
      add(row->parameters.name, row->parameters.help,
          [&](CLI::App& command) { return prepare(command, *row); });
  };
  for (const CommandRow& row : command_table()) add(row.name, row.help, row.prepare);
  std::vector<const Operation*> operations(operation_table().begin(), operation_table().end());
  std::erase_if(operations, std::mem_fn(&Operation::convertOption));
  add_rows(operations, prepare_operation);
  add_rows(generator_table(), prepare_generator);
  add_rows(exporter_table(), prepare_export_command);
  add_rows(importer_table(), prepare_import_command);
}

int run(int argc, char** argv) {
  const std::span<char*> arguments(argv, static_cast<std::size_t>(argc));
  if (!for_programs(arguments)) use_language(wished_languages({}), catalog_folders());
  CLI::App app("Shows, checks and rewrites PNG, animated PNG, MNG and WebP files as lists of chunks.",
               "vellum");
  GlobalOptions options;
  add_global_options(app, options);
  Run chosen;
  add_commands(app, arguments, chosen);
  if (language_in_use() != "en") translate_help(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kWrongUsage;
  }
  config_open(options.config);
  if (!apply_settings(options.settings)) return kWrongUsage;
  convertImages = convert_to_header;
  take_imports();
  worthMapping = kWorthPassing;
  Host host = terminal_host(options.quiet);
  return chosen(host);
}

int tell_memory_is_exhausted() {
  std::fprintf(stderr, "vellum: %s\n", string_text(StringId::MemoryError).data());
  return kFailed;
}

/// Memory or threads may be exhausted where a library promises that nothing fails: that ends the program, but
/// as any other failure does.
[[noreturn]] void end_program() {
  try {
    if (const auto failure = std::current_exception()) std::rethrow_exception(failure);
  } catch (const std::bad_alloc&) {
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "vellum: %s\n", failure.what());
    std::_Exit(kFailed);
  } catch (...) {
  }
  std::_Exit(tell_memory_is_exhausted());
}

}  // namespace
}  // namespace vellum::cli

int main(int argc, char** argv) {
  std::set_terminate(vellum::cli::end_program);
  try {
    return vellum::cli::run(argc, argv);
  } catch (const std::bad_alloc&) {
    return vellum::cli::tell_memory_is_exhausted();
  }
}
