// What shells need to complete command lines of the tool, made of its commands and options.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace vellum::cli {

/// The text of the file that a shell reads: "bash", "zsh" or "fish"; empty for another one.
std::string completion_text(const CLI::App& app, const std::string& shell);

/// Tells the shells the words that an option takes.
void offer_words(CLI::Option& option, const std::vector<std::string>& words);

}  // namespace vellum::cli
