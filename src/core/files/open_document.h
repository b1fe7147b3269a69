// Opening a file: which reader, its message, and what the content really is.
#pragma once

#include <filesystem>
#include <optional>
#include <span>

#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

struct UncheckedImages;

/// Reads `path` into the window (which is empty). The extension picks the reader where it is that of a kind,
/// else the content. A healthy picture of another format (GIF, JPEG, ...) is offered as the image of a new
/// document that was never saved. On failure the message goes to the host ("Error reading file", with
/// the reason and what the content is below it) and the window is left for its owner to drop. With
/// `unchecked` many large images of a PNG or MNG may be left for its taker to look at
/// (core/files/unchecked_images.h).
bool open_document(DocumentWindow& window, const std::filesystem::path& path, Host& host,
                   UncheckedImages* unchecked = nullptr);

/// Who makes documents of files that are none, set by the programs: the parts of the house that do lie above
/// this one. Nothing where it doesn't know the file either; else as `open_document`.
inline std::optional<bool> (*importForeign)(DocumentWindow& window, const std::filesystem::path& path,
                                            std::span<const std::uint8_t> bytes, Host& host) = nullptr;

}  // namespace vellum
