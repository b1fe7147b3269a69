// Documents of one kind as documents of another: each frame's record becomes one of the new kind.
#pragma once

#include "base/host.h"
#include "core/document.h"

namespace vellum {

/// Makes `to`, which is empty, a document of this kind with the images of `from`: pictures in true color with
/// the document's transparency as alpha, canvas and plays of the animation, and a delay for each frame.
/// Offset, disposal and blending are carried over where the kind can express them for all frames; otherwise
/// frames become the whole canvases that they make. Text and time chunks go along (WebP has none). False,
/// with the reason given to the host, when `from` has no frames, has several and `kind` is PING, or memory is
/// exhausted.
bool convert_document(const DocumentWindow& from, DocumentWindow& to, DocumentKind kind, Host& host);

}  // namespace vellum
