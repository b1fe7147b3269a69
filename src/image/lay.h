// Pictures laid over pictures, with straight alpha.
#pragma once

#include "image/mask.h"
#include "image/picture.h"

namespace vellum {

enum class Lay : std::uint8_t {
  Over,  ///< "over" of the PNG standard
  Atop,  ///< colors alone: the alpha of what lies below stays
};

/// Lays `top` (24 or 32 bits) with its left and top at (x, y) of `picture` (24 or 32 bits), clipped, with
/// this much of its opacity, in per cent. False when memory is exhausted, or for another depth.
bool lay_picture(Picture& picture, std::int64_t x, std::int64_t y, const Picture& top,
                 std::uint32_t percent = 100, Lay how = Lay::Over);

/// The same with a color whose alpha is the mask.
bool lay_mask(Picture& picture, std::int64_t x, std::int64_t y, const Mask& mask, Colour color,
              std::uint32_t percent = 100);
/// Takes away what lies under the mask: of 32 bits alpha, of others nothing.
bool erase_mask(Picture& picture, std::int64_t x, std::int64_t y, const Mask& mask);

/// One pixel of straight alpha over one of 32 bits: `color` is blue, green, red; `alpha` 1 to 255.
void lay_straight(std::uint8_t* out, const std::uint8_t* color, std::uint32_t alpha);

}  // namespace vellum
