// One palette for many pictures, gathered from one after the other: for the frames of an animation that is
// made, of a document that is converted, or for one that a person chooses.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "base/host.h"
#include "image/palette_file.h"
#include "image/quantize.h"

namespace vellum {

/// How a palette is computed.
struct PaletteMethod {
  bool fifteenBits = false;  ///< colors count by their 5 high bits of each channel, the others read as 0
  bool sketch = false;       ///< for drawings: frequent colors stay exactly, the others share what is left
  bool sorted = false;       ///< dark colors first (see sort_by_luminance)
  bool best = false;         ///< colors are moved to where those are that they stand for
  bool holes = false;        ///< pixels with little alpha (see kLeastOpaque) don't count
  bool exact = true;         ///< where there are no more than are wanted they stay; off: always the octree's

  bool operator==(const PaletteMethod&) const = default;
};

/// That of the generators.
inline constexpr PaletteMethod kSuperpalette{.sorted = true, .holes = true, .exact = false};

/// The colors of pictures, counted once for palettes of any size. Holds counts and no pictures, so frames may
/// be asked for one at a time.
class Superpalette {
 public:
  explicit Superpalette(const PaletteMethod& method = kSuperpalette);

  /// Counts the pixels of a picture of any depth by the colors that they show. A null picture counts nothing.
  /// Throws std::bad_alloc.
  void add(const Picture& picture);
  /// At most `most` (2 to 256) colors; black where none is visible, and a count of 0 without a picture.
  PaletteColors colors(std::uint32_t most) const;

 private:
  /// How many pixels have each color (red lowest).
  using Histogram = std::vector<std::uint32_t>;

  PaletteColors sketch(std::uint32_t target) const;
  PaletteColors chosen(std::uint32_t target) const;

  PaletteMethod method_;
  CountedColors counted_;
  ColorOctree octree_;
  std::optional<FewColors> few_;  ///< all colors, while there are at most 256
  Histogram histogram_;           ///< for sketches
  bool any_ = false;
};

/// `count` pictures, asked for in their order, counted; `host` hears of the progress. Nothing where one is
/// null, the user stopped it or memory is exhausted.
std::optional<Superpalette> gather_colors(std::size_t count,
                                          const std::function<Picture(std::size_t)>& picture, Host& host,
                                          const PaletteMethod& method = kSuperpalette);

/// The palette of pictures that are gathered for it alone. A count of 0 where there is none.
PaletteColors superpalette(std::size_t count, const std::function<Picture(std::size_t)>& picture,
                           std::uint32_t most, Host& host, const PaletteMethod& method = kSuperpalette);

/// Dark colors first, by (77 R + 150 G + 28 B) / 255. The order of colors that are as bright as each other is
/// that of an exchange sort.
void sort_by_luminance(PaletteColors& colors);

/// Of 17 sorted colors or more, a first one that is nearly black (all channels below 17) becomes black and a
/// last one that is nearly white (all from 240 on) white.
void improve_ends(PaletteColors& colors);

}  // namespace vellum
