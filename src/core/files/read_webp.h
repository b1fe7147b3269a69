// Reader of WebP files.
#pragma once

#include <span>

#include "base/file.h"
#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

/// Reads a still or animated WebP file into the (empty) window: a WEBP document of a header and one entry a
/// frame, each the whole canvas while that frame is shown, and the chunks beside the images at their places.
/// False on failure, with the reason given to the host; the caller reports.
bool read_webp(DocumentWindow& window, std::span<const std::uint8_t> file, Host& host,
               std::shared_ptr<const FileContent> owner = nullptr);

}  // namespace vellum
