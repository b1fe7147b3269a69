// Writer of WebP files.
#pragma once

#include "core/files/write_png.h"

namespace vellum {

/// Writes a document of any kind: with one image as a still file, with more as an animation. Documents of
/// other kinds are converted first; the window itself is not changed. `quality`, 0 to 100, counts where
/// `WEBPLossless` is off. What stood at `path` before survives any failure.
WriteResult write_webp(const DocumentWindow& window, const std::filesystem::path& path, int quality,
                       Host& host);

}  // namespace vellum
