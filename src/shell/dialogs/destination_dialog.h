// The folder that a batch run writes to.
#pragma once

#include <QString>
#include <optional>

#include "shell/services/services.h"

class QWidget;

namespace vellum {

/// Begins with `BatchProcessorDestPath`, which keeps what was chosen. Nothing when the user cancelled.
std::optional<QString> choose_destination(Services& services, QWidget* parent);

}  // namespace vellum
