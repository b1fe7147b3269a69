#include "image/palette_from_pictures.h"

#include <algorithm>
#include <functional>
#include <optional>

#include "image/picture_operations.h"
#include "image/quantize.h"

namespace vellum {
namespace {

/// A picture's colors in 24 bits, through its color table in every depth.
Picture true_colors(const Picture& picture) {
  return picture.bits() == 24
             ? picture
             : PictureToTrueColor(picture.bits() == 1 ? PictureToTrueColorAlpha(picture) : picture);
}

constexpr std::uint32_t kFiveHighBits = 0xF8F8F8;

/// How many pixels have each color (red lowest).
using Histogram = std::vector<std::uint32_t>;

void count_colors(Histogram& histogram, const Picture& picture, std::uint32_t mask) {
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* row = picture.row(y);
    for (std::uint32_t x = 0; x < picture.width(); ++x, row += 3) {
      std::uint32_t& count = histogram[make_colour(row[2], row[1], row[0]) & mask];
      count += count != UINT32_MAX;
    }
  }
}

/// The colors that no drawing can do without, most frequent first: each has a sixteenth of the pixels that a
/// color of the palette has on average. A quarter of the palette is left for the others.
std::vector<std::uint32_t> frequent_colors(const Histogram& histogram, std::uint32_t target) {
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

PaletteColors sketch_palette(std::span<const Picture> frames, std::uint32_t target, std::uint32_t mask,
                             Host* host) {
  std::optional<Progress> progress;
  if (host) progress.emplace(*host, kQuantizing);
  Histogram histogram(std::size_t{1} << 24);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    if (host && host->stopped()) return {};
    count_colors(histogram, frames[i], mask);
    if (progress) progress->step(i + 1, frames.size());
  }
  PaletteColors result;
  for (const std::uint32_t color : frequent_colors(histogram, target)) {
    const std::uint8_t bytes[] = {red_of(color), green_of(color), blue_of(color)};
    append(result, bytes);
    histogram[color] = 0;
  }
  ColorOctree octree;
  for (std::uint32_t color = 0; color < histogram.size(); ++color)
    if (histogram[color] != 0) octree.add(color, histogram[color]);
  Palette rare;
  const std::uint32_t count = octree.palette(target - result.count, rare);
  for (std::uint32_t i = 0; i < count; ++i) append(result, &rare[3 * i]);
  return result;
}

}  // namespace

PaletteColors palette_from_pictures(std::span<const Picture> pictures, std::uint32_t most, Host* host,
                                    const PaletteMethod& method) try {
  PaletteColors result;
  const std::uint32_t target = std::clamp(most, 2u, 256u);
  const std::uint32_t mask = method.fifteenBits ? kFiveHighBits : 0xFFFFFF;
  std::vector<Picture> frames;
  for (const Picture& picture : pictures)
    if (picture) frames.push_back(true_colors(picture));
  // Few colors stay as they are, which the octree alone doesn't promise.
  if (const auto count = few_colours(frames, target, result.palette, mask))
    result.count = *count;
  else if (method.sketch)
    result = sketch_palette(frames, target, mask, host);
  else
    result.count = QuantizeFrames(frames, target, result.palette, host, mask);
  if (method.sorted) sort_by_luminance(result);
  return result;
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
