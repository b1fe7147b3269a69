// The bytes that an entry stands for in a file.
#pragma once

#include <optional>
#include <vector>

#include "core/document.h"

namespace vellum {

/// The payload of an entry as it is written, texts deflated as the settings say. Empty for images and frame
/// controls, whose data the writers make, and for the header of a WebP.
std::optional<std::vector<std::uint8_t>> chunk_payload(const DocumentWindow& window, std::size_t index);

}  // namespace vellum
