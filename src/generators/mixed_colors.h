// Colors between colors.
#pragma once

#include <algorithm>
#include <cmath>

#include "image/picture.h"

namespace vellum {

/// A color between two of them: 0 is the first one, 1 the second.
inline Colour mixed(Colour from, Colour to, double share) {
  const auto channel = [&](std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint32_t>(std::lround(a + (b - a) * std::clamp(share, 0.0, 1.0)));
  };
  return make_colour(channel(red_of(from), red_of(to)), channel(green_of(from), green_of(to)),
                     channel(blue_of(from), blue_of(to)));
}

}  // namespace vellum
