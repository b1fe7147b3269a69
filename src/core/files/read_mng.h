// Reader of MNG files (MNG 1.0): control chunks with embedded PNG images.
#pragma once

#include <span>

#include "base/file.h"
#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

/// Reads an MNG file into the (empty) window. An embedded PNG (IHDR through IEND), with the FRAM and the DEFI
/// that are in force, becomes one PNGI record; JNG and delta images are kept as raw records. False on
/// failure, with the place and the reason given to the host; the caller reports. Wrong CRCs warn and never
/// fail.
/// Images keep their streams, which lie in `owner`; without one they are copied.
bool read_mng(DocumentWindow& window, std::span<const std::uint8_t> file, Host& host,
              std::shared_ptr<const FileContent> owner = nullptr);

struct UncheckedImages;

/// The same, but all images may be left for whoever takes `unchecked` to look at.
bool read_mng_unchecked(DocumentWindow& window, std::span<const std::uint8_t> file, Host& host,
                        std::shared_ptr<const FileContent> owner, UncheckedImages* unchecked);

}  // namespace vellum
