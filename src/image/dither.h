// Floyd-Steinberg dithering of true color to a palette.
#pragma once

#include <functional>

#include "image/picture.h"

namespace vellum {

/// The picture (24 bits; or 32 bits, whose pixels with little alpha neither take an error nor spread one: see
/// kLeastOpaque) with `depth` bits and the first `count` colors of the palette;
/// see DitherPicture. `fast`: colors are matched by their cells. `go_on(row)` is asked at every fourth row,
/// from 0 on; null when it says no or memory is exhausted.
Picture dither_to_palette(const Picture& picture, const Palette& palette, std::uint32_t count,
                          std::uint32_t depth, bool fast, const std::function<bool(std::uint32_t)>& go_on);

}  // namespace vellum
