// The View command: a document in the viewer of its kind.
#pragma once

#include "shell/services/services.h"

class QWidget;

namespace vellum {

/// Shows the document until its viewer is closed. `whole_frames`: a temporary document is shown whose frames
/// are whole canvases, so that no rule of its kind about what lies below a frame makes a difference. False,
/// after a message, when that can't be made.
bool view_document(const DocumentWindow& window, bool whole_frames, Services& services, QWidget* parent);

}  // namespace vellum
