// Masks: 8 bits a pixel without color, as coverage of shapes and shadows.
#pragma once

#include <cstdint>
#include <vector>

#include "image/picture.h"

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

/// The alpha of a picture of 24 or 32 bits, with so many zeros around it.
Mask alpha_of(const Picture& picture, std::uint32_t room = 0);
/// Whether `alpha_of` gives the same of both.
bool same_alpha(const Picture& a, const Picture& b);

/// Three passes of a box of 2 * radius + 1 pixels in each direction, each mean rounded; what lies outside is
/// zero. Reaches 3 * radius pixels beyond a shape. Time doesn't depend on the radius.
void blur_mask(Mask& mask, std::uint32_t radius);

}  // namespace vellum
