#include "exchange/gif_color_choice.h"

#include <cstring>

#include "base/byte_order.h"
#include "image/palette_match.h"
#include "image/picture_rows.h"

namespace vellum::gif {

void NearEntries::add(PixelChoice& choice, Pixel wanted, std::int32_t reach) {
  std::size_t count = 1;
  for (const std::uint8_t index : neighbors(choice[0])) {
    if (distance(color_of(colors_, index), wanted) > reach) continue;
    choice[count++] = index;
    if (count == choice.size()) return;
  }
}

const std::vector<std::uint8_t>& NearEntries::neighbors(std::uint8_t of) {
  std::vector<std::uint8_t>& near = near_[of];
  if (!near.empty()) return near;
  for (const auto& [color, index] : entries_)
    if (index != of) near.push_back(index);
  const auto from = [&](std::uint8_t index) {
    return std::pair(distance(color_of(colors_, index), color_of(colors_, of)), index);
  };
  std::ranges::sort(near, {}, from);
  near.resize(std::min(near.size(), kNeighbors));
  return near;
}

void ColorChanges::add(const Picture& canvas) {
  ++number_;
  for (std::uint32_t y = 0; y < canvas.height(); ++y) {
    const std::uint8_t *row = canvas.row(y), *before = last_ ? last_.row(y) : nullptr;
    const std::size_t width = canvas.width();
    if (!before || std::memcmp(row, before, 4 * width) == 0) continue;
    for (std::size_t x = 0; x < width; ++x)
      if (const std::uint32_t pixel = read_le32(row + 4 * x); pixel != read_le32(before + 4 * x)) note(pixel);
  }
  last_ = canvas;
}

void ColorChanges::sort(GifColors& colors) const {
  const std::uint32_t count = colors.transparent.value_or(colors.count);
  if (count == 0) return;
  NearestEntries nearest(colors.palette, count);
  std::vector<std::pair<std::uint64_t, std::uint32_t>> order(count);
  for (std::uint32_t i = 0; i < count; ++i) order[i].second = i;
  for (const Cell& cell : cells_)
    if (cell.frames > 0) order[nearest.index(red(cell), green(cell), blue(cell))].first += cell.frames;
  std::ranges::stable_sort(order, std::ranges::greater(), [](const auto& entry) { return entry.first; });
  const Palette before = colors.palette;
  for (std::uint32_t i = 0; i < count; ++i)
    std::copy_n(&before[3 * order[i].second], 3, &colors.palette[3 * i]);
}

}  // namespace vellum::gif
