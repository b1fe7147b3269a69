// Deleting chunks.
#pragma once

#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

/// Deletes the selected entries, an undo level first. Several are asked about in one question that lists what
/// goes and what stays (fixed chunks) and tells of a still picture's IDAT and a paletted header's PLTE; of a
/// single one, or where that question is switched off, the warnings tell. Of an image that is not understood
/// only all chunks together go, by the first of them. False when nothing was deleted.
bool delete_selected(DocumentWindow& window, Host& host);

/// The same for marked entries (one mark an entry), without the question and without an undo level.
bool delete_marked(DocumentWindow& window, std::vector<bool> marks, Host& host);

}  // namespace vellum
