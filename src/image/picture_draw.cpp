// Drawing into a picture.
#include <cassert>
#include <optional>

#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

/// The part of a picture that is drawn, not empty and inside it.
struct Area {
  std::uint32_t x, y, width, height;
};

std::optional<Area> clipped(const Picture& picture, std::int64_t x, std::int64_t y, std::int64_t width,
                            std::int64_t height) {
  const std::int64_t left = std::max<std::int64_t>(x, 0), top = std::max<std::int64_t>(y, 0);
  const std::int64_t right = std::min<std::int64_t>(x + width, picture.width());
  const std::int64_t bottom = std::min<std::int64_t>(y + height, picture.height());
  if (left >= right || top >= bottom) return std::nullopt;
  return Area{static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(top),
              static_cast<std::uint32_t>(right - left), static_cast<std::uint32_t>(bottom - top)};
}

void fill(Picture& picture, std::int64_t x, std::int64_t y, std::int64_t width, std::int64_t height,
          Colour colour) {
  const auto area = clipped(picture, x, y, width, height);
  if (!area) return;
  const EditRows rows(picture);
  if (!rows) return;
  for (std::uint32_t i = 0; i < area->height; ++i)
    fill_pixels(rows[area->y + i], area->x, area->width, picture.bits(), colour);
}

}  // namespace

void PictureBlit(Picture& dst, std::int32_t dst_x, std::int32_t dst_y, const Picture& src, std::int32_t src_x,
                 std::int32_t src_y, std::int32_t width, std::int32_t height) {
  if (!has_rows(dst) || !has_rows(src)) return;
  assert(dst.bits() == src.bits());
  const Picture source = src;  // keeps what is read apart when both are one picture
  const std::int64_t shift_x = std::int64_t{dst_x} - src_x, shift_y = std::int64_t{dst_y} - src_y;
  const auto from = clipped(source, src_x, src_y, width, height);
  if (!from) return;
  const auto to = clipped(dst, from->x + shift_x, from->y + shift_y, from->width, from->height);
  if (!to) return;
  const EditRows rows(dst);
  if (!rows) return;
  const auto x = static_cast<std::uint32_t>(to->x - shift_x), y = static_cast<std::uint32_t>(to->y - shift_y);
  if (dst.bits() == source.bits()) {
    for_each_row(to->height, rows.stride, [&](std::uint32_t i) {
      copy_pixels(rows[to->y + i], to->x, source.row(y + i), x, to->width, source.bits());
    });
    return;
  }
  for (std::uint32_t i = 0; i < to->height; ++i)
    for (std::uint32_t k = 0; k < to->width; ++k)
      PicturePutPixel(dst, to->x + k, to->y + i, PictureGetPixel(source, x + k, y + i));
}

void PictureFillRect(Picture& picture, std::int32_t x, std::int32_t y, std::int32_t width,
                     std::int32_t height, Colour colour) {
  if (has_rows(picture)) fill(picture, x, y, width, height, colour);
}

void PictureFrameRect(Picture& picture, std::int32_t x, std::int32_t y, std::int32_t width,
                      std::int32_t height, Colour colour, std::int32_t thickness) {
  if (!has_rows(picture) || width <= 0 || height <= 0 || thickness <= 0) return;
  const std::int64_t left = x, top = y, border = thickness;
  if (2 * border >= width || 2 * border >= height) return fill(picture, left, top, width, height, colour);
  fill(picture, left, top, width, border, colour);
  fill(picture, left, top + height - border, width, border, colour);
  fill(picture, left, top + border, border, height - 2 * border, colour);
  fill(picture, left + width - border, top + border, border, height - 2 * border, colour);
}

}  // namespace vellum
