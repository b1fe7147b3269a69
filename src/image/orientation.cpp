#include "image/orientation.h"

#include <cstring>

#include "image/lanes.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

/// Side of the squares in which a picture is transposed: both their rows and their columns stay in the cache.
constexpr std::uint32_t kSquare = 32;

/// Four pixels of 32 bits of each of four rows, as columns.
void transpose_four(const std::uint8_t* const (&from)[4], std::uint8_t* const (&to)[4]) {
  Lanes4 rows[4], pairs[4];
  for (std::size_t i = 0; i < 4; ++i) std::memcpy(&rows[i], from[i], sizeof rows[i]);
  for (std::size_t i = 0; i < 2; ++i) {
    pairs[2 * i] = __builtin_shufflevector(rows[2 * i], rows[2 * i + 1], 0, 4, 1, 5);
    pairs[2 * i + 1] = __builtin_shufflevector(rows[2 * i], rows[2 * i + 1], 2, 6, 3, 7);
  }
  for (std::size_t i = 0; i < 2; ++i) {
    const Lanes4 first = __builtin_shufflevector(pairs[i], pairs[i + 2], 0, 1, 4, 5),
                 second = __builtin_shufflevector(pairs[i], pairs[i + 2], 2, 3, 6, 7);
    std::memcpy(to[2 * i], &first, sizeof first);
    std::memcpy(to[2 * i + 1], &second, sizeof second);
  }
}

/// Column x becomes row x; then what is left and what is right changes places, and what is up and what is
/// down.
template <std::size_t size>
Picture transposed(const Picture& picture, bool across, bool down) {
  const std::uint32_t width = picture.width(), height = picture.height();
  const Palette palette = palette_of(picture);
  Picture result = create_rows(height, width, &palette, picture.bits());
  if (!result) return result;
  const EditRows rows(result);
  const auto in = [&](std::uint32_t y) { return picture.row(across ? height - 1 - y : y); };
  const auto out = [&](std::uint32_t x) { return rows[down ? width - 1 - x : x]; };
  const auto by_pixels = [&](std::uint32_t y, std::uint32_t x, std::uint32_t right) {
    for (const std::uint8_t* row = in(y); x < right; ++x)
      std::copy_n(row + size * x, size, out(x) + size * y);
  };
  const auto by_fours = [&](std::uint32_t y, std::uint32_t x, std::uint32_t right) {
    const std::uint8_t* const from[] = {in(y), in(y + 1), in(y + 2), in(y + 3)};
    for (; x + 4 <= right; x += 4)
      transpose_four({from[0] + 4 * x, from[1] + 4 * x, from[2] + 4 * x, from[3] + 4 * x},
                     {out(x) + 4 * y, out(x + 1) + 4 * y, out(x + 2) + 4 * y, out(x + 3) + 4 * y});
    for (std::uint32_t i = 0; i < 4; ++i) by_pixels(y + i, x, right);
  };
  const std::uint32_t strips = (width + kSquare - 1) / kSquare;
  for_each_row(strips, kSquare * rows.stride, [&](std::uint32_t strip) {
    const std::uint32_t left = strip * kSquare, right = std::min(left + kSquare, width);
    std::uint32_t y = 0;
    if constexpr (size == 4)
      for (; y + 4 <= height; y += 4) by_fours(y, left, right);
    for (; y < height; ++y) by_pixels(y, left, right);
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

Picture any_transposed(const Picture& picture, bool across, bool down) {
  if (picture.bits() == 8) return transposed<1>(picture, across, down);
  if (picture.bits() == 24) return transposed<3>(picture, across, down);
  return transposed<4>(picture, across, down);
}

}  // namespace

Picture oriented(const Picture& picture, int orientation) {
  // What is left after the transposition is one mirror, both or none.
  const bool across = orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7;
  const bool down = orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8;
  if (swaps_sides(orientation) && picture.bits() >= 8) return any_transposed(picture, across, down);
  Picture result = picture;
  if (swaps_sides(orientation)) result = transposed_packed(picture);
  if (across) result = PictureMirrorHorizontal(result);
  return down ? PictureMirrorVertical(result) : result;
}

}  // namespace vellum
