// Palettes computed from pictures: an octree whose nodes are merged by the error that they stand for.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "base/host.h"
#include "image/picture.h"

namespace vellum {

inline constexpr const char* kQuantizing = "Quantizing";  ///< the caption of its progress

/// Which pixels and which of their bits count as colors.
struct CountedColors {
  std::uint32_t mask = 0xFFFFFF;  ///< red lowest; the other bits read as 0
  bool visible = false;           ///< pictures of 32 bits are read as such, without pixels of little alpha
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

  /// Counts pixels of one color (red lowest).
  void add(Colour color, std::uint64_t count);

  /// The palette of at most `target` colors (0 and what is above 256 count as 256) in the order of the tree,
  /// and how many there are. 0 where nothing was added. `best`: then moved to where the colors are.
  std::uint32_t palette(std::uint32_t target, Palette& out, bool best = false) const;

 private:
  struct Cells;
  std::unique_ptr<Cells> cells_;
};

/// The colors of such pictures in the order of their first appearance, each from the bottom row up; nothing
/// when there are more than `most` (at most 256).
std::optional<std::uint32_t> few_colours(std::span<const Picture> pictures, std::uint32_t most,
                                         Palette& palette, const CountedColors& counted = {});

/// Counts all frames; `host`, where it is given, hears of the progress. False when the user stopped it.
/// Throws std::bad_alloc.
bool count_frames(ColorOctree& octree, std::span<const Picture> frames, Host* host,
                  const CountedColors& counted = {});

/// The octree's palette of all frames, and the number of its colors. 0 when nothing was
/// counted, the user stopped it or memory is exhausted.
std::uint32_t QuantizeFrames(std::span<const Picture> frames, std::uint32_t target, Palette& palette,
                             Host* host = nullptr, const CountedColors& counted = {});

/// The palette of a picture of 24 bits. One that has no more colors than the target keeps them, in the order
/// of their first appearance from the bottom row up; otherwise the octree's. Returns the number of colors; 0
/// for a null picture or when memory is exhausted.
std::uint32_t QuantizePicture(const Picture& picture, std::uint32_t target, Palette& palette);

}  // namespace vellum
