// A palette that is computed from pictures.
#pragma once

#include <span>
#include <vector>

#include "base/host.h"
#include "image/palette_file.h"

namespace vellum {

/// At most `colors` (2 to 256) colors that stand for those of all the pictures together; exactly theirs when
/// they have no more. A count of 0 when there is no picture, the user stopped it or memory is exhausted.
PaletteColors palette_from_pictures(std::span<const Picture> pictures, std::uint32_t colors,
                                    Host* host = nullptr);

/// The colors of one picture: its own table where it has one, else at most 256 that stand for its colors.
PaletteColors palette_of_picture(const Picture& picture);

}  // namespace vellum
