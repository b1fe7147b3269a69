// Whole PNG files and pictures.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "image/picture.h"

namespace vellum {

/// Null on failure.
Picture read_png_picture(std::span<const std::uint8_t> file);
/// The header-only picture that describes the file.
Picture read_png_information(std::span<const std::uint8_t> file);
/// A whole file; empty on failure. `level` 0 to 9.
std::vector<std::uint8_t> encode_png_picture(const Picture& picture, int level);

}  // namespace vellum
