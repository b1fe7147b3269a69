// Pictures of another depth: true color, true color with alpha, grey.
#include <array>

#include "base/byte_order.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

/// A color table as little-endian pixels: blue, green, red, alpha from the low byte up.
using PixelTable = std::array<std::uint32_t, 256>;

PixelTable opaque_table(const Picture& picture) {
  PixelTable table{};
  for (std::uint32_t i = 0; i < picture.colours(); ++i)
    table[i] = read_le32(picture.table() + 4 * i) | 0xFF000000;
  return table;
}

/// Writes `count` pixels of 3 bytes, each as 4 bytes of which the next pixel overwrites the last; the last
/// pixel of all is written alone.
template <class Source>
void write_24(std::uint8_t* out, std::size_t count, const Source& pixel) {
  for (std::size_t x = 0; x + 1 < count; ++x) write_le32(out + 3 * x, pixel(x));
  const std::uint32_t last = pixel(count - 1);
  write_le16(out + 3 * (count - 1), last);
  out[3 * count - 1] = static_cast<std::uint8_t>(last >> 16);
}

template <class Source>
void write_32(std::uint8_t* out, std::size_t count, const Source& pixel) {
  for (std::size_t x = 0; x < count; ++x) write_le32(out + 4 * x, pixel(x));
}

/// Indexed pixels through a table into rows of 24 or 32 bits.
Picture through_table(const Picture& picture, const PixelTable& table, std::uint32_t depth) {
  Picture result = create_rows(picture.width(), picture.height(), nullptr, depth);
  if (!result) return result;
  const EditRows rows(result);
  for_each_row(picture.height(), rows.stride, [&](std::uint32_t y) {
    std::uint8_t* out = rows[y];
    for_each_index_run(picture.row(y), picture.width(), picture.bits(),
                       [&](std::size_t x, const std::uint8_t* indices, std::size_t count) {
                         const auto pixel = [&](std::size_t i) { return table[indices[i]]; };
                         if (depth == 24)
                           write_24(out + 3 * x, count, pixel);
                         else
                           write_32(out + 4 * x, count, pixel);
                       });
  });
  return result;
}

/// 24-bit pixels as 32-bit ones, `alpha(pixel)` in the high byte.
template <class Alpha>
Picture with_alpha(const Picture& picture, const Alpha& alpha) {
  const std::size_t width = picture.width();
  Picture result = create_rows(picture.width(), picture.height(), nullptr, 32);
  if (!result) return result;
  const EditRows rows(result);
  for_each_row(picture.height(), rows.stride, [&](std::uint32_t y) {
    const std::uint8_t* in = picture.row(y);
    const auto pixel = [&](std::size_t x) {
      // The byte behind the pixel is the next one's, masked away.
      const std::uint32_t value = read_le32(in + 3 * x) & 0xFFFFFF;
      return value | alpha(value);
    };
    write_32(rows[y], width - 1, pixel);
    const std::uint8_t* last = in + 3 * (width - 1);
    const std::uint32_t value = read_le16(last) | std::uint32_t{last[2]} << 16;
    write_le32(rows[y] + 4 * (width - 1), value | alpha(value));
  });
  return result;
}

/// Every pixel of a row of `size` bytes each through `grey`, into 8 bits.
template <std::size_t size, class Grey>
Picture true_colour_to_8(const Picture& picture, const Grey& grey) {
  Picture result = create_rows(picture.width(), picture.height(), &grey_ramp(), 8);
  if (!result) return result;
  const EditRows rows(result);
  const std::size_t width = picture.width();
  for_each_row(picture.height(), picture.stride(), [&](std::uint32_t y) {
    const std::uint8_t* in = picture.row(y);
    std::uint8_t* out = rows[y];
    for (std::size_t x = 0; x < width; ++x) out[x] = grey(in + size * x);
  });
  return result;
}

Picture indexed_to_grey(const Picture& picture) {
  Picture result = create_rows(picture.width(), picture.height(), &grey_ramp(), 8);
  if (!result) return result;
  std::array<std::uint8_t, 256> red{};
  for (std::uint32_t i = 0; i < picture.colours(); ++i) red[i] = picture.table()[4 * i + 2];
  const EditRows rows(result);
  for_each_row(picture.height(), rows.stride, [&](std::uint32_t y) {
    std::uint8_t* out = rows[y];
    for_each_index_run(picture.row(y), picture.width(), picture.bits(),
                       [&](std::size_t x, const std::uint8_t* indices, std::size_t count) {
                         for (std::size_t i = 0; i < count; ++i) out[x + i] = red[indices[i]];
                       });
  });
  return result;
}

/// The three terms of `grey_of` for every value of a channel.
struct GreyTerms {
  std::array<std::uint8_t, 256> red{}, green{}, blue{};
};
constexpr GreyTerms kGreyTerms = [] {
  GreyTerms terms;
  for (std::uint32_t i = 0; i < 256; ++i) {
    terms.red[i] = grey_of(i, 0, 0);
    terms.green[i] = grey_of(0, i, 0);
    terms.blue[i] = grey_of(0, 0, i);
  }
  return terms;
}();

std::uint8_t grey_of_pixel(const std::uint8_t* pixel) {
  return static_cast<std::uint8_t>(kGreyTerms.red[pixel[2]] + kGreyTerms.green[pixel[1]] +
                                   kGreyTerms.blue[pixel[0]]);
}

Picture drop_alpha(const Picture& picture) {
  Picture result = create_rows(picture.width(), picture.height(), nullptr, 24);
  if (!result) return result;
  const EditRows rows(result);
  for_each_row(picture.height(), picture.stride(), [&](std::uint32_t y) {
    const std::uint8_t* in = picture.row(y);
    write_24(rows[y], picture.width(), [in](std::size_t x) { return read_le32(in + 4 * x); });
  });
  return result;
}

Picture force_opaque(const Picture& picture) {
  Picture result = create_rows(picture.width(), picture.height(), nullptr, 32);
  if (!result) return result;
  const EditRows rows(result);
  for_each_row(picture.height(), rows.stride, [&](std::uint32_t y) {
    const std::uint8_t* in = picture.row(y);
    write_32(rows[y], picture.width(), [in](std::size_t x) { return read_le32(in + 4 * x) | 0xFF000000; });
  });
  return result;
}

constexpr PixelTable kBlackAndWhite = {0xFF000000, 0xFFFFFFFF};

}  // namespace

Picture PictureToTrueColor(const Picture& picture) {
  if (!has_rows(picture)) return {};
  switch (picture.bits()) {
    case 1:
      return through_table(picture, kBlackAndWhite, 24);
    case 24:
      return PictureDuplicate(picture);
    case 32:
      return drop_alpha(picture);
    default:
      return through_table(picture, opaque_table(picture), 24);
  }
}

Picture PictureToTrueColorAlpha(const Picture& picture) {
  if (!has_rows(picture)) return {};
  if (picture.bits() == 32) return force_opaque(picture);
  if (picture.bits() == 24) return with_alpha(picture, [](std::uint32_t) { return 0xFF000000; });
  return through_table(picture, opaque_table(picture), 32);
}

Picture PictureWithTransparency(const Picture& picture, std::span<const std::uint8_t> table) {
  if (!has_rows(picture)) return {};
  if (picture.bits() == 32) return PictureDuplicate(picture);
  if (picture.bits() == 24) {
    if (table.size() < 6) return PictureToTrueColorAlpha(picture);
    const std::uint32_t transparent =
        std::uint32_t{table[5]} | std::uint32_t{table[3]} << 8 | std::uint32_t{table[1]} << 16;
    return with_alpha(picture,
                      [transparent](std::uint32_t pixel) { return pixel == transparent ? 0 : 0xFF000000; });
  }
  PixelTable pixels = opaque_table(picture);
  for (std::size_t i = 0; i < std::min<std::size_t>(table.size(), picture.colours()); ++i)
    pixels[i] = (pixels[i] & 0xFFFFFF) | std::uint32_t{table[i]} << 24;
  return through_table(picture, pixels, 32);
}

Picture PictureToGrey(const Picture& picture) {
  if (!has_rows(picture)) return {};
  if (picture.bits() < 9) return indexed_to_grey(picture);
  return picture.bits() == 24 ? true_colour_to_8<3>(picture, grey_of_pixel)
                              : true_colour_to_8<4>(picture, grey_of_pixel);
}

Picture PictureAlphaToGrey(const Picture& picture) {
  if (!has_rows(picture)) return {};
  if (picture.bits() == 32)
    return true_colour_to_8<4>(picture, [](const std::uint8_t* pixel) { return pixel[3]; });
  Picture result = create_rows(picture.width(), picture.height(), &grey_ramp(), 8);
  if (!result) return result;
  const EditRows rows(result);
  for (std::uint32_t y = 0; y < picture.height(); ++y) fill_pixels(rows[y], 0, picture.width(), 8, 255);
  return result;
}

}  // namespace vellum
