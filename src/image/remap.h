// Pictures in the colors of a given palette: matched to the nearest color, or with the error spread
// (Floyd-Steinberg). Callers that have a picture and a palette use to_colors.
#pragma once

#include "base/host.h"
#include "image/picture.h"

namespace vellum {

/// The entry nearest to a color among the first `count` (at most 256): the exact one with the lowest index,
/// else the least 3*dR*dR + 4*dG*dG + 2*dB*dB, ties to the lower index. 0 for an empty palette.
std::uint32_t NearestPaletteIndex(std::uint32_t red, std::uint32_t green, std::uint32_t blue,
                                  const Palette& palette, std::uint32_t count);

enum RemapFlag : std::uint32_t {
  kRemapProgress = 1,  ///< show progress
  kRemapCancel = 2,    ///< may be stopped
  kRemapColors = 8,    ///< `bits` is a number of colors
  kRemapHoles = 16,    ///< dithering passes over pixels of 32 bits with little alpha: see to_colors
};

/// The depth that holds a number of colors: below 3: 1; to 4: 2; to 8: 3; ... to 256: 8; else 24.
std::uint32_t depth_of_colors(std::uint32_t colors);

/// The picture with these colors. `bits` is a depth, or a number of colors (see the flags); the entries
/// behind the number of colors never come up. Each pixel gets the nearest color; in black and white alone,
/// which both flow from grey, black where the grey is below 129. `FastRemap` matches by 5 bits of each
/// channel where no color is exact. Alpha is dropped. Null when memory is exhausted or the user stopped it; a
/// true-color copy for more than 256 colors.
Picture RemapPicture(const Picture& picture, const Palette& palette, std::uint32_t bits, std::uint32_t flags,
                     Host* host = nullptr);
/// The same with the error of each pixel spread to its neighbours, from the bottom row up; of the greys in
/// black and white. Null for a 1-bit picture too.
Picture DitherPicture(const Picture& picture, const Palette& palette, std::uint32_t bits, std::uint32_t flags,
                      Host* host = nullptr);

}  // namespace vellum
