// A document as JSON.
#pragma once

#include <string>

#include "core/model/document.h"

namespace vellum::cli {

/// An object {"kind", "width", "height", "entries": [...]}; each entry with "index" (from 1), "tag", "size",
/// "label", "text" and the fields of its tag; an image entry with width, height, x, y, delay_ms, dispose,
/// blend and bits; a WebP header with loopCount. "fields" of an entry are those that `vellum edit
/// --set-field` sets, under their names, texts as a whole. "notes": what reading changed or found missing. An
/// animated PNG whose default image is no frame has "defaultImage".
std::string document_json(const DocumentWindow& window);

}  // namespace vellum::cli
