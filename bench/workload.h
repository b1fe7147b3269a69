// Pictures and files to measure on, made from a fixed seed.
#pragma once

#include <vector>

#include "core/model/document.h"

namespace vellum::bench {

/// 24 or 32 bits: smooth areas, edges and some noise, as a photograph has them.
Picture photograph(std::uint32_t width, std::uint32_t height, std::uint32_t bits);
/// A still PNG file of 4000 x 3000 true-color pixels.
std::span<const std::uint8_t> large_still();
/// An animated PNG document of `frames` frames of 640 x 480, 32 bits.
DocumentWindow animation(std::size_t frames);
/// The same as a file.
std::span<const std::uint8_t> animation_file();
/// A list of this many text entries and one image.
DocumentWindow long_list(std::size_t entries);

}  // namespace vellum::bench
