// Pictures of another size or the other way round. The depth stays.
#include <cstring>

#include "base/limits.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

/// Turns the order of the pixels of a row of 8, 24 or 32 bits.
template <std::size_t size>
void mirror_row(std::uint8_t* out, const std::uint8_t* in, std::size_t width) {
  for (std::size_t x = 0; x < width; ++x) std::memcpy(out + size * x, in + size * (width - 1 - x), size);
}

void mirror_packed_row(std::uint8_t* out, const std::uint8_t* in, std::size_t width, std::uint32_t bits) {
  std::uint8_t packed[kPixelRun];
  std::uint8_t indices[kPixelRun];
  for (std::size_t x = 0; x < width; x += kPixelRun) {
    const std::size_t count = std::min(kPixelRun, width - x);
    copy_pixels(packed, 0, in, width - x - count, count, bits);
    unpack_indices(indices, packed, 0, count, bits);
    std::reverse(indices, indices + count);
    pack_indices(out, x, indices, count, bits);
  }
}

void mirror_row_of(std::uint8_t* out, const std::uint8_t* in, std::size_t width, std::uint32_t bits) {
  switch (bits) {
    case 8:
      return mirror_row<1>(out, in, width);
    case 24:
      return mirror_row<3>(out, in, width);
    case 32:
      return mirror_row<4>(out, in, width);
    default:
      return mirror_packed_row(out, in, width, bits);
  }
}

/// A canvas of the picture's depth and palette, every pixel `colour`.
Picture filled_canvas(const Picture& picture, std::uint32_t width, std::uint32_t height, Colour colour) {
  const Palette palette = palette_of(picture);
  Picture result = create_rows(width, height, &palette, picture.bits());
  if (!result) return result;
  const EditRows rows(result);
  for_each_row(height, rows.stride,
               [&](std::uint32_t y) { fill_pixels(rows[y], 0, width, result.bits(), colour); });
  return result;
}

}  // namespace

Picture PictureCrop(const Picture& picture, const PictureRect& rect) {
  if (!has_rows(picture)) return {};
  const std::int64_t width = std::int64_t{rect.right} - rect.left,
                     height = std::int64_t{rect.bottom} - rect.top;
  if (width <= 0 || height <= 0 || width > kMaximumDimension || height > kMaximumDimension) return {};
  const bool inside = rect.left >= 0 && rect.top >= 0 && rect.right <= std::int64_t{picture.width()} &&
                      rect.bottom <= std::int64_t{picture.height()};
  const Palette palette = palette_of(picture);
  const auto w = static_cast<std::uint32_t>(width), h = static_cast<std::uint32_t>(height);
  Picture result =
      inside ? create_rows(w, h, &palette, picture.bits()) : filled_canvas(picture, w, h, 0xFFFFFFFF);
  if (result)
    PictureBlit(result, 0, 0, picture, rect.left, rect.top, static_cast<std::int32_t>(w),
                static_cast<std::int32_t>(h));
  return result;
}

Picture PictureExtendCanvas(const Picture& picture, std::uint32_t width, std::uint32_t height, std::int32_t x,
                            std::int32_t y, Colour colour) {
  if (!has_rows(picture)) return {};
  Picture result = filled_canvas(picture, width, height, colour);
  if (result)
    PictureBlit(result, x, y, picture, 0, 0, static_cast<std::int32_t>(picture.width()),
                static_cast<std::int32_t>(picture.height()));
  return result;
}

Picture PictureMirrorHorizontal(const Picture& picture) {
  if (!has_rows(picture)) return {};
  const Palette palette = palette_of(picture);
  Picture result = create_rows(picture.width(), picture.height(), &palette, picture.bits());
  if (!result) return result;
  const EditRows rows(result);
  for_each_row(picture.height(), rows.stride, [&](std::uint32_t y) {
    mirror_row_of(rows[y], picture.row(y), picture.width(), picture.bits());
  });
  return result;
}

Picture PictureMirrorVertical(const Picture& picture) {
  if (!has_rows(picture)) return {};
  const Palette palette = palette_of(picture);
  Picture result = create_rows(picture.width(), picture.height(), &palette, picture.bits());
  if (!result) return result;
  const EditRows rows(result);
  for_each_row(picture.height(), rows.stride, [&](std::uint32_t y) {
    copy_pixels(rows[picture.height() - 1 - y], 0, picture.row(y), 0, picture.width(), picture.bits());
  });
  return result;
}

}  // namespace vellum
