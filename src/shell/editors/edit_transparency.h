// The transparency editor.
#pragma once

#include "shell/editors/chunk_editor.h"

class QWidget;

namespace vellum {

/// Entry `index` is a tRNS. True: it changed.
Edited edit_transparency(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services);

}  // namespace vellum
