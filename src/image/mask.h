// Masks: 8 bits a pixel without color, as coverage of shapes and shadows.
#pragma once

#include <cstdint>
#include <vector>

namespace vellum {

/// Rows from the top, without padding.
struct Mask {
  std::uint32_t width = 0, height = 0;
  std::vector<std::uint8_t> values;

  Mask() = default;
  /// All zero.
  Mask(std::uint32_t wide, std::uint32_t high)
      : width(wide), height(high), values(std::size_t{wide} * high) {}
  std::uint8_t* row(std::uint32_t y) { return values.data() + std::size_t{y} * width; }
  const std::uint8_t* row(std::uint32_t y) const { return values.data() + std::size_t{y} * width; }
};

/// Three passes of a box of 2 * radius + 1 pixels in each direction, each mean rounded; what lies outside is
/// zero. Reaches 3 * radius pixels beyond a shape. Time doesn't depend on the radius.
void blur_mask(Mask& mask, std::uint32_t radius);

}  // namespace vellum
