// Opening a file for who looks at its images anyway.
#pragma once

#include <filesystem>

#include "base/host.h"
#include "core/files/unchecked_images.h"
#include "core/model/document.h"

namespace vellum {

/// As `open_document` with `unchecked`, of a file about which there is nothing to tell and nothing to ask;
/// false, without a word, for any other. `host` is asked for nothing but whether to stop.
bool open_unchecked(DocumentWindow& window, const std::filesystem::path& path, UncheckedImages& unchecked,
                    const Host& host);

}  // namespace vellum
