// libpng as the judge of pixels.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace vellum::testing {

/// The image of a PNG file as libpng gives it: RGBA8, top row first, tRNS applied, high bytes of 16 bits,
/// wrong CRCs passed over. Empty when libpng refuses the file.
std::vector<std::uint8_t> rgba_by_libpng(const std::filesystem::path& path);

}  // namespace vellum::testing
