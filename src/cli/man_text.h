// The options and commands of the command-line tool as parts of its manual page.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace vellum::cli {

std::string man_text(const CLI::App& app);

}  // namespace vellum::cli
