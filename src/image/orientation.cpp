#include "image/orientation.h"

#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

/// Side of the squares in which a picture is transposed: both their rows and their columns stay in the cache.
constexpr std::uint32_t kSquare = 32;

/// Column x becomes row x.
template <std::size_t size>
Picture transposed(const Picture& picture) {
  const std::uint32_t width = picture.width(), height = picture.height();
  const Palette palette = palette_of(picture);
  Picture result = create_rows(height, width, &palette, picture.bits());
  if (!result) return result;
  const EditRows rows(result);
  const std::uint32_t strips = (width + kSquare - 1) / kSquare;
  for_each_row(strips, kSquare * rows.stride, [&](std::uint32_t strip) {
    const std::uint32_t left = strip * kSquare, right = std::min(left + kSquare, width);
    for (std::uint32_t top = 0; top < height; top += kSquare)
      for (std::uint32_t y = top; y < std::min(top + kSquare, height); ++y) {
        const std::uint8_t* in = picture.row(y);
        for (std::uint32_t x = left; x < right; ++x) std::copy_n(in + size * x, size, rows[x] + size * y);
      }
  });
  return result;
}

/// The same for 1 and 4 bits.
Picture transposed_packed(const Picture& picture) {
  const std::uint32_t width = picture.width(), height = picture.height(), bits = picture.bits();
  const Palette palette = palette_of(picture);
  Picture result = create_rows(height, width, &palette, bits);
  if (!result) return result;
  const EditRows rows(result);
  for (std::uint32_t y = 0; y < height; ++y)
    for_each_index_run(picture.row(y), width, bits,
                       [&](std::size_t x, const std::uint8_t* indices, std::size_t count) {
                         for (std::size_t i = 0; i < count; ++i) put_index(rows[x + i], y, bits, indices[i]);
                       });
  return result;
}

Picture any_transposed(const Picture& picture) {
  switch (picture.bits()) {
    case 8:
      return transposed<1>(picture);
    case 24:
      return transposed<3>(picture);
    case 32:
      return transposed<4>(picture);
    default:
      return transposed_packed(picture);
  }
}

}  // namespace

Picture oriented(const Picture& picture, int orientation) {
  Picture result = picture;
  if (swaps_sides(orientation)) result = any_transposed(picture);
  // What is left after the transposition is one mirror, both or none.
  const bool across = orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7;
  const bool down = orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8;
  if (across) result = PictureMirrorHorizontal(result);
  return down ? PictureMirrorVertical(result) : result;
}

}  // namespace vellum
