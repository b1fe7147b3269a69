#include "image/refine_palette.h"

#include <algorithm>
#include <vector>

#include "image/palette_match.h"

namespace vellum {
namespace {

/// Behind so many steps a twentieth of a decibel is left to gain.
constexpr int kSteps = 10;

/// Squared distances of a color's pixels to an entry, as if they all were their mean.
std::uint64_t error_of(const std::array<std::uint8_t, 3>& mean, const std::uint8_t* entry,
                       std::uint64_t count) {
  std::uint64_t sum = 0;
  for (std::size_t c = 0; c < 3; ++c) {
    const int difference = mean[c] - entry[c];
    sum += static_cast<std::uint64_t>(difference * difference);
  }
  return sum * count;
}

struct Far {
  std::uint64_t error = 0;
  std::array<std::uint8_t, 3> color{};
};

/// One step. False when nothing moved.
bool move_entries(std::span<const ColorSum> colors, Palette& palette, std::uint32_t count) {
  NearestEntries nearest(palette, count);
  std::vector<ColorSum> groups(count);
  std::vector<Far> farthest(count);  ///< of each entry's colors
  for (const ColorSum& color : colors) {
    const auto mean = mean_of(color);
    const std::uint32_t entry = nearest.index(mean[0], mean[1], mean[2]);
    groups[entry] += color;
    const std::uint64_t error = error_of(mean, &palette[3 * std::size_t{entry}], color.count);
    if (error > farthest[entry].error) farthest[entry] = {error, mean};
  }
  std::ranges::sort(farthest, std::ranges::greater(), &Far::error);
  const Palette before = palette;
  auto next = farthest.begin();
  for (std::uint32_t i = 0; i < count; ++i) {
    const auto color = groups[i].count > 0 ? mean_of(groups[i]) : (next++)->color;
    std::ranges::copy(color, palette.begin() + 3 * std::ptrdiff_t{i});
  }
  return palette != before;
}

}  // namespace

std::array<std::uint8_t, 3> mean_of(const ColorSum& color) {
  std::array<std::uint8_t, 3> mean;
  for (std::size_t c = 0; c < 3; ++c)
    mean[c] = static_cast<std::uint8_t>((color.sums[c] + color.count / 2) / color.count);
  return mean;
}

void refine_palette(std::span<const ColorSum> colors, Palette& palette, std::uint32_t count) {
  if (colors.empty() || count == 0) return;
  for (int step = 0; step < kSteps; ++step)
    if (!move_entries(colors, palette, count)) return;
}

}  // namespace vellum
