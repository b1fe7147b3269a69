// A generator as a command: "vellum spin -o OUT FILE".
#pragma once

#include "cli/command.h"
#include "generators/generator.h"

namespace vellum::cli {

Run prepare_generator(CLI::App& app, const Generator& generator);

}  // namespace vellum::cli
