// The palette editor.
#pragma once

#include "shell/editors/chunk_editor.h"

class QWidget;

namespace vellum {

/// Entry `index` is a PLTE, or an image of an MNG with a palette of its own.
Edited edit_palette(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services);

}  // namespace vellum
