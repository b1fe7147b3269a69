// A palette that is computed from pictures.
#pragma once

#include <span>
#include <vector>

#include "base/host.h"
#include "image/palette_file.h"

namespace vellum {

/// How a palette is computed.
struct PaletteMethod {
  bool fifteenBits = false;  ///< colors count by their 5 high bits of each channel, the others read as 0
  bool sketch = false;       ///< for drawings: frequent colors stay exactly, the others share what is left
  bool sorted = false;       ///< dark colors first
};

/// At most `colors` (2 to 256) colors that stand for those of all the pictures together; exactly theirs when
/// they have no more. A count of 0 when there is no picture, the user stopped it or memory is exhausted.
PaletteColors palette_from_pictures(std::span<const Picture> pictures, std::uint32_t colors,
                                    Host* host = nullptr, const PaletteMethod& method = {});

/// Dark colors first, by (77 R + 150 G + 28 B) / 255. The order of colors that are as bright as each other is
/// that of an exchange sort.
void sort_by_luminance(PaletteColors& colors);

/// The colors of one picture: its own table where it has one, else at most 256 that stand for its colors.
PaletteColors palette_of_picture(const Picture& picture);

}  // namespace vellum
