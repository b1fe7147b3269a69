// A command of the command-line tool.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <span>

#include "base/host.h"

namespace vellum::cli {

/// Exit status of the program.
enum ExitStatus { kDone = 0, kFailed = 1, kWrongUsage = 2 };

/// What a command does once its options are parsed.
using Run = std::function<int(Host& host)>;

struct CommandRow {
  const char* name;
  const char* help;
  /// Adds the command's options to `app` and returns what runs it; the options live in the returned function.
  Run (*prepare)(CLI::App& app);
};

std::span<const CommandRow> command_table();

// One of these stands in each command's file.
Run prepare_list(CLI::App& app);
Run prepare_check(CLI::App& app);
Run prepare_repair(CLI::App& app);
Run prepare_convert(CLI::App& app);
Run prepare_save(CLI::App& app);
Run prepare_build(CLI::App& app);
Run prepare_play(CLI::App& app);
Run prepare_edit(CLI::App& app);
Run prepare_new(CLI::App& app);
Run prepare_properties(CLI::App& app);
Run prepare_manage(CLI::App& app);
Run prepare_strip(CLI::App& app);
Run prepare_unstrip(CLI::App& app);
Run prepare_palette(CLI::App& app);
Run prepare_config(CLI::App& app);
Run prepare_batch(CLI::App& app);
Run prepare_wizard(CLI::App& app);
Run prepare_plugins(CLI::App& app);
Run prepare_plugin(CLI::App& app);
Run prepare_combine(CLI::App& app);
Run prepare_favorites(CLI::App& app);
Run prepare_gallery(CLI::App& app);
Run prepare_movie_info(CLI::App& app);
Run prepare_thumbnail(CLI::App& app);

}  // namespace vellum::cli
