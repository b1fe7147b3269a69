// Commands of `vellum` that are rows of operations: their options, and how they run.
#pragma once

#include "cli/command.h"
#include "operations/operation.h"

namespace vellum::cli {

/// Adds the options of the row to a command: one for each field, the compound ones, `--frames` where the row
/// has a scope, `--kind`, `--stored`.
Run prepare_operation(CLI::App& app, const Operation& operation);

}  // namespace vellum::cli
