// The canvases that an optimized GIF shows, pixel for pixel, and rectangles in them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "exchange/gif_palette.h"
#include "image/picture.h"

namespace vellum::gif {

/// A pixel of a canvas: 0xFFRRGGBB, or 0 where it is empty.
using Pixel = std::uint32_t;

struct Canvas {
  std::uint32_t width = 0, height = 0;
  std::vector<Pixel> pixels;
  const Pixel* row(std::uint32_t y) const { return pixels.data() + std::size_t{y} * width; }
  Pixel* row(std::uint32_t y) { return pixels.data() + std::size_t{y} * width; }
};

/// The canvas with alpha all or nothing: empty up to `threshold`. 32 bits.
Canvas sharp_canvas(const Picture& picture, std::uint32_t threshold);

struct Rect {
  std::uint32_t left = ~0u, top = ~0u, right = 0, bottom = 0;
  bool empty() const { return left >= right; }
  std::uint32_t width() const { return right - left; }
  std::uint32_t height() const { return bottom - top; }
  void add(std::uint32_t from, std::uint32_t to, std::uint32_t y) {
    left = std::min(left, from), right = std::max(right, to);
    top = std::min(top, y), bottom = std::max(bottom, y + 1);
  }
  void add(const Rect& other) {
    if (other.empty()) return;
    left = std::min(left, other.left), right = std::max(right, other.right);
    top = std::min(top, other.top), bottom = std::max(bottom, other.bottom);
  }
};

/// Around all pixels of a part of the canvas for which `wanted(x, y)` holds.
template <class Wanted>
Rect rect_where(const Rect& part, const Wanted& wanted) {
  Rect rect;
  for (std::uint32_t y = part.top; y < part.bottom && !part.empty(); ++y) {
    std::uint32_t x = part.left, end = part.right;
    while (x < end && !wanted(x, y)) ++x;
    while (end > x && !wanted(end - 1, y)) --end;
    if (x < end) rect.add(x, end, y);
  }
  return rect;
}

inline Pixel color_of(const GifColors& colors, std::uint8_t index) {
  const std::uint8_t* color = &colors.palette[std::size_t{3} * index];
  return 0xFF000000u | Pixel{color[0]} << 16 | Pixel{color[1]} << 8 | color[2];
}

/// Squared, as matching counts it.
inline std::int32_t distance(Pixel a, Pixel b) {
  const auto part = [&](unsigned shift) {
    return static_cast<std::int32_t>(a >> shift & 255) - static_cast<std::int32_t>(b >> shift & 255);
  };
  return 3 * part(16) * part(16) + 4 * part(8) * part(8) + 2 * part(0) * part(0);
}

}  // namespace vellum::gif
