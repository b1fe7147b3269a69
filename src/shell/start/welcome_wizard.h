// The wizard of the first start: a few questions, and where to begin.
#pragma once

#include <QWidget>
#include <functional>

namespace vellum {

/// Shows the wizard; it doesn't wait. `run` is called with the number of the command that the user wants to
/// begin with, if any. Once it was shown it no longer comes by itself.
void show_welcome_wizard(QWidget* parent, std::function<void(int command)> run);

}  // namespace vellum
