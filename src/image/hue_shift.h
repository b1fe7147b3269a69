// Hue, saturation and lightness of colors moved.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vellum {

/// Hue in turns, -0.5 to 0.5; the others as shares of the way to 1, or from 0 on of the way to 0: -1 to 1.
struct HueShift {
  double hue = 0, saturation = 0, lightness = 0;
};

/// Blue, green and red of one color. What is grey has no hue to be saturated with. Halves go up.
void shift_color(std::uint8_t* color, const HueShift& shift);

/// The same for each pixel of a row of 24 or 32 bits; alpha stays.
void shift_row(std::uint8_t* row, std::size_t width, std::size_t pixel_bytes, const HueShift& shift);

}  // namespace vellum
