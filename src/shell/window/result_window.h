// Commands whose result is a document of its own.
#pragma once

#include <functional>

#include "shell/window/main_window.h"

namespace vellum {

struct ResultTexts {
  StringId prefix;                                   ///< of the new document's name
  StringId failure = StringId::ErrorAccessingChunk;  ///< told beside what the work says of its fault
};

/// Works on a duplicate of the document. True when that shows in a new window on top, without a file name
/// chosen and unsaved. Otherwise nothing is left: a failure is told, and a stop of the user's beeps.
bool show_result(MainWindow& main, DocumentFrame& source, const ResultTexts& texts,
                 const std::function<bool(DocumentWindow& copy, Host& host)>& work);

}  // namespace vellum
