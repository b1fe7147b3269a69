// Palettes whose colors are moved to where the pixels are.
#include "image/refine_palette.h"

#include <gtest/gtest.h>

#include <random>

#include "image/quantize.h"

namespace vellum {
namespace {

/// Squared distances of all pixels to their nearest colors.
std::uint64_t error_of(const Picture& picture, const Palette& palette, std::uint32_t count) {
  std::uint64_t sum = 0;
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    for (std::uint32_t x = 0; x < picture.width(); ++x) {
      const std::uint8_t* pixel = picture.row(y) + 3 * x;
      int least = INT32_MAX;
      for (std::uint32_t i = 0; i < count; ++i) {
        int error = 0;
        for (std::size_t c = 0; c < 3; ++c) {
          const int difference = palette[3 * i + c] - pixel[2 - c];
          error += difference * difference;
        }
        least = std::min(least, error);
      }
      sum += static_cast<std::uint64_t>(least);
    }
  return sum;
}

TEST(Quantize, TheBestColorsAreNearerToThePixels) {
  std::mt19937 random(5);
  for (const std::uint32_t target : {4u, 16u, 60u, 256u}) {
    Picture picture = PictureCreate(90, 70, nullptr, 24);
    for (std::uint32_t y = 0; y < 70; ++y)
      for (std::uint32_t x = 0; x < 90; ++x)
        PicturePutPixel(picture, x, y, make_colour(x * 2 + random() % 30, y * 3 + random() % 9, (x ^ y) * 2));
    ColorOctree octree;
    octree.add(picture);
    Palette plain, best;
    const std::uint32_t count = octree.palette(target, plain), better = octree.palette(target, best, true);
    EXPECT_LE(better, target);
    EXPECT_GE(better, count);
    EXPECT_LT(error_of(picture, best, better), error_of(picture, plain, count)) << target;
  }
}

}  // namespace
}  // namespace vellum
