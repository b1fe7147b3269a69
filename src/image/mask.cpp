#include "image/mask.h"

#include <algorithm>

namespace vellum {
namespace {

/// Means of `count` values that lie `step` apart, from `in` to `out`, which lies close.
void mean_of_boxes(const std::uint8_t* in, std::size_t step, std::uint8_t* out, std::uint32_t count,
                   std::uint32_t radius) {
  const std::uint32_t box = 2 * radius + 1;
  std::uint32_t sum = 0;
  for (std::uint32_t i = 0; i < std::min(radius, count); ++i) sum += in[i * step];
  for (std::uint32_t i = 0; i < count; ++i) {
    if (i + radius < count) sum += in[(i + radius) * step];
    out[i] = static_cast<std::uint8_t>((sum + box / 2) / box);
    if (i >= radius) sum -= in[(i - radius) * step];
  }
}

}  // namespace

void blur_mask(Mask& mask, std::uint32_t radius) {
  if (radius == 0 || mask.values.empty()) return;
  Mask turned(mask.height, mask.width);
  // A pass along the rows turns the mask, so that the next one runs along what were columns.
  for (int pass = 0; pass < 6; ++pass) {
    for (std::uint32_t x = 0; x < mask.width; ++x)
      mean_of_boxes(mask.values.data() + x, mask.width, turned.row(x), mask.height, radius);
    std::swap(mask, turned);
  }
}

}  // namespace vellum
