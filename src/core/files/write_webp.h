// Writer of WebP files.
#pragma once

#include "core/files/write_png.h"

namespace vellum {

/// Writes a document of any kind: with one image as a still file, with more as an animation. Documents of
/// other kinds are converted first; the window itself is not changed.
WriteResult write_webp(DocumentWindow& window, const Sink& sink, const SaveOptions& options, Host& host);

}  // namespace vellum
