// Opening a file: which reader, its message, and what the content really is.
#pragma once

#include <filesystem>
#include <optional>
#include <span>

#include "base/file.h"
#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

struct UncheckedImages;

/// Files from this size on are mapped by who is done with them soon: a copy would cost more than it is worth.
inline constexpr std::uint64_t kWorthPassing = std::uint64_t{4} << 20;
/// The same for all that are opened; a program that opens one file, and ends, sets it to that.
inline std::uint64_t worthMapping = kWorthMapping;

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
