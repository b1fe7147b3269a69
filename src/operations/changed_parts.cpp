#include "operations/changed_parts.h"

#include "image/picture_changes.h"

namespace vellum {
namespace {

/// The rectangle around all that differs; the first pixel where nothing does.
PictureRect changed_rect(const Picture& before, const Picture& after) {
  PictureRect rect{static_cast<std::int32_t>(after.width()), static_cast<std::int32_t>(after.height()), 0, 0};
  for (std::uint32_t y = 0; y < after.height(); ++y)
    add_changes(rect, y, before.row(y), after.row(y), after.width(), after.bits());
  return rect.right == 0 ? PictureRect{0, 0, 1, 1} : rect;
}

}  // namespace

FrameLayer changed_part(const Picture& before, const Picture& after) {
  const PictureRect rect = changed_rect(before, after);
  FrameLayer layer{.picture = PictureCrop(after, rect), .offset = {rect.left, rect.top}};
  layer.over = layer.picture && layer.picture.bits() == 32 &&
               leave_out_same(layer.picture, before, rect.left, rect.top);
  return layer;
}

}  // namespace vellum
