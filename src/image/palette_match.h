// Matching of colors to a palette: the exact nearest one from the few entries that can be it.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "image/lanes.h"
#include "image/picture.h"

namespace vellum {

/// Which entry of a palette is nearest to a color, as NearestPaletteIndex says. The colors are parted in
/// cells by the five high bits of each channel. Most entries are farther from every color of a cell than
/// another one is; a cell keeps the others, found when it is asked for the first time.
class NearestEntries {
 public:
  NearestEntries(const Palette& palette, std::uint32_t count);

  static constexpr std::uint32_t cell_of(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    return (red >> 3) + (green >> 3) * 32 + (blue >> 3) * 1024;
  }

  VELLUM_INLINE std::uint32_t index(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    const std::uint32_t cell = cell_of(red, green, blue);
    if (cells_[cell].count == 0) [[unlikely]]
      fill(cell);
    const Block* block = &blocks_[cells_[cell].first];
    const std::uint32_t found = nearest_of(*block, red, green, blue);
    if (cells_[cell].count == 1) [[likely]]
      return block->index[found & 7];
    return nearest_of_many(cell, red, green, blue);
  }

 private:
  /// Eight entries in the order of their indexes; missing ones repeat the first. A color's distance without
  /// the part that all entries have in common, times 8, and the lane in the low bits: `constant` + `red`
  /// times its red and so on.
  struct Block {
    std::array<std::int32_t, 8> constant, red, green, blue;
    std::uint8_t index[8];
  };
  struct Cell {
    std::uint32_t first = 0, count = 0;  ///< of its blocks; none: not asked for yet
  };

  VELLUM_INLINE static std::uint32_t nearest_of(const Block& block, std::uint32_t red, std::uint32_t green,
                                                std::uint32_t blue) {
    Lanes8 keys;
    std::memcpy(&keys, block.constant.data(), sizeof keys);
    add_products(keys, block.red, static_cast<std::int32_t>(red));
    add_products(keys, block.green, static_cast<std::int32_t>(green));
    add_products(keys, block.blue, static_cast<std::int32_t>(blue));
    return static_cast<std::uint32_t>(least_lane(keys));
  }
  std::uint32_t nearest_of_many(std::uint32_t cell, std::uint32_t red, std::uint32_t green,
                                std::uint32_t blue) const;
  void fill(std::uint32_t cell);
  Block block_of(std::span<const std::uint8_t> entries) const;

  /// For each level of the five bits and each entry, the least and the greatest part that a channel can have
  /// in the distance.
  struct Bounds {
    std::vector<std::int32_t> least, greatest;
  };

  Palette palette_;
  std::uint32_t count_;
  Bounds bounds_[3];
  std::vector<Cell> cells_;
  std::vector<Block> blocks_;
};

/// What RemapPicture and DitherPicture match by with FastRemap: an exact color, else that of the cell's dark
/// corner.
class CornerEntries {
 public:
  CornerEntries(const Palette& palette, std::uint32_t count);

  VELLUM_INLINE std::uint32_t index(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    const std::uint32_t color = make_colour(red, green, blue);
    for (std::size_t at = slot_of(color); exact_[at] != kNothing; at = (at + 1) % kSlots)
      if (exact_[at] >> 8 == color) return exact_[at] & 0xFF;
    return in_cell(NearestEntries::cell_of(red, green, blue));
  }
  std::uint32_t in_cell(std::uint32_t cell) {
    if (cells_[cell] == kUnknown) cells_[cell] = corner_index(cell);
    return cells_[cell];
  }

 private:
  static constexpr std::size_t kSlots = 1024;
  static constexpr std::uint32_t kSlotBits = 10;
  static constexpr std::uint64_t kNothing = ~std::uint64_t{0};
  static constexpr std::uint16_t kUnknown = 0xFFFF;
  static std::size_t slot_of(std::uint32_t color) {
    return color * 2654435761u >> (32 - kSlotBits);  // Knuth's multiplicative hash
  }
  std::uint16_t corner_index(std::uint32_t cell) const;

  Palette palette_;
  std::uint32_t count_;
  std::vector<std::uint64_t> exact_;  ///< color above 8 bits of its index, by hash
  std::vector<std::uint16_t> cells_;
};

/// The nearest entries of a row of `pixel_bytes` (3 or 4) bytes a pixel.
void match_row(NearestEntries& entries, const std::uint8_t* row, std::size_t pixel_bytes,
               std::span<std::uint8_t> out);
void match_row(CornerEntries& entries, const std::uint8_t* row, std::size_t pixel_bytes,
               std::span<std::uint8_t> out);

/// Into how many bands the rows of a picture are parted, each with entries of its own.
std::size_t band_count(const Picture& picture);

/// A 24-bit picture as an indexed one of `bits` bits: each pixel the nearest of the first `count` colors.
/// Null when memory is exhausted.
Picture match_to_palette(const Picture& picture, const Palette& palette, std::uint32_t count,
                         std::uint32_t bits);

}  // namespace vellum
