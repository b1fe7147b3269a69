// A picture as one number a pixel, for passes that compare frames of any depth with each other.
#pragma once

#include <vector>

#include "image/picture.h"

namespace vellum {

struct PixelGrid {
  std::uint32_t width = 0, height = 0;
  std::vector<Colour> pixels;

  Colour* row(std::uint32_t y) { return pixels.data() + std::size_t{y} * width; }
  const Colour* row(std::uint32_t y) const { return pixels.data() + std::size_t{y} * width; }
  bool holds(std::int64_t x, std::int64_t y) const { return x >= 0 && y >= 0 && x < width && y < height; }
};

/// The values that PictureGetPixel gives; with `colors` what they mean, 0xAABBGGRR, opaque below 32 bits.
/// `memory`: a grid that is no longer wanted.
PixelGrid grid_of(const Picture& picture, bool colors, PixelGrid memory = {});

/// Whether equal values mean equal colors in all of the pictures: one depth, one color table.
bool values_mean_the_same(const std::vector<Picture>& pictures);

}  // namespace vellum
