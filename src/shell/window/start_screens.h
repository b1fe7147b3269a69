// What is shown when the program starts without a file: the splash, then the welcome wizard or a tip.
#pragma once

#include "shell/window/main_window.h"

namespace vellum {

/// Returns at once. Nothing of it comes while a message or another dialog is in front.
void show_start_screens(MainWindow& window);

/// Shows the welcome wizard, which begins with a command of the window.
void welcome(MainWindow& window);

}  // namespace vellum
