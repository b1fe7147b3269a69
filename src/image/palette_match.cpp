#include "image/palette_match.h"

#include <algorithm>
#include <array>

#include "image/picture_rows.h"
#include "image/remap.h"

namespace vellum {
namespace {

constexpr std::size_t kCells = 32768;
constexpr std::uint32_t kLevels = 32, kLevelSize = 8, kLevelMask = 31;
constexpr std::int32_t kWeights[3] = {3, 4, 2};  ///< of the channels in the distance
constexpr std::int32_t kLaneCount = 8;

std::int32_t weighted(std::size_t channel, std::int32_t difference) {
  return kWeights[channel] * difference * difference;
}

}  // namespace

NearestEntries::NearestEntries(const Palette& palette, std::uint32_t count)
    : palette_(palette), count_(std::clamp(count, 1u, 256u)), cells_(kCells) {
  for (std::size_t c = 0; c < 3; ++c) {
    Bounds& bounds = bounds_[c];
    bounds.least.resize(std::size_t{kLevels} * count_);
    bounds.greatest.resize(bounds.least.size());
    for (std::uint32_t level = 0; level < kLevels; ++level)
      for (std::uint32_t i = 0; i < count_; ++i) {
        const std::int32_t value = palette_[3 * i + c], low = static_cast<std::int32_t>(level * kLevelSize),
                           high = low + static_cast<std::int32_t>(kLevelSize) - 1;
        bounds.least[level * count_ + i] = weighted(c, value - std::clamp(value, low, high));
        bounds.greatest[level * count_ + i] = weighted(c, std::max(high - value, value - low));
      }
  }
}

NearestEntries::Block NearestEntries::block_of(std::span<const std::uint8_t> entries) const {
  Block block{};
  for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
    const std::size_t at = lane < entries.size() ? lane : 0;
    const std::int32_t r = palette_[3u * entries[at]], g = palette_[3u * entries[at] + 1],
                       b = palette_[3u * entries[at] + 2];
    const std::int32_t constant = weighted(0, r) + weighted(1, g) + weighted(2, b);
    block.constant[lane] = kLaneCount * constant + static_cast<std::int32_t>(lane);
    block.red[lane] = -2 * kLaneCount * kWeights[0] * r;
    block.green[lane] = -2 * kLaneCount * kWeights[1] * g;
    block.blue[lane] = -2 * kLaneCount * kWeights[2] * b;
    block.index[lane] = entries[at];
  }
  return block;
}

void NearestEntries::fill(std::uint32_t cell) {
  const std::uint32_t levels[3] = {cell & kLevelMask, cell >> 5 & kLevelMask, cell >> 10};
  const std::int32_t *least[3], *greatest[3];
  for (std::size_t c = 0; c < 3; ++c) {
    least[c] = &bounds_[c].least[levels[c] * count_];
    greatest[c] = &bounds_[c].greatest[levels[c] * count_];
  }
  // What is never farther than this, wherever in the cell the color lies.
  std::int32_t reach = INT32_MAX;
  for (std::uint32_t i = 0; i < count_; ++i)
    reach = std::min(reach, greatest[0][i] + greatest[1][i] + greatest[2][i]);
  std::array<std::uint8_t, 256> entries;
  std::size_t found = 0;
  for (std::uint32_t i = 0; i < count_; ++i) {
    entries[found] = static_cast<std::uint8_t>(i);
    found += least[0][i] + least[1][i] + least[2][i] <= reach;
  }
  cells_[cell].first = static_cast<std::uint32_t>(blocks_.size());
  for (std::size_t at = 0; at < found; at += kLaneCount)
    blocks_.push_back(
        block_of(std::span(entries).subspan(at, std::min<std::size_t>(found - at, kLaneCount))));
  cells_[cell].count = static_cast<std::uint32_t>(blocks_.size()) - cells_[cell].first;
}

std::uint32_t NearestEntries::nearest_of_many(std::uint32_t cell, std::uint32_t red, std::uint32_t green,
                                              std::uint32_t blue) const {
  const std::span blocks = std::span(blocks_).subspan(cells_[cell].first, cells_[cell].count);
  std::int32_t best = INT32_MAX;
  std::uint32_t index = 0;
  for (const Block& block : blocks) {
    const auto key = static_cast<std::int32_t>(nearest_of(block, red, green, blue));
    if (key >> 3 >= best) continue;
    best = key >> 3;
    index = block.index[key & 7];
  }
  return index;
}

CornerEntries::CornerEntries(const Palette& palette, std::uint32_t count)
    : palette_(palette), count_(std::min(count, 256u)), exact_(kSlots, kNothing), cells_(kCells, kUnknown) {
  for (std::uint32_t i = 0; i < count_; ++i) {
    const std::uint32_t color = make_colour(palette[3 * i], palette[3 * i + 1], palette[3 * i + 2]);
    std::size_t at = slot_of(color);
    while (exact_[at] != kNothing && exact_[at] >> 8 != color) at = (at + 1) % kSlots;
    if (exact_[at] == kNothing) exact_[at] = std::uint64_t{color} << 8 | i;
  }
}

std::uint16_t CornerEntries::corner_index(std::uint32_t cell) const {
  return static_cast<std::uint16_t>(
      NearestPaletteIndex((cell & 31) * 8, cell >> 2 & 248, cell >> 7 & 248, palette_, count_));
}

namespace {

template <class Entries>
VELLUM_INLINE void match_pixels(Entries& entries, const std::uint8_t* row, std::size_t pixel_bytes,
                                std::span<std::uint8_t> out) {
  std::uint32_t color = 0, found = out.empty() ? 0 : entries.index(0, 0, 0);
  for (std::uint8_t& index : out) {
    const std::uint32_t here = make_colour(row[2], row[1], row[0]);
    if (here != color) found = entries.index(row[2], row[1], row[0]);
    color = here;
    index = static_cast<std::uint8_t>(found);
    row += pixel_bytes;
  }
}

VELLUM_AVX2 void match_pixels_avx2(NearestEntries& entries, const std::uint8_t* row, std::size_t pixel_bytes,
                                   std::span<std::uint8_t> out) {
  match_pixels(entries, row, pixel_bytes, out);
}

}  // namespace

void match_row(NearestEntries& entries, const std::uint8_t* row, std::size_t pixel_bytes,
               std::span<std::uint8_t> out) {
  if (has_avx2()) return match_pixels_avx2(entries, row, pixel_bytes, out);
  match_pixels(entries, row, pixel_bytes, out);
}

void match_row(CornerEntries& entries, const std::uint8_t* row, std::size_t pixel_bytes,
               std::span<std::uint8_t> out) {
  match_pixels(entries, row, pixel_bytes, out);
}

std::size_t band_count(const Picture& picture) {
  const std::uint64_t pixels = std::uint64_t{picture.width()} * picture.height();
  return std::clamp<std::uint64_t>(pixels >> 18, 1,
                                   std::min<std::size_t>(2 * parallel_width(), picture.height()));
}

Picture match_to_palette(const Picture& picture, const Palette& palette, std::uint32_t count,
                         std::uint32_t bits) {
  Picture result = create_rows(picture.width(), picture.height(), &palette, bits);
  if (!result) return result;
  const EditRows rows(result);
  const std::size_t bands = band_count(picture);
  parallel_for(bands, [&](std::size_t band) {
    NearestEntries entries(palette, count);
    std::vector<std::uint8_t> line(picture.width());
    for (std::size_t y = picture.height() * band / bands; y < picture.height() * (band + 1) / bands; ++y) {
      match_row(entries, picture.row(static_cast<std::uint32_t>(y)), 3, line);
      pack_indices(rows[y], 0, line.data(), line.size(), bits);
    }
  });
  return result;
}

}  // namespace vellum
