// Pictures of the program's own windows, as its guide shows them.
#pragma once

#include "shell/window/start_up.h"

namespace vellum {

/// Opens the file, if one is named, writes the picture that the options ask for, and gives the exit status.
/// Nobody is asked: what would be asked or told goes to standard error.
int run_for_screenshot(const StartOptions& options, const std::string& themeFault);

}  // namespace vellum
