#include "image/palette_from_pictures.h"

#include <algorithm>
#include <functional>
#include <unordered_set>

#include "image/picture_operations.h"
#include "image/to_colors.h"

namespace vellum {
namespace {

/// A picture's colors in 24 bits, through its color table in every depth; with `holes` 32 bits stay.
Picture true_colors(const Picture& picture, bool holes) {
  if (picture.bits() == 24 || (holes && picture.bits() == 32)) return picture;
  return PictureToTrueColor(picture.bits() == 1 ? PictureToTrueColorAlpha(picture) : picture);
}

constexpr std::uint32_t kFiveHighBits = 0xF8F8F8;

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

CountedPictures::CountedPictures(std::span<const Picture> pictures, const PaletteMethod& method)
    : method_(method) {
  for (const Picture& picture : pictures)
    if (picture) frames_.push_back(true_colors(picture, method.holes));
  // Few colors stay as they are, which the octree alone doesn't promise.
  PaletteColors few;
  const auto count = few_colours(frames_, 256, few.palette, counted());
  if (!count || frames_.empty()) return;
  few.count = std::max(*count, 1u);
  few_ = few;
}

CountedColors CountedPictures::counted() const {
  return {method_.fifteenBits ? kFiveHighBits : 0xFFFFFF, method_.holes};
}

bool CountedPictures::count_histogram(Host* host) {
  std::optional<Progress> progress;
  if (host) progress.emplace(*host, kQuantizing);
  Histogram histogram(std::size_t{1} << 24);
  for (std::size_t i = 0; i < frames_.size(); ++i) {
    if (host && host->stopped()) return false;
    count_colors(histogram, frames_[i], counted().mask);
    if (progress) progress->step(i + 1, frames_.size());
  }
  histogram_ = std::move(histogram);
  return true;
}

PaletteColors CountedPictures::sketch(std::uint32_t target, Host* host) {
  if (histogram_.empty() && !count_histogram(host)) return {};
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

PaletteColors CountedPictures::chosen(std::uint32_t target, Host* host) {
  if (few_ && few_->count <= target) return *few_;
  if (method_.sketch) return sketch(target, host);
  PaletteColors result;
  if (!octree_) {
    ColorOctree octree;
    if (frames_.empty() || !count_frames(octree, frames_, host, counted())) return {};
    octree_ = std::move(octree);
  }
  result.count = octree_->palette(target, result.palette, method_.best);
  return result;
}

PaletteColors CountedPictures::palette(std::uint32_t colors, Host* host) try {
  PaletteColors result = chosen(std::clamp(colors, 2u, 256u), host);
  if (method_.sorted) sort_by_luminance(result);
  return result;
} catch (const std::bad_alloc&) {
  return {};
}

PaletteColors palette_from_pictures(std::span<const Picture> pictures, std::uint32_t colors, Host* host,
                                    const PaletteMethod& method) try {
  return CountedPictures(pictures, method).palette(colors, host);
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

PaletteColors palette_of_picture(const Picture& picture) {
  if (!picture || picture.bits() > 8) return palette_from_pictures({&picture, picture ? 1u : 0u}, 256);
  PaletteColors colors;
  colors.count = PictureGetPalette(picture, colors.palette);
  return colors;
}

}  // namespace vellum
