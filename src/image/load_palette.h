// The colors of any file that has some.
#pragma once

#include <filesystem>
#include <optional>

#include "base/host.h"
#include "image/palette_file.h"

namespace vellum {

/// The colors of a file of palettes or, failing that, of a picture. Nothing, after the user was told, when
/// there are none.
std::optional<PaletteColors> load_palette(const std::filesystem::path& path, Host& host);

}  // namespace vellum
