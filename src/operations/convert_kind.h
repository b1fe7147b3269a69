// A document as one of another kind.
#pragma once

#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

struct KindConversion {
  DocumentKind kind = DocumentKind::APNG;
  bool dither = false;  ///< where palettes of an MNG become one with fewer colors
};

/// Makes `to`, which is empty, that document (see `convert_document`). Images of an MNG with palettes of
/// their own get one palette together in an animated PNG: exactly, where all have at most 256 colors and
/// alphas; with 256 computed colors, one of them transparent, where none is half transparent; and true color
/// otherwise. Texts that a WebP can't keep are told. False, with the reason given to the host unless the user
/// stopped it; nothing is then left of it.
bool convert_kind(const DocumentWindow& from, DocumentWindow& to, const KindConversion& conversion,
                  Host& host);

}  // namespace vellum
