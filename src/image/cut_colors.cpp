#include "image/cut_colors.h"

#include <algorithm>
#include <array>
#include <vector>

namespace vellum {
namespace {

constexpr std::size_t kLevels = 32;
constexpr unsigned kLowBits = 3;

std::size_t level_of(const ColorSum& color, std::size_t channel) {
  return static_cast<std::size_t>(color.sums[channel] / color.count) >> kLowBits;
}

/// What the pixels of a group take from the sum of all squares when its mean stands for them.
double taken_by(const ColorSum& group) {
  double squares = 0;
  for (const std::uint64_t sum : group.sums) squares += static_cast<double>(sum) * static_cast<double>(sum);
  return squares / static_cast<double>(group.count);
}

ColorSum without(ColorSum all, const ColorSum& part) {
  all.count -= part.count;
  for (std::size_t c = 0; c < 3; ++c) all.sums[c] -= part.sums[c];
  return all;
}

/// Some of the colors, and the best cut through them.
struct Box {
  std::span<ColorSum> colors;
  ColorSum total = {};
  double gain = 0;  ///< 0: it can't be cut
  std::size_t channel = 0, level = 0;
};

Box box_of(std::span<ColorSum> colors) {
  Box box{colors};
  std::array<std::array<ColorSum, kLevels>, 3> levels{};
  for (const ColorSum& color : colors) {
    box.total += color;
    for (std::size_t c = 0; c < 3; ++c) levels[c][level_of(color, c)] += color;
  }
  for (std::size_t c = 0; c < 3; ++c) {
    ColorSum below;
    for (std::size_t level = 0; level + 1 < kLevels; ++level) {
      below += levels[c][level];
      if (below.count == 0 || below.count == box.total.count) continue;
      const double gain = taken_by(below) + taken_by(without(box.total, below)) - taken_by(box.total);
      if (gain > box.gain) box.gain = gain, box.channel = c, box.level = level;
    }
  }
  return box;
}

}  // namespace

std::uint32_t cut_colors(std::span<const ColorSum> colors, std::uint32_t most, Palette& palette) {
  palette.fill(0);
  if (colors.empty()) return 0;
  std::vector<ColorSum> sorted(colors.begin(), colors.end());
  std::vector<Box> boxes = {box_of(sorted)};
  while (boxes.size() < most) {
    Box& widest = *std::ranges::max_element(boxes, {}, &Box::gain);
    if (widest.gain <= 0) break;
    const Box cut = widest;
    const auto above = std::partition(cut.colors.begin(), cut.colors.end(), [&](const ColorSum& color) {
      return level_of(color, cut.channel) <= cut.level;
    });
    widest = box_of({cut.colors.begin(), above});
    boxes.push_back(box_of({above, cut.colors.end()}));
  }
  for (std::size_t i = 0; i < boxes.size(); ++i)
    std::ranges::copy(mean_of(boxes[i].total), palette.begin() + 3 * static_cast<std::ptrdiff_t>(i));
  return static_cast<std::uint32_t>(boxes.size());
}

}  // namespace vellum
