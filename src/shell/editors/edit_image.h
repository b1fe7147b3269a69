// The image editor.
#pragma once

#include "shell/editors/chunk_editor.h"

namespace vellum {

/// Picture, place and delay of an image entry, with all that can be done to one picture.
Edited edit_image(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services);

}  // namespace vellum
