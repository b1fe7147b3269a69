// Options whose value is one of some words.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "base/translation.h"

namespace vellum::cli {

/// Puts what a word stands for, in any case, in its place. `forms` names the words for people:
/// "apng|mng|webp".
template <class Words>
CLI::Validator one_of(const Words& words, const std::string& forms) {
  const CLI::CheckedTransformer transform(words, CLI::ignore_case);
  return CLI::Validator(
      [transform, forms](std::string& input) {
        std::string taken = input;
        // What the library would say names the numbers behind the words.
        if (!transform(taken).empty()) return '"' + input + translated("\" is none of ") + forms;
        input = taken;
        return std::string();
      },
      forms, "");
}

}  // namespace vellum::cli
