#include "exchange/gif_palette.h"

#include <algorithm>

#include "core/edit/picture_fitting.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

constexpr CountedColors kVisible{0xFFFFFF, true};

}  // namespace

void GifPalette::add(const Picture& picture) {
  octree_.add(picture, kVisible);
  if (!few_) return;
  Palette own;
  const auto count = few_colours(picture, 256, own, kVisible);
  few_ = count.has_value();
  for (std::uint32_t i = 0; few_ && i < *count; ++i) {
    const auto same = [&](std::uint32_t k) {
      return std::equal(&own[3 * i], &own[3 * i] + 3, &exact_[3 * k]);
    };
    std::uint32_t k = 0;
    while (k < count_ && !same(k)) ++k;
    if (k < count_) continue;
    few_ = count_ < 256;
    if (few_) std::copy_n(&own[3 * i], 3, &exact_[3 * count_++]);
  }
}

GifColors GifPalette::colors(bool transparent, Colour mask, bool best) const {
  GifColors result;
  if (is_exact(transparent)) {
    result.palette = exact_;
    result.count = count_;
  } else {
    result.count = octree_.palette(transparent ? 255 : 256, result.palette, best);
  }
  if (transparent) {
    const std::uint8_t color[] = {red_of(mask), green_of(mask), blue_of(mask)};
    result.transparent = static_cast<std::uint8_t>(result.count++);
    for (const std::uint32_t entry :
         {std::uint32_t{*result.transparent}, (1u << table_bits(result.count)) - 1})
      std::ranges::copy(color, result.palette.begin() + 3 * entry);
  }
  result.count = std::max(result.count, 1u);
  return result;
}

Picture with_sharp_alpha(const Picture& picture, std::span<const std::uint8_t> transparency,
                         std::uint32_t threshold) {
  if (!has_rows(picture)) return {};
  if (picture.bits() < 32 && transparency.empty()) return opaque_true_color(picture);
  Picture sharp = PictureWithTransparency(picture, transparency);
  const EditRows rows(sharp);
  if (!rows) return {};
  for_each_row(sharp.height(), sharp.stride(), [&](std::uint32_t y) {
    std::uint8_t* alpha = rows[y] + 3;
    for (std::uint32_t x = 0; x < sharp.width(); ++x) alpha[4 * x] = alpha[4 * x] <= threshold ? 0 : 255;
  });
  return sharp;
}

}  // namespace vellum
