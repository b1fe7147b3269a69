// Pictures as the outside world compares them.
#pragma once

#include <string>

#include "image/picture.h"

namespace vellum::testing {

/// Red, green, blue, alpha of every pixel from the top left: indexed ones through the table, 255 without
/// alpha.
inline std::string rgba_of(const Picture& picture) {
  std::string bytes;
  if (!picture) return bytes;
  Palette palette;
  const bool indexed = PictureGetPalette(picture, palette) > 0;
  bytes.reserve(4 * std::size_t{picture.width()} * picture.height());
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    for (std::uint32_t x = 0; x < picture.width(); ++x) {
      Colour value = PictureGetPixelOpaque(picture, x, y);
      if (indexed)
        value = make_colour(palette[3 * value], palette[3 * value + 1], palette[3 * value + 2], 255);
      for (int i = 0; i < 4; ++i) bytes += static_cast<char>(value >> (8 * i));
    }
  return bytes;
}

/// The greatest difference of two channels; 256 when the sizes differ.
inline int greatest_difference(const std::string& a, const std::string& b) {
  if (a.size() != b.size() || a.empty()) return 256;
  int most = 0;
  for (std::size_t i = 0; i < a.size(); ++i)
    most = std::max(most, std::abs(static_cast<std::uint8_t>(a[i]) - static_cast<std::uint8_t>(b[i])));
  return most;
}

}  // namespace vellum::testing
