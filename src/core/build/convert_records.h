// Documents of one kind as documents of another: each frame's record becomes one of the new kind.
#pragma once

#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

/// Makes `to`, which is empty, a document of this kind with the images of `from`, through the three calls of
/// `build_animation.h`: canvas and plays of the animation, delays exact where the kind can tell them (a WebP
/// carries what it rounds to the next frame), loops inside an MNG written out. Indexed pictures stay what
/// they are where each frame can have its palette, or all have the same; others become true color with their
/// transparency as alpha. Offset, disposal and blending are carried over where the kind can express them for
/// all frames; otherwise frames become the whole canvases that they make. What tells of the document goes
/// along as the kind can hold it (core/build/carried_chunks.h). The name of `to` gets the extension of the
/// kind. False, with the reason given to the host unless the user stopped it, when `from` has no frames, has
/// several and `kind` is PING, or memory is exhausted.
bool convert_document(const DocumentWindow& from, DocumentWindow& to, DocumentKind kind, Host& host);

/// How many text chunks a document of this kind can't keep.
std::size_t texts_lost(const DocumentWindow& from, DocumentKind kind);

/// Makes `to`, which is empty, a still PNG of this picture with the text and time chunks of `from`. `table`:
/// its transparency, by index. False when memory is exhausted.
bool make_still(DocumentWindow& to, const DocumentWindow& from, const Picture& picture,
                const std::vector<std::uint8_t>& table = {});

}  // namespace vellum
