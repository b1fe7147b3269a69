// One picture of any file that holds some.
#pragma once

#include <filesystem>

#include "image/graphic_file.h"

namespace vellum {

/// The picture of a file, of an animation or an MNG its first. `enough`: as in GraphicSwitches.
GraphicReading first_picture(const std::filesystem::path& file, std::uint32_t enough = 0);

}  // namespace vellum
