// Readers of PNG and animated PNG files.
#pragma once

#include <span>

#include "base/file.h"
#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

/// Reads a PNG file into the (empty) window: a PING document, or an APNG one when the file has an acTL in
/// front of its image and `APNGOpen` is on. False on failure, with the place and the reason given to the
/// host; the caller reports. Wrong CRCs warn and never fail.
/// Images keep their streams, which lie in `owner`; without one they are copied.
bool read_png(DocumentWindow& window, std::span<const std::uint8_t> file, Host& host,
              std::shared_ptr<const FileContent> owner = nullptr);

struct UncheckedImages;

/// The same, but the frames of an animation and a large still may be left for who takes `unchecked`.
bool read_png_unchecked(DocumentWindow& window, std::span<const std::uint8_t> file, Host& host,
                        std::shared_ptr<const FileContent> owner, UncheckedImages* unchecked);

}  // namespace vellum
