// What is shown when the program starts without a file: the splash, then the welcome wizard or a tip.
#pragma once

#include <string>

#include "shell/window/main_window.h"

namespace vellum {

/// Returns at once. Nothing of it comes while a message or another dialog is in front.
void show_start_screens(MainWindow& window);

/// Shows the welcome wizard, which begins with a command of the window.
void welcome(MainWindow& window);

/// Says that the chosen theme can't be used, and why; nothing for an empty fault.
void tell_theme_fault(MainWindow& window, const std::string& fault);

}  // namespace vellum
