// The work of the image editor, without a window.
#pragma once

#include "base/host.h"
#include "core/edit/picture_fitting.h"
#include "core/model/document.h"

namespace vellum {

enum class Replaced { Done, Cancelled, Failed };

/// Gives an image entry another picture, as this document holds it: matched to its palette, promoted, or with
/// the header following (see core/edit/picture_fitting.h). Entries may come or go; `index` follows its entry.
/// Cancelled where the user was asked about colors. Failed when the picture is null or memory is exhausted.
Replaced replace_image(DocumentWindow& window, std::size_t& index, const Picture& picture, Host& host,
                       std::optional<PaletteChoice> choice = std::nullopt);

// Pictures of 24 or 32 bits; null when memory is exhausted.

/// 32 bits: pixels of this color (0x00BBGGRR) become transparent, the others keep their alpha.
Picture with_color_transparent(const Picture& picture, Colour color);
/// 32 bits with this alpha everywhere.
Picture with_alpha_level(const Picture& picture, std::uint8_t level);

/// The picture at the top left of a canvas of this size, cut off where it is larger; what it does not reach
/// is transparent at 32 bits, otherwise `ground` (an index in an indexed picture).
Picture padded_to(const Picture& picture, Extent size, Colour ground);

}  // namespace vellum
