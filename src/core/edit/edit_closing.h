// What ends every change of a list.
#pragma once

#include "core/model/document.h"

namespace vellum {

/// Whether the header of the document counts such entries: PNGI, LOOP, ENDL and TERM of an MNG.
bool is_counted(DocumentKind kind, ChunkTag tag);

/// Renumbers, fits the header to the frames, lays the rows out, holds the caret inside the list and marks the
/// document as changed. `counted`: entries that the header counts came, went or moved; the counts and the
/// profile of an MHDR become 0 then, which means unknown. A default image that no longer has the header's
/// size is dropped.
void finish_edit(DocumentWindow& window, bool counted);

}  // namespace vellum
