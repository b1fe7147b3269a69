// The pictures of all frames at a time: out of a document, into it, and in the colors of one palette.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "core/edit/document_colors.h"
#include "core/model/document.h"
#include "image/held_picture.h"

namespace vellum {

/// The pictures of all frames in true color with their transparency as alpha, and behind them the default
/// image that is no frame, where there is one. Nobody holds the rows of all of them.
std::vector<HeldPicture> shown_pictures(const DocumentWindow& window);

/// Gives every frame its picture (and the default image the one behind them), and the document, or each image
/// of an MNG, what it says about colors.
void put_frame_pictures(DocumentWindow& window, std::span<const HeldPicture> pictures,
                        const DocumentColors& colors);

/// The colors and alphas of true color pictures, where there are at most 256; transparent pixels are one.
std::optional<DocumentColors> exact_colors(std::span<const HeldPicture> pictures);

/// The palette and the transparency that all frames of an indexed document share.
std::optional<DocumentColors> shared_colors(const DocumentWindow& window);

/// True color pictures as indexes of these colors. Nothing when one has another color, or memory is
/// exhausted.
std::vector<HeldPicture> in_colors(std::span<const HeldPicture> pictures, const DocumentColors& colors);

}  // namespace vellum
