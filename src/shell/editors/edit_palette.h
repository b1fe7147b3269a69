// The palette editor.
#pragma once

#include "shell/services.h"

class QWidget;

namespace vellum {

/// Entry `index` is a PLTE, or an image of an MNG with a palette of its own. True: the document changed.
bool edit_palette(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services);

}  // namespace vellum
