#include "operations/deep_ways.h"

#include <algorithm>
#include <cstring>

#include "base/byte_order.h"
#include "image/alpha_runs.h"
#include "image/deflate.h"
#include "image/picture_rows.h"
#include "image/png_encode.h"

namespace vellum {
namespace {

const std::uint8_t* row_in(const Picture& canvas, const PictureRect& rect, std::int32_t y) {
  return canvas.row(static_cast<std::uint32_t>(y)) + 4 * static_cast<std::size_t>(rect.left);
}
std::size_t width_of(const PictureRect& rect) { return static_cast<std::size_t>(rect.right - rect.left); }

/// Calls use(x, pixel) for the pixels of a row of the part.
template <class Use>
void for_each_pixel(const std::uint8_t* row, const std::uint8_t* ground, std::size_t width, const Use& use) {
  for (std::size_t x = 0; x < width; ++x) {
    const Pixel pixel = read_le32(row + 4 * x);
    use(x, ground && read_le32(ground + 4 * x) == pixel ? 0 : pixel);
  }
}

void write_row(std::uint8_t* out, const std::uint8_t* row, const std::uint8_t* ground, std::size_t width,
               const PixelForm& form) {
  if (form.bits == 32)
    return for_each_pixel(row, ground, width,
                          [&](std::size_t x, Pixel pixel) { write_le32(out + 4 * x, pixel); });
  if (form.bits == 24)
    return for_each_pixel(row, ground, width, [&](std::size_t x, Pixel pixel) {
      const Pixel value = pixel == 0 && form.key ? *form.key : pixel;
      for (unsigned c = 0; c < 3; ++c) out[3 * x + c] = static_cast<std::uint8_t>(value >> (8 * c));
    });
  Pixel last = 0;
  std::uint32_t index = ~0u;
  for_each_pixel(row, ground, width, [&](std::size_t x, Pixel pixel) {
    if (pixel != last || index == ~0u) index = form.indexes.at(last = pixel);
    put_index(out, x, form.bits, index);
  });
}

/// Whether a frame laid over the ground can make the canvas of it, and how many of its pixels are there.
struct Overlay {
  bool can = true;
  std::size_t there = 0;
};
Overlay overlay(const Picture& ground, const Picture& canvas, const PictureRect& rect) {
  Overlay found;
  for (std::int32_t y = rect.top; y < rect.bottom && found.can; ++y) {
    const std::uint8_t *a = row_in(ground, rect, y), *b = row_in(canvas, rect, y);
    unsigned bad = 0;
    for (std::size_t x = 0; x < width_of(rect); ++x) {
      const Pixel there = read_le32(a + 4 * x), wanted = read_le32(b + 4 * x);
      found.there += there == wanted;
      bad |= (there != wanted) & (wanted < 0xFF000000) & (there > 0x00FFFFFF);
    }
    found.can = bad == 0;
  }
  return found;
}

}  // namespace

std::size_t estimated_bytes(const PixelForm& form, const Picture& picture) {
  constexpr std::uint64_t kSmall = std::uint64_t{64} << 10;
  constexpr int kQuick = 2;
  const PngHeader header = form.header(picture.width(), picture.height());
  const std::uint64_t all = png_filtered_bytes(header);
  std::size_t least = SIZE_MAX;
  for (const PngFiltering filtering : {PngFiltering::None, PngFiltering::Paeth}) {
    if (filtering != PngFiltering::None && form.bits <= 8) continue;
    const auto rows = all <= kSmall ? png_filtered(header, picture, filtering)
                                    : png_filtered_bands(header, picture, filtering);
    const std::size_t packed = deflate_bytes(rows, kQuick).size();
    if (packed != 0) least = std::min<std::size_t>(least, packed * all / rows.size());
  }
  return least;
}

PictureRect changed_rect(const Picture& ground, const Picture& canvas) {
  const std::uint32_t width = canvas.width(), height = canvas.height();
  PictureRect rect{static_cast<std::int32_t>(width), static_cast<std::int32_t>(height), 0, 0};
  for (std::uint32_t y = 0; y < height; ++y) {
    const std::uint8_t *a = ground.row(y), *b = canvas.row(y);
    if (std::memcmp(a, b, std::size_t{4} * width) == 0) continue;
    const auto same = [&](std::uint32_t x) {
      return read_le32(a + std::size_t{4} * x) == read_le32(b + std::size_t{4} * x);
    };
    std::uint32_t x = 0, end = width;
    while (same(x)) ++x;
    while (same(end - 1)) --end;
    rect.left = std::min(rect.left, static_cast<std::int32_t>(x));
    rect.right = std::max(rect.right, static_cast<std::int32_t>(end));
    rect.top = std::min(rect.top, static_cast<std::int32_t>(y));
    rect.bottom = static_cast<std::int32_t>(y) + 1;
  }
  return rect.right == 0 ? PictureRect{0, 0, 1, 1} : rect;
}

PictureRect filled_rect(const Picture& canvas, const PictureRect& part) {
  PictureRect rect{part.right, part.bottom, part.left, part.top};
  for (std::int32_t y = part.top; y < part.bottom; ++y) {
    const std::uint8_t* row = canvas.row(static_cast<std::uint32_t>(y));
    const auto clear = [&](std::int32_t x) { return read_le32(row + 4 * static_cast<std::size_t>(x)) == 0; };
    std::int32_t x = part.left, end = part.right;
    while (x < end && clear(x)) ++x;
    if (x == end) continue;
    while (clear(end - 1)) --end;
    rect.left = std::min(rect.left, x);
    rect.right = std::max(rect.right, end);
    rect.top = std::min(rect.top, y);
    rect.bottom = y + 1;
  }
  return rect.right <= rect.left ? PictureRect{} : rect;
}

std::size_t rect_area(const PictureRect& rect) {
  return width_of(rect) * static_cast<std::size_t>(rect.bottom - rect.top);
}

bool is_opaque_part(const Picture& canvas, const PictureRect& rect) {
  for (std::int32_t y = rect.top; y < rect.bottom; ++y)
    if (!is_opaque_run(row_in(canvas, rect, y), width_of(rect))) return false;
  return true;
}

Picture part_of(const Picture& canvas, const PictureRect& rect, const PixelForm& form,
                const Picture* ground) {
  Picture picture =
      create_rows(static_cast<std::uint32_t>(width_of(rect)),
                  static_cast<std::uint32_t>(rect.bottom - rect.top), &form.colors.palette, form.bits);
  const EditRows rows(picture);
  if (!rows) return {};
  for (std::int32_t y = rect.top; y < rect.bottom; ++y)
    write_row(rows[static_cast<std::size_t>(y - rect.top)], row_in(canvas, rect, y),
              ground ? row_in(*ground, rect, y) : nullptr, width_of(rect), form);
  return picture;
}

std::vector<Way> ways_on(const Picture& ground, bool clear, const Picture& canvas, const PixelForm& form,
                         WayRule rule) {
  std::vector<Way> ways;
  const bool lies = rule == WayRule::LiesOver;
  const PictureRect rect = changed_rect(ground, canvas);
  const bool replaces = !lies || clear || is_opaque_part(canvas, rect);
  const Overlay found = form.holes ? overlay(ground, canvas, rect) : Overlay{false};
  if (found.can && (found.there > 0 || !replaces))
    ways.push_back({.picture = part_of(canvas, rect, form, &ground), .rect = rect, .over = true});
  if (replaces) ways.push_back({.picture = part_of(canvas, rect, form, nullptr), .rect = rect, .over = lies});
  for (Way& way : ways) way.clears = lies && clear;
  return ways;
}

}  // namespace vellum
