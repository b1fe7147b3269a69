// The Select Palette dialog: built-in palettes, one computed from images, one from a file.
#pragma once

#include <QWidget>

#include "image/palette_file.h"
#include "shell/services/services.h"

namespace vellum {

struct SelectPaletteRequest {
  std::vector<Picture> pictures;  ///< that a palette is computed from; may be empty
  Picture preview;                ///< shown with the chosen colors; may be null
  std::uint32_t most = 256;       ///< colors that can be used
  bool quantize = false;          ///< opens at the palette that is computed
};

/// Nothing when the user cancelled.
std::optional<PaletteColors> select_palette(QWidget* parent, const SelectPaletteRequest& request,
                                            Services& services);

/// Asks for a palette file and reads it. Nothing when the user cancelled or was told why there is none.
std::optional<PaletteColors> choose_palette_file(Services& services);
/// Asks for a name and writes the colors.
void save_palette_file(Services& services, const PaletteColors& colors);

}  // namespace vellum
