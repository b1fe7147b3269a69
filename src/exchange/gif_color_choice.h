// Which entries of a palette may stand for a color, and their order, where a GIF is to become small.
#pragma once

#include <optional>
#include <unordered_map>

#include "exchange/gif_canvas.h"
#include "exchange/gif_lzw.h"

namespace vellum::gif {

/// Entries by their color, and those that are near another one.
class NearEntries {
 public:
  explicit NearEntries(const GifColors& colors) : colors_(colors), near_(256) {
    for (std::uint32_t i = 0; i < colors.count; ++i)
      if (colors.transparent != i) entries_.try_emplace(color_of(colors, static_cast<std::uint8_t>(i)), i);
  }
  std::optional<std::uint8_t> entry(Pixel color) const {
    const auto found = entries_.find(color);
    return found == entries_.end() ? std::nullopt : std::optional(found->second);
  }
  /// Adds to an entry the nearest others that are within reach of the color.
  void add(PixelChoice& choice, Pixel wanted, std::int32_t reach);

 private:
  static constexpr std::size_t kNeighbors = 12;

  const std::vector<std::uint8_t>& neighbors(std::uint8_t of);

  const GifColors& colors_;
  std::unordered_map<Pixel, std::uint8_t> entries_;
  std::vector<std::vector<std::uint8_t>> near_;
};

/// In how many frames colors come anew. Those of many frames stand in front in the palette, for frames that
/// use low indexes only pack with shorter codes.
class ColorChanges {
 public:
  /// The next canvas; 32 bits.
  void add(const Picture& canvas);
  /// The transparent entry stays the last.
  void sort(GifColors& colors) const;

 private:
  struct Cell {
    std::uint32_t color = 0;  ///< the last one of the cell, blue lowest
    std::uint32_t frames = 0, last = 0;
  };
  static std::uint32_t red(const Cell& cell) { return cell.color >> 16 & 255; }
  static std::uint32_t green(const Cell& cell) { return cell.color >> 8 & 255; }
  static std::uint32_t blue(const Cell& cell) { return cell.color & 255; }

  void note(std::uint32_t pixel) {
    Cell& cell = cells_[(pixel >> 3 & 31) | (pixel >> 11 & 31) << 5 | (pixel >> 19 & 31) << 10];
    if (cell.last == number_) return;
    cell = {pixel, cell.frames + 1, number_};
  }

  std::vector<Cell> cells_ = std::vector<Cell>(32768);
  Picture last_;
  std::uint32_t number_ = 0;
};

}  // namespace vellum::gif
