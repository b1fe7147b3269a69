#include "image/palette_match.h"

#include <algorithm>

#include "image/picture_rows.h"
#include "image/remap.h"

namespace vellum {
namespace {

constexpr std::size_t kKnownColors = std::size_t{1} << 16;
constexpr std::uint64_t kNothing = ~std::uint64_t{0};
constexpr std::size_t kCells = 32768;
constexpr std::uint16_t kUnknownCell = 0xFFFF;

}  // namespace

PaletteMatch::PaletteMatch(const Palette& palette, std::uint32_t count, bool fast)
    : palette_(palette), count_(std::min(count, 256u)), fast_(fast), known_(kKnownColors, kNothing) {
  if (fast) cells_.assign(kCells, kUnknownCell);
}

std::uint32_t PaletteMatch::exact(std::uint32_t red, std::uint32_t green, std::uint32_t blue) const {
  for (std::uint32_t i = 0; i < count_; ++i)
    if (palette_[3 * i] == red && palette_[3 * i + 1] == green && palette_[3 * i + 2] == blue) return i;
  return count_;
}

/// Five bits of each channel, red lowest.
std::uint32_t PaletteMatch::cell_index(std::uint32_t cell) const {
  return NearestPaletteIndex((cell & 31) * 8, cell >> 2 & 248, cell >> 7 & 248, palette_, count_);
}

std::uint32_t PaletteMatch::exact_or_cell(std::uint32_t level, std::uint32_t cell) const {
  if (!fast_) return NearestPaletteIndex(level, level, level, palette_, count_);
  const std::uint32_t found = exact(level, level, level);
  return found < count_ ? found : cell_index(cell);
}

std::uint32_t PaletteMatch::find(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
  if (!fast_) return NearestPaletteIndex(red, green, blue, palette_, count_);
  const std::uint32_t found = exact(red, green, blue);
  if (found < count_) return found;
  const std::uint32_t cell = (red >> 3) + (green >> 3) * 32 + (blue >> 3) * 1024;
  if (cells_[cell] == kUnknownCell) cells_[cell] = static_cast<std::uint16_t>(cell_index(cell));
  return cells_[cell];
}

std::uint32_t PaletteMatch::index(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
  const std::uint32_t color = make_colour(red, green, blue);
  std::uint64_t& slot = known_[color * 2654435761u >> 16];  // Knuth's multiplicative hash
  if (slot >> 8 != color) slot = std::uint64_t{color} << 8 | find(red, green, blue);
  return slot & 0xFF;
}

Picture match_to_palette(const Picture& picture, const Palette& palette, std::uint32_t count,
                         std::uint32_t bits) {
  Picture result = create_rows(picture.width(), picture.height(), &palette, bits);
  if (!result) return result;
  PaletteMatch match(palette, count, false);
  const EditRows rows(result);
  std::vector<std::uint8_t> line(picture.width());
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* row = picture.row(y);
    for (std::size_t x = 0; x < line.size(); ++x)
      line[x] = static_cast<std::uint8_t>(match.index(row[3 * x + 2], row[3 * x + 1], row[3 * x]));
    pack_indices(rows[y], 0, line.data(), line.size(), bits);
  }
  return result;
}

}  // namespace vellum
