// What the commands that write images as files ask for.
#pragma once

#include "operations/extract_frames.h"
#include "shell/list/document_frame.h"
#include "shell/services/services.h"

namespace vellum {

// All of them: nothing when the user cancelled. What the settings or a file of the dialog keep is stored at
// OK.

std::optional<Extraction> ask_for_extraction(QWidget* parent, const DocumentWindow& window,
                                             Services& services);

/// JPEG quality, 1 to 100.
std::optional<int> ask_for_quality(QWidget* parent, Services& services);

}  // namespace vellum
