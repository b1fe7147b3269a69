// Palettes computed from pictures: an octree whose nodes are merged by the error that they stand for.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "image/picture.h"

namespace vellum {

inline constexpr const char* kQuantizing = "Quantizing";  ///< the caption of its progress

/// Which pixels and which of their bits count as colors.
struct CountedColors {
  std::uint32_t mask = 0xFFFFFF;  ///< red lowest; the other bits read as 0
  bool visible = false;           ///< pictures of 32 bits are read as such, without pixels of little alpha
  std::uint32_t least = 128;      ///< alpha from here on isn't little
};

/// Gathers the colors of pictures and makes a palette of them. Alpha is not looked at.
class ColorOctree {
 public:
  ColorOctree();
  ~ColorOctree();
  ColorOctree(ColorOctree&&) noexcept;
  ColorOctree& operator=(ColorOctree&&) noexcept;

  /// Counts every pixel of a picture of 24 bits. Of other depths the rows are read as three bytes a pixel, as
  /// they fall, but for what `counted` says. Throws std::bad_alloc.
  void add(const Picture& picture, const CountedColors& counted = {});

  /// The same for many pictures, counted side by side.
  void add_all(std::span<const Picture> pictures, const CountedColors& counted = {});

  /// Counts pixels of one color (red lowest).
  void add(Colour color, std::uint64_t count);

  /// The palette of at most `target` colors (0 and what is above 256 count as 256) in the order of the tree,
  /// and how many there are. 0 where nothing was added. `best`: then moved to where the colors are.
  std::uint32_t palette(std::uint32_t target, Palette& out, bool best = false) const;

 private:
  struct Cells;
  std::unique_ptr<Cells> cells_;
};

/// Colors in the order of their first appearance, of each picture from the bottom row up.
class FewColors {
 public:
  /// At most 256.
  explicit FewColors(std::uint32_t most, const CountedColors& counted = {});

  /// Pictures as `ColorOctree::add` takes them. False once there are more than `most`. Throws std::bad_alloc.
  bool add(const Picture& picture);
  std::uint32_t count() const { return count_; }
  /// The colors, black behind them.
  const Palette& palette() const { return palette_; }

 private:
  bool note(std::uint32_t colour);

  std::uint32_t most_, count_ = 0;
  CountedColors counted_;
  Palette palette_{};
  std::vector<std::uint32_t> known_;  ///< by hash; 4 for each color
};

/// The colors of one picture in that order; nothing when there are more than `most`.
std::optional<std::uint32_t> few_colours(const Picture& picture, std::uint32_t most, Palette& palette,
                                         const CountedColors& counted = {});

/// The palette of a picture of 24 bits. One that has no more colors than the target keeps them, in the order
/// of their first appearance from the bottom row up; otherwise the octree's. Returns the number of colors; 0
/// for a null picture or when memory is exhausted.
std::uint32_t QuantizePicture(const Picture& picture, std::uint32_t target, Palette& palette);

}  // namespace vellum
