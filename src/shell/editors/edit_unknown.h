// The editor of chunks that have none of their own: bytes, tag, and what both say.
#pragma once

#include "shell/editors/chunk_editor.h"

namespace vellum {

Edited edit_unknown(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services);

}  // namespace vellum
