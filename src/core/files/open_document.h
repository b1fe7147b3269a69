// Opening a file: the reader by extension, its message, and what the content really is.
#pragma once

#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

/// Reads `path` into the window (which is empty). The extension alone picks the reader. On failure the stated
/// message goes to the host ("Error reading file", with the reason and what the content is below it) and the
/// window is left for its owner to drop.
bool open_document(DocumentWindow& window, const std::filesystem::path& path, Host& host);

}  // namespace vellum
