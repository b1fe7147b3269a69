// A picture edited in another program.
#pragma once

#include <QWidget>
#include <optional>

#include "shell/services/services.h"

namespace vellum {

/// Hands the picture to the chosen paint program, or to the desktop's own for its type, and waits until the
/// user says that it is done. Nothing when that was cancelled, or after a message when the program did not
/// start or left no picture behind.
std::optional<Picture> paint_elsewhere(QWidget* parent, const Picture& picture, Services& services);

}  // namespace vellum
