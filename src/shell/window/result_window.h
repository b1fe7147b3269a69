// Commands whose result is a document of its own.
#pragma once

#include <functional>

#include "shell/window/main_window.h"

namespace vellum {

/// Works on a duplicate of the document. True when that shows in a new window on top, without a file name
/// chosen and unsaved. Otherwise nothing is left: the work told of its failure, and a stop of the user's
/// beeps.
bool show_result(MainWindow& main, DocumentFrame& source, StringId prefix,
                 const std::function<bool(DocumentWindow& copy, Host& host)>& work);

}  // namespace vellum
