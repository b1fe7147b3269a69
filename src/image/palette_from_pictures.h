// A palette that is computed from pictures.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "base/host.h"
#include "image/palette_file.h"
#include "image/quantize.h"

namespace vellum {

/// How a palette is computed.
struct PaletteMethod {
  bool fifteenBits = false;  ///< colors count by their 5 high bits of each channel, the others read as 0
  bool sketch = false;       ///< for drawings: frequent colors stay exactly, the others share what is left
  bool sorted = false;       ///< dark colors first
  bool best = false;         ///< colors are moved to where those are that they stand for
  bool holes = false;        ///< pixels with little alpha don't count: an entry of their own stands for them

  bool operator==(const PaletteMethod&) const = default;
};

/// The colors of pictures, counted once for palettes of any size.
class CountedPictures {
 public:
  CountedPictures(std::span<const Picture> pictures, const PaletteMethod& method);

  /// At most `colors` (2 to 256) colors that stand for those of all the pictures together; exactly theirs
  /// when they have no more, and black where none is visible. A count of 0 when there is no picture, the user
  /// stopped it or memory is exhausted.
  PaletteColors palette(std::uint32_t colors, Host* host = nullptr);

 private:
  /// How many pixels have each color (red lowest).
  using Histogram = std::vector<std::uint32_t>;

  CountedColors counted() const;
  bool count_histogram(Host* host);
  PaletteColors sketch(std::uint32_t target, Host* host);
  PaletteColors chosen(std::uint32_t target, Host* host);

  PaletteMethod method_;
  std::vector<Picture> frames_;
  std::optional<PaletteColors> few_;  ///< all colors, where there are at most 256
  std::optional<ColorOctree> octree_;
  Histogram histogram_;
};

/// The palette of pictures that are counted for it alone.
PaletteColors palette_from_pictures(std::span<const Picture> pictures, std::uint32_t colors,
                                    Host* host = nullptr, const PaletteMethod& method = {});

/// Dark colors first, by (77 R + 150 G + 28 B) / 255. The order of colors that are as bright as each other is
/// that of an exchange sort.
void sort_by_luminance(PaletteColors& colors);

/// The colors of one picture: its own table where it has one, else at most 256 that stand for its colors.
PaletteColors palette_of_picture(const Picture& picture);

}  // namespace vellum
