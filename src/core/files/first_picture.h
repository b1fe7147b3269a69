// One picture of any file that holds some.
#pragma once

#include <cstdint>
#include <filesystem>
#include <limits>

#include "image/graphic_file.h"

namespace vellum {

/// The picture of a file, of an animation or an MNG its first. `enough`: as in GraphicSwitches. One of more
/// than `most_pixels` is refused by its header, and nothing is decoded.
GraphicReading first_picture(const std::filesystem::path& file, std::uint32_t enough = 0,
                             std::uint64_t most_pixels = std::numeric_limits<std::uint64_t>::max());

}  // namespace vellum
