// What the commands that convert, extract and reconstruct ask for.
#pragma once

#include "operations/convert_colors.h"
#include "operations/extract_frames.h"
#include "operations/reconstruct.h"
#include "shell/list/document_frame.h"
#include "shell/services/services.h"

namespace vellum {

// All of them: nothing when the user cancelled. What the settings or a file of the dialog keep is stored at
// OK.

std::optional<ColorConversion> ask_for_black_and_white(QWidget* parent, const DocumentWindow& window,
                                                       Services& services);
/// Select Palette first, then how colors go into it.
std::optional<ColorConversion> ask_for_palette_color(QWidget* parent, const DocumentWindow& window,
                                                     Services& services);
/// Whether colors are dithered where they go into one palette.
std::optional<bool> ask_for_kind(QWidget* parent, const DocumentWindow& window, DocumentKind kind,
                                 Services& services);

struct StillChoice {
  std::size_t frame = 0;
  bool opaque = false;
};
std::optional<StillChoice> ask_for_still(QWidget* parent, const DocumentWindow& window, Services& services);

struct ReconstructChoice {
  CanvasDepth depth = CanvasDepth::AsNeeded;
  bool mergeEqual = false;
};
std::optional<ReconstructChoice> ask_for_reconstruct(QWidget* parent, const DocumentWindow& window,
                                                     Services& services);

std::optional<Extraction> ask_for_extraction(QWidget* parent, const DocumentWindow& window,
                                             Services& services);

/// JPEG quality, 1 to 100.
std::optional<int> ask_for_quality(QWidget* parent, Services& services);

}  // namespace vellum
