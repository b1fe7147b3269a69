#include "image/superpalette.h"

#include <algorithm>
#include <new>
#include <unordered_set>

#include "base/translation.h"
#include "image/picture_operations.h"
#include "image/to_colors.h"

namespace vellum {
namespace {

constexpr std::uint32_t kFiveHighBits = 0xF8F8F8;
constexpr std::uint32_t kLeastToImprove = 17;
constexpr std::uint8_t kNearlyBlack = 17, kNearlyWhite = 240;

/// In 24 bits, or with `holes` in 24 or 32. Two colors go through their table, which PictureToTrueColor would
/// pass over.
Picture shown_colors(const Picture& picture, bool holes) {
  if (!picture || picture.bits() == 24 || (holes && picture.bits() == 32)) return picture;
  return PictureToTrueColor(picture.bits() == 1 ? PictureToTrueColorAlpha(picture) : picture);
}

void count_colors(std::vector<std::uint32_t>& histogram, const Picture& picture, std::uint32_t mask) {
  const std::size_t bytes = picture.bits() / 8;
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* row = picture.row(y);
    for (std::uint32_t x = 0; x < picture.width(); ++x, row += bytes) {
      if (bytes == 4 && row[3] < kLeastOpaque) continue;
      std::uint32_t& count = histogram[make_colour(row[2], row[1], row[0]) & mask];
      count += count != UINT32_MAX;
    }
  }
}

/// The colors that no drawing can do without, most frequent first: each has a sixteenth of the pixels that a
/// color of the palette has on average. A quarter of the palette is left for the others.
std::vector<std::uint32_t> frequent_colors(const std::vector<std::uint32_t>& histogram,
                                           std::uint32_t target) {
  std::uint64_t pixels = 0;
  for (const std::uint32_t count : histogram) pixels += count;
  const std::uint64_t least = pixels / (std::uint64_t{16} * target) + 1;
  std::vector<std::uint32_t> colors;
  for (std::uint32_t color = 0; color < histogram.size(); ++color)
    if (histogram[color] >= least) colors.push_back(color);
  std::ranges::stable_sort(colors, std::greater(), [&](std::uint32_t color) { return histogram[color]; });
  colors.resize(std::min<std::size_t>(colors.size(), target - std::max(target / 4, 1u)));
  return colors;
}

void append(PaletteColors& colors, const std::uint8_t* color) {
  for (std::uint32_t i = 0; i < colors.count; ++i)
    if (std::equal(color, color + 3, &colors.palette[3 * i])) return;
  std::copy_n(color, 3, &colors.palette[3 * colors.count++]);
}

}  // namespace

Superpalette::Superpalette(const PaletteMethod& method)
    : method_(method), counted_{method.fifteenBits ? kFiveHighBits : 0xFFFFFF, method.holes} {
  if (method.exact) few_.emplace(256, counted_);
}

void Superpalette::add(const Picture& picture) {
  const Picture shown = shown_colors(picture, method_.holes);
  if (picture && !shown) throw std::bad_alloc();
  if (!shown) return;
  any_ = true;
  // Few colors stay as they are, which the octree alone doesn't promise.
  if (few_ && !few_->add(shown)) few_.reset();
  if (!method_.sketch) return octree_.add(shown, counted_);
  if (histogram_.empty()) histogram_.resize(std::size_t{1} << 24);
  count_colors(histogram_, shown, counted_.mask);
}

PaletteColors Superpalette::sketch(std::uint32_t target) const {
  PaletteColors result;
  const auto frequent = frequent_colors(histogram_, target);
  for (const std::uint32_t color : frequent) {
    const std::uint8_t bytes[] = {red_of(color), green_of(color), blue_of(color)};
    append(result, bytes);
  }
  ColorOctree octree;
  const std::unordered_set<std::uint32_t> taken(frequent.begin(), frequent.end());
  for (std::uint32_t color = 0; color < histogram_.size(); ++color)
    if (histogram_[color] != 0 && !taken.contains(color)) octree.add(color, histogram_[color]);
  Palette rare;
  const std::uint32_t count = octree.palette(target - result.count, rare);
  for (std::uint32_t i = 0; i < count; ++i) append(result, &rare[3 * i]);
  return result;
}

PaletteColors Superpalette::chosen(std::uint32_t target) const {
  PaletteColors result;
  if (few_ && few_->count() <= target) {
    result.palette = few_->palette();
    result.count = few_->count();
    return result;
  }
  if (method_.sketch) return sketch(target);
  result.count = octree_.palette(target, result.palette, method_.best);
  return result;
}

PaletteColors Superpalette::colors(std::uint32_t most) const {
  if (!any_) return {};
  PaletteColors result = chosen(std::clamp(most, 2u, 256u));
  result.count = std::max(result.count, 1u);
  if (method_.sorted) sort_by_luminance(result);
  return result;
}

std::optional<Superpalette> gather_colors(std::size_t count,
                                          const std::function<Picture(std::size_t)>& picture, Host& host,
                                          const PaletteMethod& method) try {
  const Progress progress(host, translated(kQuantizing));
  Superpalette gathered(method);
  for (std::size_t i = 0; i < count; ++i) {
    const Picture next = host.stopped() ? Picture() : picture(i);
    if (!next) return std::nullopt;
    gathered.add(next);
    progress.step(i + 1, count);
  }
  return gathered;
} catch (const std::bad_alloc&) {
  return std::nullopt;
}

PaletteColors superpalette(std::size_t count, const std::function<Picture(std::size_t)>& picture,
                           std::uint32_t most, Host& host, const PaletteMethod& method) try {
  const auto gathered = gather_colors(count, picture, host, method);
  return gathered ? gathered->colors(most) : PaletteColors();
} catch (const std::bad_alloc&) {
  return {};
}

void sort_by_luminance(PaletteColors& colors) {
  const auto luminance = [&](std::uint32_t i) {
    const std::uint8_t* color = &colors.palette[3 * i];
    return (77 * color[0] + 150 * color[1] + 28 * color[2]) / 255;
  };
  for (std::uint32_t i = 0; i < colors.count; ++i)
    for (std::uint32_t j = i + 1; j < colors.count; ++j)
      if (luminance(i) > luminance(j))
        std::swap_ranges(&colors.palette[3 * i], &colors.palette[3 * i] + 3, &colors.palette[3 * j]);
}

void improve_ends(PaletteColors& colors) {
  if (colors.count < kLeastToImprove) return;
  std::uint8_t* first = colors.palette.data();
  std::uint8_t* last = first + 3 * (colors.count - 1);
  if (std::all_of(first, first + 3, [](std::uint8_t c) { return c < kNearlyBlack; }))
    std::fill_n(first, 3, 0);
  if (std::all_of(last, last + 3, [](std::uint8_t c) { return c >= kNearlyWhite; }))
    std::fill_n(last, 3, 255);
}

}  // namespace vellum
