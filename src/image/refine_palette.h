// A palette whose colors are moved to where the colors are that they stand for.
#pragma once

#include <cstdint>
#include <span>

#include "image/picture.h"

namespace vellum {

/// Pixels of nearly one color: how many, and the sums of their red, green and blue.
struct ColorSum {
  std::uint64_t count = 0;
  std::array<std::uint64_t, 3> sums{};

  ColorSum& operator+=(const ColorSum& other) {
    count += other.count;
    for (std::size_t c = 0; c < 3; ++c) sums[c] += other.sums[c];
    return *this;
  }
};
/// The mean of its pixels, rounded; there must be some.
std::array<std::uint8_t, 3> mean_of(const ColorSum& color);

/// Steps of k-means over the colors, by the distance that matching uses: each entry becomes the mean of those
/// that are nearest to it; one that stands for none goes where the error is largest. Means are those of the
/// stored values: in these matching is exact, and errors are counted.
void refine_palette(std::span<const ColorSum> colors, Palette& palette, std::uint32_t count);

}  // namespace vellum
