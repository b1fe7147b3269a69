// Rectangles of pictures.
#pragma once

#include <algorithm>

#include "image/picture_operations.h"

namespace vellum {

/// Pixels; 0 or less where there are none.
constexpr std::int32_t width_of(const PictureRect& rect) { return rect.right - rect.left; }
constexpr std::int32_t height_of(const PictureRect& rect) { return rect.bottom - rect.top; }

/// The smallest one around both, of which either may be empty.
constexpr PictureRect joined(const PictureRect& a, const PictureRect& b) {
  if (width_of(a) <= 0 || height_of(a) <= 0) return b;
  if (width_of(b) <= 0 || height_of(b) <= 0) return a;
  return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
          std::max(a.bottom, b.bottom)};
}

}  // namespace vellum
