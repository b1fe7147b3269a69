#include "image/remap.h"

#include <algorithm>

namespace vellum {

std::uint32_t NearestPaletteIndex(std::uint32_t r, std::uint32_t g, std::uint32_t b, const Palette& palette,
                                  std::uint32_t count) {
  std::uint32_t best = 0, least = 0xFFFFFFFF;
  for (std::uint32_t i = 0; i < std::min(count, 256u); ++i) {
    const auto squared = [&](std::uint32_t value, std::size_t channel) {
      const int difference = static_cast<int>(value) - palette[3 * i + channel];
      return static_cast<std::uint32_t>(difference * difference);
    };
    const std::uint32_t distance = 3 * squared(r, 0) + 4 * squared(g, 1) + 2 * squared(b, 2);
    if (distance >= least) continue;
    least = distance;
    best = i;
  }
  return best;
}

}  // namespace vellum
