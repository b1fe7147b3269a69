// The settings of the batch processor: what a run does, and what stands in front of the names of its results.
#pragma once

#include "shell/services/services.h"

class QWidget;

namespace vellum {

/// Shows them; OK stores them. Whether they were changed.
bool edit_batch_settings(Services& services, QWidget* parent);

}  // namespace vellum
