// A picture file as it is: the picture, and beside it what the file says of transparency.
#pragma once

#include <filesystem>
#include <vector>

#include "image/graphic_file.h"

namespace vellum {

struct StillFile {
  GraphicReading reading;
  /// Of a picture below 32 bits, as PictureWithTransparency takes it; empty where all of it is opaque. PNG:
  /// its tRNS; GIF: the index of the first image's graphic control.
  std::vector<std::uint8_t> transparency;
  /// Entries of the color table that the file brings; 0 above 8 bits. What lies behind them in the picture's
  /// own table is black.
  std::uint32_t colors = 0;
};

/// Of an animation the first picture. That of a PNG has its stream for its source. Any number of threads may
/// read.
StillFile read_still_file(const std::filesystem::path& path, Part part = Part::Whole);

}  // namespace vellum
