// The transparency editor.
#pragma once

#include "shell/services.h"

class QWidget;

namespace vellum {

/// Entry `index` is a tRNS. True: it changed.
bool edit_transparency(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services);

}  // namespace vellum
