#include "exchange/gif_palette.h"

#include <algorithm>
#include <cstring>

#include "core/edit/picture_fitting.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/settings.h"

namespace vellum {
namespace {

/// The entries that pixels are matched to.
std::uint32_t opaque_count(const GifColors& colors) { return colors.transparent.value_or(colors.count); }

std::variant<NearestEntries, CornerEntries> entries_of(const GifColors& colors) {
  if (settings::FastRemap != 0) return CornerEntries(colors.palette, opaque_count(colors));
  return NearestEntries(colors.palette, opaque_count(colors));
}

/// Of two pictures of one size and depth.
bool same_rows(const Picture& a, const Picture& b) {
  for (std::uint32_t y = 0; y < a.height(); ++y)
    if (std::memcmp(a.row(y), b.row(y), std::size_t{a.bits()} * a.width() / 8) != 0) return false;
  return true;
}

}  // namespace

void GifPalette::add(std::span<const Picture> pictures) {
  octree_.add_all(pictures, counted_);
  for (const Picture& picture : pictures)
    if (few_) add_exact(picture);
}

void GifPalette::add_exact(const Picture& picture) {
  Palette own;
  const auto count = few_colours(picture, 256, own, counted_);
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

GifMatcher::GifMatcher(const GifColors& colors, std::uint32_t threshold, bool dither)
    : entries_(entries_of(colors)), transparent_(colors.transparent), threshold_(threshold) {
  if (dither)
    ditherer_.emplace(colors.palette, opaque_count(colors), settings::FastRemap != 0, threshold + 1);
}

bool GifMatcher::can_match(const GifColors& colors) {
  // Two colors may go by a cut through the greys (RemapPicture).
  return opaque_count(colors) > 2 && colors.transparent.value_or(colors.count - 1) == colors.count - 1;
}

const std::vector<std::uint8_t>& GifMatcher::match(const Picture& picture) {
  const std::size_t width = picture.width(), bytes = picture.bits() / 8;
  const bool alike =
      last_ && last_.width() == width && last_.height() == picture.height() && last_.bits() == picture.bits();
  indexes_.resize(width * picture.height());
  if (ditherer_) {
    if (alike && same_rows(picture, last_)) return indexes_;
    ditherer_->dither(picture, indexes_);
    for (std::uint32_t y = 0; y < picture.height(); ++y) put_holes(picture, y);
    last_ = picture;
    return indexes_;
  }
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* row = picture.row(y);
    if (alike && std::memcmp(row, last_.row(y), bytes * width) == 0) continue;
    const std::span out(indexes_.data() + width * y, width);
    std::visit([&](auto& entries) { match_row(entries, row, bytes, out); }, entries_);
    put_holes(picture, y);
  }
  last_ = picture;
  return indexes_;
}

void GifMatcher::put_holes(const Picture& picture, std::uint32_t y) {
  if (picture.bits() != 32 || !transparent_) return;
  const std::size_t width = picture.width();
  const std::uint8_t* row = picture.row(y);
  std::uint8_t* out = indexes_.data() + width * y;
  for (std::size_t x = 0; x < width; ++x) out[x] = row[4 * x + 3] <= threshold_ ? *transparent_ : out[x];
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
