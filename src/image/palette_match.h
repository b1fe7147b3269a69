// Matching of colors to a palette, each distinct color looked for once.
#pragma once

#include <vector>

#include "image/picture.h"

namespace vellum {

/// What RemapPicture and DitherPicture match by.
class PaletteMatch {
 public:
  /// `count` entries of the palette are used. `fast`: colors that are not exact go by their 5 high bits.
  PaletteMatch(const Palette& palette, std::uint32_t count, bool fast);

  /// The entry for a color of true color.
  std::uint32_t index(std::uint32_t red, std::uint32_t green, std::uint32_t blue);
  /// The entries that stand for white and black.
  std::uint32_t white() const { return exact_or_cell(255, 0x7FFF); }
  std::uint32_t black() const { return exact_or_cell(0, 0); }

  const Palette& palette() const { return palette_; }
  std::uint32_t count() const { return count_; }

 private:
  std::uint32_t find(std::uint32_t red, std::uint32_t green, std::uint32_t blue);
  std::uint32_t exact(std::uint32_t red, std::uint32_t green, std::uint32_t blue) const;
  std::uint32_t exact_or_cell(std::uint32_t level, std::uint32_t cell) const;
  std::uint32_t cell_index(std::uint32_t cell) const;

  Palette palette_;
  std::uint32_t count_;
  bool fast_;
  std::vector<std::uint64_t> known_;  ///< color (never all ones) above 8 bits of its index, by hash
  std::vector<std::uint16_t> cells_;  ///< the table of 32768 cells: index, or kUnknownCell
};

/// A 24-bit picture as an indexed one of `bits` bits: each pixel the nearest of the first `count` colors.
/// Null when memory is exhausted.
Picture match_to_palette(const Picture& picture, const Palette& palette, std::uint32_t count,
                         std::uint32_t bits);

}  // namespace vellum
