#include "operations/changed_parts.h"

#include <algorithm>
#include <cstring>

#include "image/picture_changes.h"
#include "image/picture_operations.h"

namespace vellum {
namespace {

/// Bytes of a row that hold pixels; the rest is padding.
std::size_t pixel_bytes(const Picture& picture) {
  return (std::size_t{picture.width()} * picture.bits() + 7) / 8;
}

/// Pixels around a byte that differs, held to the picture.
void widen(PictureRect& rect, const Picture& picture, std::size_t first, std::size_t last, std::int32_t y) {
  const std::size_t bits = picture.bits();
  const auto left = static_cast<std::int32_t>(first * 8 / bits);
  const auto right =
      static_cast<std::int32_t>(std::min<std::size_t>((last * 8 + 7) / bits + 1, picture.width()));
  rect = {std::min(rect.left, left), std::min(rect.top, y), std::max(rect.right, right),
          std::max(rect.bottom, y + 1)};
}

/// The rectangle around all bytes that differ; the first pixel where none does.
PictureRect changed_rect(const Picture& before, const Picture& after) {
  const auto width = static_cast<std::int32_t>(after.width()),
             height = static_cast<std::int32_t>(after.height());
  PictureRect rect{width, height, 0, 0};
  const std::size_t bytes = pixel_bytes(after);
  for (std::uint32_t y = 0; y < after.height(); ++y) {
    const std::uint8_t *a = before.row(y), *b = after.row(y);
    if (std::memcmp(a, b, bytes) == 0) continue;
    const auto first = static_cast<std::size_t>(std::mismatch(a, a + bytes, b).first - a);
    std::size_t last = bytes - 1;
    while (a[last] == b[last]) --last;
    widen(rect, after, first, last, static_cast<std::int32_t>(y));
  }
  return rect.right == 0 ? PictureRect{0, 0, 1, 1} : rect;
}

}  // namespace

FrameLayer changed_part(const Picture& before, const Picture& after) {
  const PictureRect rect = changed_rect(before, after);
  FrameLayer layer{.picture = PictureCrop(after, rect), .offset = {rect.left, rect.top}};
  const auto left = static_cast<std::uint32_t>(rect.left), top = static_cast<std::uint32_t>(rect.top);
  layer.over =
      layer.picture && layer.picture.bits() == 32 && leave_out_same(layer.picture, before, left, top);
  return layer;
}

}  // namespace vellum
