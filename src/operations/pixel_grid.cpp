#include "operations/pixel_grid.h"

#include <algorithm>

#include "base/byte_order.h"
#include "image/picture_rows.h"

namespace vellum {

PixelGrid grid_of(const Picture& picture, bool colors, PixelGrid grid) {
  grid.width = picture.width();
  grid.height = picture.height();
  grid.pixels.resize(std::size_t{grid.width} * grid.height);
  const std::uint32_t bits = picture.bits();
  std::array<Colour, 256> table{};
  if (bits <= 8)
    for (std::uint32_t i = 0; i < picture.colours(); ++i) {
      const std::uint8_t* entry = picture.table() + 4 * i;
      table[i] = colors ? make_colour(entry[2], entry[1], entry[0], 255) : i;
    }
  for_each_row(grid.height, std::size_t{4} * grid.width, [&](std::uint32_t y) {
    const std::uint8_t* row = picture.row(y);
    Colour* out = grid.row(y);
    const std::size_t width = grid.width;
    if (bits == 32)
      for (std::size_t x = 0; x < width; ++x) out[x] = swap_red_and_blue(read_le32(row + 4 * x));
    else if (bits == 24)
      for (std::size_t x = 0; x < width; ++x)
        out[x] = make_colour(row[3 * x + 2], row[3 * x + 1], row[3 * x], colors ? 255 : 0);
    else
      for (std::size_t x = 0; x < width; ++x) out[x] = table[get_index(row, x, bits)];
  });
  return grid;
}

bool values_mean_the_same(const std::vector<Picture>& pictures) {
  if (pictures.empty()) return true;
  const Palette first = palette_of(pictures.front());
  return std::ranges::all_of(pictures, [&](const Picture& picture) {
    return picture.bits() == pictures.front().bits() && (picture.bits() > 8 || palette_of(picture) == first);
  });
}

}  // namespace vellum
